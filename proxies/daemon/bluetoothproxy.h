#pragma once

#include <QDBusInterface>
#include <QDBusPendingCall>
#include <QStringList>
#include <QVariant>

namespace Daemon
{

/// The Bluetooth adapter, its connected devices and what they play.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class BluetoothProxy : public QDBusInterface
{
public:
    BluetoothProxy(QObject *parent, const QDBusConnection &connection);

    /// playbackStop(): the connected player stops.
    void playbackStop(QDBus::CallMode mode);
    /// playbackStart(): the connected player plays.
    void playbackStart(QDBus::CallMode mode);
    /// trackNext(): the connected player goes one track on.
    void trackNext(QDBus::CallMode mode);
    /// trackPrevious(): the connected player goes one track back.
    void trackPrevious(QDBus::CallMode mode);
    /// setBluetoothActive(b): switches the adapter on or off.
    void setBluetoothActive(bool active, QDBus::CallMode mode);
    /// setBluetoothName(s): the name that other devices see.
    void setBluetoothName(const QString &name, QDBus::CallMode mode);
    /// setBluetoothConfig(ay): a JSON object with "active", "pairable", "discoverable", "advertising",
    /// "connectable", "low_energy".
    void setBluetoothConfig(const QVariant &config, QDBus::CallMode mode);

    /// connectedDevices() -> as: the addresses of the connected devices.
    [[nodiscard]] QStringList connectedDevices(QDBus::CallMode mode);
    /// isDeviceConnected(s) -> b: whether one device is connected.
    [[nodiscard]] bool isDeviceConnected(const QString &address, QDBus::CallMode mode);
    /// playerState() -> ay: a JSON object.
    [[nodiscard]] QVariantMap playerState(QDBus::CallMode mode);
    /// currentTrackInfo() -> ay: a JSON object.
    [[nodiscard]] QVariantMap currentTrackInfo(QDBus::CallMode mode);
    /// playerPlaybackState() -> s: whether the player plays.
    [[nodiscard]] QString playerPlaybackState(QDBus::CallMode mode);
    /// mediaTransportState() -> s: the state of the sound's transport.
    [[nodiscard]] QString mediaTransportState(QDBus::CallMode mode);
    /// deviceConnectionType(s) -> a{sv}: how one device is connected, as a map, arrays in arrays kept.
    [[nodiscard]] QVariantMap deviceConnectionType(const QString &address, QDBus::CallMode mode);
    /// getAdapterState() -> ay: a JSON object with "available", "address", "active", "discoverable",
    /// "pairable", "powered", "low_energy", "connectable", "advertising".
    [[nodiscard]] QVariantMap getAdapterState(QDBus::CallMode mode);

    /// deviceConnectionType(s) -> a{sv}: as the getter of this name.
    [[nodiscard]] QDBusPendingCall deviceConnectionType(const QString &address);
    /// setBluetoothConfig(ay): the JSON object of the command.
    [[nodiscard]] QDBusPendingCall setBluetoothConfig(const QVariant &config);

    /// Signal BTDeviceConnectionStateChanged(sb): a device's address and whether it is connected.
    bool connectBTDeviceConnectionStateChanged(QObject *receiver, const char *slot);
    bool disconnectBTDeviceConnectionStateChanged(QObject *receiver, const char *slot);
    /// Signal BTDevicePlayerPlaybackStateChanged(ss): a device's address and its player's state.
    bool connectBTDevicePlayerPlaybackStateChanged(QObject *receiver, const char *slot);
    bool disconnectBTDevicePlayerPlaybackStateChanged(QObject *receiver, const char *slot);
    /// Signal BTDeviceMediaTransportStateChanged(ss): a device's address and its transport's state.
    bool connectBTDeviceMediaTransportStateChanged(QObject *receiver, const char *slot);
    bool disconnectBTDeviceMediaTransportStateChanged(QObject *receiver, const char *slot);
    /// Signal BTDevicePlayerTrackChanged(s): a device's address.
    bool connectBTDevicePlayerTrackChanged(QObject *receiver, const char *slot);
    bool disconnectBTDevicePlayerTrackChanged(QObject *receiver, const char *slot);
    /// Signal BTActiveStateChanged(b): whether the adapter is on.
    bool connectBTActiveStateChanged(QObject *receiver, const char *slot);
    bool disconnectBTActiveStateChanged(QObject *receiver, const char *slot);
    /// Signal BTLEStateChanged(b): whether low energy is on.
    bool connectBTLEStateChanged(QObject *receiver, const char *slot);
    bool disconnectBTLEStateChanged(QObject *receiver, const char *slot);
    /// Signal BTBREDRStateChanged(b): whether classic Bluetooth is on.
    bool connectBTBREDRStateChanged(QObject *receiver, const char *slot);
    bool disconnectBTBREDRStateChanged(QObject *receiver, const char *slot);
    /// Signal deviceConnectedStateChangedWithType(sbs): a device's address, whether it is connected, and how.
    bool connectDeviceConnectedStateChangedWithType(QObject *receiver, const char *slot);
    bool disconnectDeviceConnectedStateChangedWithType(QObject *receiver, const char *slot);
};

} // namespace Daemon
