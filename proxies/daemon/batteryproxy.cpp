#include "daemon/batteryproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/battery"};
const QLatin1String interfaceName{"com.vorlet.daemon.battery"};
} // namespace

namespace Daemon
{

BatteryProxy::BatteryProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

int BatteryProxy::batteryChargeLevel(QDBus::CallMode mode) { return Reply::value<int>(call(mode, QStringLiteral("batteryChargeLevel"))); }
QString BatteryProxy::batteryChargeState(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("batteryChargeState"))); }
bool BatteryProxy::batteryPlugState(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("batteryPlugState"))); }
bool BatteryProxy::available(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("available"))); }
QString BatteryProxy::batteryCondition(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("batteryCondition"))); }
QVariantMap BatteryProxy::getBatteryState(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("getBatteryState"))); }

bool BatteryProxy::connectPowerCablePluged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("powerCablePluged"), receiver, slot); }
bool BatteryProxy::disconnectPowerCablePluged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("powerCablePluged"), receiver, slot); }
bool BatteryProxy::connectBatteryLevelChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("batteryLevelChanged"), receiver, slot); }
bool BatteryProxy::disconnectBatteryLevelChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("batteryLevelChanged"), receiver, slot); }
bool BatteryProxy::connectBatteryStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("batteryStateChanged"), receiver, slot); }
bool BatteryProxy::disconnectBatteryStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("batteryStateChanged"), receiver, slot); }

} // namespace Daemon
