#include "daemon/crashlogsproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/crash_logs"};
const QLatin1String interfaceName{"com.vorlet.daemon.crash_logs"};
} // namespace

namespace Daemon
{

CrashlogsProxy::CrashlogsProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

QStringList CrashlogsProxy::crashLogsList(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("crashLogsList"))); }
QString CrashlogsProxy::crashLogDirectory(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("crashLogDirectory"))); }

} // namespace Daemon
