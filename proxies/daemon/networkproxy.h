#pragma once

#include <QDBusInterface>
#include <QDBusPendingCall>
#include <QVariant>

namespace Daemon
{

/// The device's network: Wi-Fi settings, addresses, and whether the internet can be reached.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class NetworkProxy : public QDBusInterface
{
public:
    NetworkProxy(QObject *parent, const QDBusConnection &connection);

    /// clearSettings(): drops every network setting.
    void clearSettings(QDBus::CallMode mode);
    /// forgetNetworkSettings(s): drops the settings of one Wi-Fi network.
    void forgetNetworkSettings(const QString &essid, QDBus::CallMode mode);
    /// setWifiConfig(ay): a JSON object with "mode", "essid", "netmask", "password", "gateway",
    /// "broadcast", "encryption", "hidden", "wpa_enterprise", "username".
    void setWifiConfig(const QVariant &config, QDBus::CallMode mode);

    /// getWifiApList() -> ay: a JSON array, the access points in reach.
    [[nodiscard]] QVariantList getWifiApList(QDBus::CallMode mode);
    /// externalIp() -> s: the address by which the internet sees the device.
    [[nodiscard]] QString externalIp(QDBus::CallMode mode);
    /// isInternetAvailable() -> b: waits for the service's answer.
    [[nodiscard]] bool isInternetAvailable(QDBus::CallMode mode);
    /// forceTryToRestartWifiConnection() -> b: whether a new attempt was begun.
    [[nodiscard]] bool forceTryToRestartWifiConnection(QDBus::CallMode mode);
    /// getWifiState() -> ay: a JSON object with "available", "active", "mode", "essid", "encryption",
    /// "netmask", "address", "strength".
    [[nodiscard]] QVariantMap getWifiState(QDBus::CallMode mode);

    /// isInternetAvailable() -> b: as the getter of this name.
    [[nodiscard]] QDBusPendingCall isInternetAvailable();

    /// Signal networkInterfaceStateChanged(sb): an interface's name and whether it is up.
    bool connectNetworkInterfaceStateChanged(QObject *receiver, const char *slot);
    bool disconnectNetworkInterfaceStateChanged(QObject *receiver, const char *slot);
    /// Signal internetAvailabilityChanged(b): whether the internet can be reached.
    bool connectInternetAvailabilityChanged(QObject *receiver, const char *slot);
    bool disconnectInternetAvailabilityChanged(QObject *receiver, const char *slot);
    /// Signal networkStateChanged(s): the new state.
    bool connectNetworkStateChanged(QObject *receiver, const char *slot);
    bool disconnectNetworkStateChanged(QObject *receiver, const char *slot);
    /// Signal externalIpChanged(s): the new address.
    bool connectExternalIpChanged(QObject *receiver, const char *slot);
    bool disconnectExternalIpChanged(QObject *receiver, const char *slot);
};

} // namespace Daemon
