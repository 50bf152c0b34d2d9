#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Daemon
{

/// The device's clock.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class ClockProxy : public QDBusInterface
{
public:
    ClockProxy(QObject *parent, const QDBusConnection &connection);

    /// forceSync(): sets the clock from the network now.
    void forceSync(QDBus::CallMode mode);
    /// setUtcTime(x): the time, in seconds since 1970.
    void setUtcTime(qlonglong time, QDBus::CallMode mode);
    /// setClockConfig(ay): a JSON object.
    void setClockConfig(const QVariant &config, QDBus::CallMode mode);

    /// getClockState() -> ay: a JSON object with "mode", "time_utc", "timezone".
    [[nodiscard]] QVariantMap getClockState(QDBus::CallMode mode);
};

} // namespace Daemon
