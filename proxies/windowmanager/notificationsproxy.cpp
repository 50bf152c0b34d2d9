#include "windowmanager/notificationsproxy.h"

#include "dbusconversion.h"
#include "shapes/argument.h"
#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"widget.manager"};
const QLatin1String objectPath{"/notifications"};
const QLatin1String interfaceName{"com.vorlet.widget_manager.notifications"};
} // namespace

namespace WindowManager
{

namespace
{
// Made once, when the program starts.
namespace Name
{
const QString removeNotificationFromQueue = QStringLiteral("removeNotificationFromQueue");
const QString removeAllNotificationsFromQueue = QStringLiteral("removeAllNotificationsFromQueue");
const QString updateRemoteNotificationWithId = QStringLiteral("updateRemoteNotificationWithId");
const QString listOfQueuedNotificationIds = QStringLiteral("listOfQueuedNotificationIds");
const QString listOfDismissedNotificationIds = QStringLiteral("listOfDismissedNotificationIds");
const QString addNewNotification = QStringLiteral("addNewNotification");
const QString listOfQueuedNotifications = QStringLiteral("listOfQueuedNotifications");
const QString listOfDismissedNotifications = QStringLiteral("listOfDismissedNotifications");
const QString currentNotification = QStringLiteral("currentNotification");
const QString queuedNotificationForId = QStringLiteral("queuedNotificationForId");
const QString dismissedNotificationForId = QStringLiteral("dismissedNotificationForId");
const QString notifcationFroId = QStringLiteral("notifcationFroId");
const QString notificationRemoved = QStringLiteral("notificationRemoved");
const QString notificationStartDisplaying = QStringLiteral("notificationStartDisplaying");
const QString notificationWillApear = QStringLiteral("notificationWillApear");
} // namespace Name
} // namespace

NotificationsProxy::NotificationsProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
    registerDBusContainers();
}

void NotificationsProxy::removeNotificationFromQueue(const QString &id, QDBus::CallMode mode) { call(mode, Name::removeNotificationFromQueue, id); }
void NotificationsProxy::removeAllNotificationsFromQueue(QDBus::CallMode mode) { call(mode, Name::removeAllNotificationsFromQueue); }
void NotificationsProxy::updateRemoteNotificationWithId(const QString &id, const QVariantMap &notification, QDBus::CallMode mode)
{
    call(mode, Name::updateRemoteNotificationWithId, id, Argument::map(notification));
}

QStringList NotificationsProxy::listOfQueuedNotificationIds(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, Name::listOfQueuedNotificationIds)); }
QStringList NotificationsProxy::listOfDismissedNotificationIds(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, Name::listOfDismissedNotificationIds)); }
QString NotificationsProxy::addNewNotification(const QVariantMap &notification, QDBus::CallMode mode) { return Reply::value<QString>(call(mode, Name::addNewNotification, Argument::map(notification))); }
QVariantList NotificationsProxy::listOfQueuedNotifications(QDBus::CallMode mode) { return Reply::list(call(mode, Name::listOfQueuedNotifications)); }
QVariantList NotificationsProxy::listOfDismissedNotifications(QDBus::CallMode mode) { return Reply::list(call(mode, Name::listOfDismissedNotifications)); }
QVariantMap NotificationsProxy::currentNotification(QDBus::CallMode mode) { return Reply::map(call(mode, Name::currentNotification)); }
QVariantMap NotificationsProxy::queuedNotificationForId(const QString &id, QDBus::CallMode mode) { return Reply::map(call(mode, Name::queuedNotificationForId, id)); }
QVariantMap NotificationsProxy::dismissedNotificationForId(const QString &id, QDBus::CallMode mode) { return Reply::map(call(mode, Name::dismissedNotificationForId, id)); }
QVariantMap NotificationsProxy::notifcationFroId(const QString &id, QDBus::CallMode mode) { return Reply::map(call(mode, Name::notifcationFroId, id)); }

bool NotificationsProxy::connectNotificationRemoved(QObject *receiver, const char *slot) { return subscribe(*this, Name::notificationRemoved, receiver, slot); }
bool NotificationsProxy::disconnectNotificationRemoved(QObject *receiver, const char *slot) { return unsubscribe(*this, Name::notificationRemoved, receiver, slot); }
bool NotificationsProxy::connectNotificationStartDisplaying(QObject *receiver, const char *slot) { return subscribe(*this, Name::notificationStartDisplaying, receiver, slot); }
bool NotificationsProxy::disconnectNotificationStartDisplaying(QObject *receiver, const char *slot) { return unsubscribe(*this, Name::notificationStartDisplaying, receiver, slot); }
bool NotificationsProxy::connectNotificationWillApear(QObject *receiver, const char *slot) { return subscribe(*this, Name::notificationWillApear, receiver, slot); }
bool NotificationsProxy::disconnectNotificationWillApear(QObject *receiver, const char *slot) { return unsubscribe(*this, Name::notificationWillApear, receiver, slot); }

} // namespace WindowManager
