#include "daemon/batteryproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonBatteryProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::BatteryProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::BatteryProxy",
            p,
            {
                {"batteryChargeLevel", Shape::Number, "", {}, returning([p] { return p->batteryChargeLevel(wait); })},
                {"batteryChargeState", Shape::Text, "", {}, returning([p] { return p->batteryChargeState(wait); })},
                {"batteryPlugState", Shape::Flag, "", {}, returning([p] { return p->batteryPlugState(wait); })},
                {"available", Shape::Flag, "", {}, returning([p] { return p->available(wait); })},
                {"batteryCondition", Shape::Text, "", {}, returning([p] { return p->batteryCondition(wait); })},
                {"getBatteryState", Shape::JsonMap, "", {}, returning([p] { return p->getBatteryState(wait); })},
            },
            {
                subscription("powerCablePluged", {flag}, p, &Proxy::connectPowerCablePluged, &Proxy::disconnectPowerCablePluged),
                subscription("batteryLevelChanged", {number}, p, &Proxy::connectBatteryLevelChanged, &Proxy::disconnectBatteryLevelChanged),
                subscription("batteryStateChanged", {text}, p, &Proxy::connectBatteryStateChanged, &Proxy::disconnectBatteryStateChanged),
            }};
}
