#pragma once

#include <QDBusInterface>
#include <QStringList>
#include <QVariant>

namespace BtNotifications
{

/// Notifications that a phone sends over Bluetooth.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class BTNotificationsProxy : public QDBusInterface
{
    Q_OBJECT

public:
    BTNotificationsProxy(QObject *parent, const QDBusConnection &connection);

    /// addToWhitelist(s): shows the notifications of a phone's application.
    void addToWhitelist(const QString &appId, QDBus::CallMode mode);
    /// removeFromWhitelist(s): shows them no more.
    void removeFromWhitelist(const QString &appId, QDBus::CallMode mode);
    /// saveDevice(a{sv}): keeps a phone.
    void saveDevice(const QVariantMap &device, QDBus::CallMode mode);
    /// updateSettings(sa{sv}): the settings of one phone.
    void updateSettings(const QString &address, const QVariantMap &settings, QDBus::CallMode mode);
    /// setGeneralOptions(a{sv}): the settings for every phone.
    void setGeneralOptions(const QVariantMap &options, QDBus::CallMode mode);
    /// setStatsSendingServerPermission(b): whether the server lets statistics be sent.
    void setStatsSendingServerPermission(bool allowed, QDBus::CallMode mode);
    /// setStatsSendingUserPermission(b): whether the owner lets statistics be sent.
    void setStatsSendingUserPermission(bool allowed, QDBus::CallMode mode);

    /// supportFilter() -> b: whether notifications can be filtered by application.
    [[nodiscard]] bool supportFilter(QDBus::CallMode mode);
    /// statsSendingServerPermission() -> b: whether the server lets statistics be sent.
    [[nodiscard]] bool statsSendingServerPermission(QDBus::CallMode mode);
    /// statsSendingUserPermission() -> b: whether the owner lets statistics be sent.
    [[nodiscard]] bool statsSendingUserPermission(QDBus::CallMode mode);
    /// filterWhitelist() -> as: the applications whose notifications are shown.
    [[nodiscard]] QStringList filterWhitelist(QDBus::CallMode mode);
    /// supportedAppList() -> av: the applications that can be filtered, arrays in arrays kept.
    [[nodiscard]] QVariantList supportedAppList(QDBus::CallMode mode);
    /// savedDevices() -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap savedDevices(QDBus::CallMode mode);
    /// generalOptions() -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap generalOptions(QDBus::CallMode mode);
    /// settingsForDevice(s) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap settingsForDevice(const QString &address, QDBus::CallMode mode);
};

} // namespace BtNotifications
