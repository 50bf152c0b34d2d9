#include "daemon/clockproxy.h"

#include "shapes/introspection.h"
#include "shapes/json.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/clock"};
const QLatin1String interfaceName{"com.vorlet.daemon.clock"};
} // namespace

namespace Daemon
{

ClockProxy::ClockProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void ClockProxy::forceSync(QDBus::CallMode mode) { call(mode, QStringLiteral("forceSync")); }
void ClockProxy::setUtcTime(qlonglong time, QDBus::CallMode mode) { call(mode, QStringLiteral("setUtcTime"), time); }
void ClockProxy::setClockConfig(const QVariant &config, QDBus::CallMode mode) { call(mode, QStringLiteral("setClockConfig"), Json::write(config)); }

QVariantMap ClockProxy::getClockState(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("getClockState"))); }

} // namespace Daemon
