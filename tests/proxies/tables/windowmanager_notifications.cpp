#include "tables.h"
#include "windowmanager/notificationsproxy.h"

using namespace Sample;

ProxyTable windowManagerNotificationsProxy(const QDBusConnection &connection)
{
    using Proxy = WindowManager::NotificationsProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"WindowManager::NotificationsProxy",
            p,
            {
                {"removeNotificationFromQueue", Shape::Command, "s", {text}, returning([p] { p->removeNotificationFromQueue(text, wait); })},
                {"removeAllNotificationsFromQueue", Shape::Command, "", {}, returning([p] { p->removeAllNotificationsFromQueue(wait); })},
                {"updateRemoteNotificationWithId", Shape::Command, "sa{sv}", {text, map}, returning([p] { p->updateRemoteNotificationWithId(text, map, wait); })},
                {"listOfQueuedNotificationIds", Shape::Texts, "", {}, returning([p] { return p->listOfQueuedNotificationIds(wait); })},
                {"listOfDismissedNotificationIds", Shape::Texts, "", {}, returning([p] { return p->listOfDismissedNotificationIds(wait); })},
                {"addNewNotification", Shape::Text, "a{sv}", {map}, returning([p] { return p->addNewNotification(map, wait); })},
                {"listOfQueuedNotifications", Shape::List, "", {}, returning([p] { return p->listOfQueuedNotifications(wait); })},
                {"listOfDismissedNotifications", Shape::List, "", {}, returning([p] { return p->listOfDismissedNotifications(wait); })},
                {"currentNotification", Shape::Map, "", {}, returning([p] { return p->currentNotification(wait); })},
                {"queuedNotificationForId", Shape::Map, "s", {text}, returning([p] { return p->queuedNotificationForId(text, wait); })},
                {"dismissedNotificationForId", Shape::Map, "s", {text}, returning([p] { return p->dismissedNotificationForId(text, wait); })},
                {"notifcationFroId", Shape::Map, "s", {text}, returning([p] { return p->notifcationFroId(text, wait); })},
            },
            {
                subscription("notificationRemoved", {text}, p, &Proxy::connectNotificationRemoved, &Proxy::disconnectNotificationRemoved),
                subscription("notificationStartDisplaying", {text}, p, &Proxy::connectNotificationStartDisplaying, &Proxy::disconnectNotificationStartDisplaying),
                subscription("notificationWillApear", {text}, p, &Proxy::connectNotificationWillApear, &Proxy::disconnectNotificationWillApear),
            }};
}
