#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Daemon
{

/// The battery and the power cable.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class BatteryProxy : public QDBusInterface
{
public:
    BatteryProxy(QObject *parent, const QDBusConnection &connection);

    /// batteryChargeLevel() -> i: the charge, in percent.
    [[nodiscard]] int batteryChargeLevel(QDBus::CallMode mode);
    /// batteryChargeState() -> s: whether it charges or discharges.
    [[nodiscard]] QString batteryChargeState(QDBus::CallMode mode);
    /// batteryPlugState() -> b: whether the power cable is in.
    [[nodiscard]] bool batteryPlugState(QDBus::CallMode mode);
    /// available() -> b: whether the device has a battery.
    [[nodiscard]] bool available(QDBus::CallMode mode);
    /// batteryCondition() -> s: the battery's health.
    [[nodiscard]] QString batteryCondition(QDBus::CallMode mode);
    /// getBatteryState() -> ay: a JSON object with "available", "level", "condition", "state".
    [[nodiscard]] QVariantMap getBatteryState(QDBus::CallMode mode);

    /// Signal powerCablePluged(b): whether the cable is in, spelled so on the bus.
    bool connectPowerCablePluged(QObject *receiver, const char *slot);
    bool disconnectPowerCablePluged(QObject *receiver, const char *slot);
    /// Signal batteryLevelChanged(i): the new charge, in percent.
    bool connectBatteryLevelChanged(QObject *receiver, const char *slot);
    bool disconnectBatteryLevelChanged(QObject *receiver, const char *slot);
    /// Signal batteryStateChanged(s): the new state.
    bool connectBatteryStateChanged(QObject *receiver, const char *slot);
    bool disconnectBatteryStateChanged(QObject *receiver, const char *slot);
};

} // namespace Daemon
