#include "daemon/packagemanagerproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/pkgmngr"};
const QLatin1String interfaceName{"com.vorlet.daemon.pkg.mngr"};
} // namespace

namespace Daemon
{

PackageManagerProxy::PackageManagerProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void PackageManagerProxy::installApp(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("installApp"), appId); }
void PackageManagerProxy::installApps(const QStringList &appIds, QDBus::CallMode mode) { call(mode, QStringLiteral("installApps"), appIds); }
void PackageManagerProxy::updateApp(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("updateApp"), appId); }
void PackageManagerProxy::updateApps(const QStringList &appIds, QDBus::CallMode mode) { call(mode, QStringLiteral("updateApps"), appIds); }
void PackageManagerProxy::deleteApp(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("deleteApp"), appId); }
void PackageManagerProxy::deleteApps(const QStringList &appIds, QDBus::CallMode mode) { call(mode, QStringLiteral("deleteApps"), appIds); }
void PackageManagerProxy::flushStatus(QDBus::CallMode mode) { call(mode, QStringLiteral("flushStatus")); }
void PackageManagerProxy::forceUpdateRepository(QDBus::CallMode mode) { call(mode, QStringLiteral("forceUpdateRepository")); }

QVariantMap PackageManagerProxy::newVersionApps(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("newVersionApps"))); }
QVariantList PackageManagerProxy::status(QDBus::CallMode mode) { return Reply::jsonList(call(mode, QStringLiteral("status"))); }

} // namespace Daemon
