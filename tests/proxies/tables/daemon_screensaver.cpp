#include "daemon/screensaverproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonScreenSaverProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::ScreenSaverProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::ScreenSaverProxy",
            p,
            {
                {"disableScreenSaverForInterval", Shape::Command, "i", {number}, returning([p] { p->disableScreenSaverForInterval(number, wait); })},
                {"setEnabled", Shape::Command, "b", {flag}, returning([p] { p->setEnabled(flag, wait); })},
                {"setActive", Shape::Command, "b", {flag}, returning([p] { p->setActive(flag, wait); })},
                {"setScreenSaverWidget", Shape::Command, "s", {text}, returning([p] { p->setScreenSaverWidget(text, wait); })},
                {"setIsSnoosed", Shape::Command, "b", {flag}, returning([p] { p->setIsSnoosed(flag, wait); })},
                {"setScreenSaverModeSettings", Shape::Command, "sa{sv}", {text, map}, returning([p] { p->setScreenSaverModeSettings(text, map, wait); })},
                {"forceCheckActivator", Shape::Flag, "", {}, returning([p] { return p->forceCheckActivator(wait); })},
                {"isSnoosed", Shape::Flag, "", {}, returning([p] { return p->isSnoosed(wait); })},
                {"isEnabled", Shape::Flag, "", {}, returning([p] { return p->isEnabled(wait); })},
                {"isActive", Shape::Flag, "", {}, returning([p] { return p->isActive(wait); })},
                {"screenSaverWidget", Shape::Text, "", {}, returning([p] { return p->screenSaverWidget(wait); })},
                {"screenSaverModesList", Shape::Texts, "", {}, returning([p] { return p->screenSaverModesList(wait); })},
                {"screenSaverModeSettings", Shape::Map, "s", {text}, returning([p] { return p->screenSaverModeSettings(text, wait); })},
                {"screenSaverModesSettings", Shape::Map, "", {}, returning([p] { return p->screenSaverModesSettings(wait); })},
            },
            {
                subscription("screenSaverWidgetChanged", {text}, p, &Proxy::connectScreenSaverWidgetChanged, &Proxy::disconnectScreenSaverWidgetChanged),
                subscription("screenSaverWidgetChanged", {text}, p, &Proxy::connectWidgetChanged, &Proxy::disconnectWidgetChanged),
            }};
}
