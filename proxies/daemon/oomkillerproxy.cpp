#include "daemon/oomkillerproxy.h"

#include "shapes/introspection.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/oom_killer"};
const QLatin1String interfaceName{"com.vorlet.daemon.oom.killer"};
} // namespace

namespace Daemon
{

OOMKillerProxy::OOMKillerProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void OOMKillerProxy::lowerKillPriority(int processId, QDBus::CallMode mode) { call(mode, QStringLiteral("lowerKillPriority"), processId); }
void OOMKillerProxy::lowerKillPriority(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("lowerKillPriority"), appId); }
void OOMKillerProxy::setFistPlaceKillPriotity(int processId, QDBus::CallMode mode) { call(mode, QStringLiteral("setFistPlaceKillPriotity"), processId); }
void OOMKillerProxy::setFistPlaceKillPriotity(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("setFistPlaceKillPriotity"), appId); }
void OOMKillerProxy::setNeverKillPriority(int processId, QDBus::CallMode mode) { call(mode, QStringLiteral("setNeverKillPriority"), processId); }
void OOMKillerProxy::setNeverKillPriority(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("setNeverKillPriority"), appId); }

} // namespace Daemon
