#pragma once

#include <QDBusInterface>
#include <QDBusPendingCall>

namespace Daemon
{

/// The sensor for the light around the device.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class LightSensorProxy : public QDBusInterface
{
public:
    LightSensorProxy(QObject *parent, const QDBusConnection &connection);

    /// sensorData() -> d: what the sensor reads; a double on the bus.
    [[nodiscard]] float sensorData(QDBus::CallMode mode);

    /// sensorData() -> d: as the getter of this name.
    [[nodiscard]] QDBusPendingCall sensorData();

    /// Signal sensorDataChanged(d): what the sensor reads.
    bool connectSensorDataChanged(QObject *receiver, const char *slot);
    bool disconnectSensorDataChanged(QObject *receiver, const char *slot);
};

} // namespace Daemon
