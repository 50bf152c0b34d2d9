#pragma once

#include <QDBusInterface>
#include <QStringList>
#include <QVariant>

namespace WindowManager
{

/// The notifications that wait for the display, and those that were dismissed.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class NotificationsProxy : public QDBusInterface
{
    Q_OBJECT

public:
    NotificationsProxy(QObject *parent, const QDBusConnection &connection);

    /// removeNotificationFromQueue(s): drops one that waits.
    void removeNotificationFromQueue(const QString &id, QDBus::CallMode mode);
    /// removeAllNotificationsFromQueue(): drops all that wait.
    void removeAllNotificationsFromQueue(QDBus::CallMode mode);
    /// updateRemoteNotificationWithId(sa{sv}): new contents for one that waits.
    void updateRemoteNotificationWithId(const QString &id, const QVariantMap &notification, QDBus::CallMode mode);

    /// listOfQueuedNotificationIds() -> as: the ids of those that wait.
    [[nodiscard]] QStringList listOfQueuedNotificationIds(QDBus::CallMode mode);
    /// listOfDismissedNotificationIds() -> as: the ids of those that were dismissed.
    [[nodiscard]] QStringList listOfDismissedNotificationIds(QDBus::CallMode mode);
    /// addNewNotification(a{sv}) -> s: the id that it was given.
    [[nodiscard]] QString addNewNotification(const QVariantMap &notification, QDBus::CallMode mode);
    /// listOfQueuedNotifications() -> av: read with parseDBusList().
    [[nodiscard]] QVariantList listOfQueuedNotifications(QDBus::CallMode mode);
    /// listOfDismissedNotifications() -> av: read with parseDBusList().
    [[nodiscard]] QVariantList listOfDismissedNotifications(QDBus::CallMode mode);
    /// currentNotification() -> a{sv}: the one on the display, read with parseDBusMap().
    [[nodiscard]] QVariantMap currentNotification(QDBus::CallMode mode);
    /// queuedNotificationForId(s) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap queuedNotificationForId(const QString &id, QDBus::CallMode mode);
    /// dismissedNotificationForId(s) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap dismissedNotificationForId(const QString &id, QDBus::CallMode mode);
    /// notifcationFroId(s) -> a{sv}: waiting or dismissed, read with parseDBusMap(); spelled so on the bus.
    [[nodiscard]] QVariantMap notifcationFroId(const QString &id, QDBus::CallMode mode);

    /// Signal notificationRemoved(s): the notification's id.
    bool connectNotificationRemoved(QObject *receiver, const char *slot);
    bool disconnectNotificationRemoved(QObject *receiver, const char *slot);
    /// Signal notificationStartDisplaying(s): the notification's id.
    bool connectNotificationStartDisplaying(QObject *receiver, const char *slot);
    bool disconnectNotificationStartDisplaying(QObject *receiver, const char *slot);
    /// Signal notificationWillApear(s): the notification's id, spelled so on the bus.
    bool connectNotificationWillApear(QObject *receiver, const char *slot);
    bool disconnectNotificationWillApear(QObject *receiver, const char *slot);
};

} // namespace WindowManager
