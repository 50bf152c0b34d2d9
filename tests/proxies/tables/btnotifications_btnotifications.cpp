#include "btnotifications/btnotificationsproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable btNotificationsBTNotificationsProxy(const QDBusConnection &connection)
{
    using Proxy = BtNotifications::BTNotificationsProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"BtNotifications::BTNotificationsProxy",
            p,
            {
                {"addToWhitelist", Shape::Command, "s", {text}, returning([p] { p->addToWhitelist(text, wait); })},
                {"removeFromWhitelist", Shape::Command, "s", {text}, returning([p] { p->removeFromWhitelist(text, wait); })},
                {"saveDevice", Shape::Command, "a{sv}", {map}, returning([p] { p->saveDevice(map, wait); })},
                {"updateSettings", Shape::Command, "sa{sv}", {text, map}, returning([p] { p->updateSettings(text, map, wait); })},
                {"setGeneralOptions", Shape::Command, "a{sv}", {map}, returning([p] { p->setGeneralOptions(map, wait); })},
                {"setStatsSendingServerPermission", Shape::Command, "b", {flag}, returning([p] { p->setStatsSendingServerPermission(flag, wait); })},
                {"setStatsSendingUserPermission", Shape::Command, "b", {flag}, returning([p] { p->setStatsSendingUserPermission(flag, wait); })},
                {"supportFilter", Shape::Flag, "", {}, returning([p] { return p->supportFilter(wait); })},
                {"statsSendingServerPermission", Shape::Flag, "", {}, returning([p] { return p->statsSendingServerPermission(wait); })},
                {"statsSendingUserPermission", Shape::Flag, "", {}, returning([p] { return p->statsSendingUserPermission(wait); })},
                {"filterWhitelist", Shape::ConvertedTexts, "", {}, returning([p] { return p->filterWhitelist(wait); })},
                {"supportedAppList", Shape::ConvertedList, "", {}, returning([p] { return p->supportedAppList(wait); })},
                {"savedDevices", Shape::Map, "", {}, returning([p] { return p->savedDevices(wait); })},
                {"generalOptions", Shape::Map, "", {}, returning([p] { return p->generalOptions(wait); })},
                {"settingsForDevice", Shape::Map, "s", {text}, returning([p] { return p->settingsForDevice(text, wait); })},
            },
            {}};
}
