#include "daemon/clockproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonClockProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::ClockProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::ClockProxy",
            p,
            {
                {"forceSync", Shape::Command, "", {}, returning([p] { p->forceSync(wait); })},
                {"setUtcTime", Shape::Command, "x", {longNumber}, returning([p] { p->setUtcTime(longNumber, wait); })},
                {"setClockConfig", Shape::Command, "ay", {jsonText}, returning([p] { p->setClockConfig(json, wait); })},
                {"getClockState", Shape::JsonMap, "", {}, returning([p] { return p->getClockState(wait); })},
            },
            {}};
}
