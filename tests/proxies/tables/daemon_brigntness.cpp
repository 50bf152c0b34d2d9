#include "daemon/brigntnessproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonBrigntnessProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::BrigntnessProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::BrigntnessProxy",
            p,
            {
                {"setBrightness", Shape::Command, "i", {number}, returning([p] { p->setBrightness(number, wait); })},
                {"setAutoBrightnessMode", Shape::Command, "b", {flag}, returning([p] { p->setAutoBrightnessMode(flag, wait); })},
                {"setScreenOn", Shape::Command, "b", {flag}, returning([p] { p->setScreenOn(flag, wait); })},
                {"getBrightness", Shape::Number, "", {}, returning([p] { return p->getBrightness(wait); })},
                {"isAutoBrigtness", Shape::Flag, "", {}, returning([p] { return p->isAutoBrigtness(wait); })},
                {"isScreenOn", Shape::Flag, "", {}, returning([p] { return p->isScreenOn(wait); })},
                {"getSpec", Shape::JsonMap, "", {}, returning([p] { return p->getSpec(wait); })},
                {"getState", Shape::JsonMap, "", {}, returning([p] { return p->getState(wait); })},
            },
            {}};
}
