#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Daemon
{

/// The first set-up of a device by its owner.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class SetupProxy : public QDBusInterface
{
public:
    SetupProxy(QObject *parent, const QDBusConnection &connection);

    /// keyReceived(s): the key that the owner's application was given.
    void keyReceived(const QString &key, QDBus::CallMode mode);
    /// devicePingReceived(): the owner's application has seen the device.
    void devicePingReceived(QDBus::CallMode mode);
    /// confirmErrors(): the owner has read the errors.
    void confirmErrors(QDBus::CallMode mode);
    /// cancel(): gives the set-up up.
    void cancel(QDBus::CallMode mode);
    /// networkConfigReceived(ay): a JSON object with "mode", "essid", "netmask", "password", "gateway",
    /// "broadcast", "encryption", "hidden", "wpa_enterprise", "username".
    void networkConfigReceived(const QVariant &config, QDBus::CallMode mode);

    /// setupStatus() -> i: the number of the step.
    [[nodiscard]] int setupStatus(QDBus::CallMode mode);
    /// setupConfirmation() -> s: what the owner has to confirm.
    [[nodiscard]] QString setupConfirmation(QDBus::CallMode mode);
    /// state() -> s: the name of the step.
    [[nodiscard]] QString state(QDBus::CallMode mode);
    /// setupInProgress() -> b: whether a set-up has begun and not ended.
    [[nodiscard]] bool setupInProgress(QDBus::CallMode mode);

    /// Signal setupStateChanged(s): the name of the step.
    bool connectSetupStateChanged(QObject *receiver, const char *slot);
    bool disconnectSetupStateChanged(QObject *receiver, const char *slot);
    /// Signal setupErrorOccured(s): what went wrong, spelled so on the bus.
    bool connectSetupErrorOccured(QObject *receiver, const char *slot);
    bool disconnectSetupErrorOccured(QObject *receiver, const char *slot);
};

} // namespace Daemon
