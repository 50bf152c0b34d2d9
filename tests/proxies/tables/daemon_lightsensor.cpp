#include "daemon/lightsensorproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonLightSensorProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::LightSensorProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::LightSensorProxy",
            p,
            {
                {"sensorData", Shape::SmallReal, "", {}, returning([p] { return p->sensorData(wait); })},
                {"sensorData", Shape::Asynchronous, "", {}, returning([p] { return p->sensorData(); })},
            },
            {
                subscription("sensorDataChanged", {real}, p, &Proxy::connectSensorDataChanged, &Proxy::disconnectSensorDataChanged),
            }};
}
