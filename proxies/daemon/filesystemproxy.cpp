#include "daemon/filesystemproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/fs"};
const QLatin1String interfaceName{"com.vorlet.daemon.fs"};
} // namespace

namespace Daemon
{

FilesystemProxy::FilesystemProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

QString FilesystemProxy::getWidgetsDir(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("getWidgetsDir"))); }
QString FilesystemProxy::getAppsDir(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("getAppsDir"))); }
QString FilesystemProxy::getDataDir(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("getDataDir"))); }
QVariantMap FilesystemProxy::getDiskState(QDBus::CallMode mode) { return Reply::jsonIntegerMap(call(mode, QStringLiteral("getDiskState"))); }

} // namespace Daemon
