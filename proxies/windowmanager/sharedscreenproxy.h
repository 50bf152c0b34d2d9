#pragma once

#include <QDBusInterface>

namespace WindowManager
{

/// The screen that applications draw on together.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class SharedScreenProxy : public QDBusInterface
{
    Q_OBJECT

public:
    SharedScreenProxy(QObject *parent, const QDBusConnection &connection);

    /// setScanRateEnterBufferingMode(i): the scan rate from which on drawing is buffered.
    void setScanRateEnterBufferingMode(int scanRate, QDBus::CallMode mode);
    /// restoreScanRate(): back to the usual scan rate.
    void restoreScanRate(QDBus::CallMode mode);
    /// setCurrentPrivilegedApp(s): the application that draws before all others.
    void setCurrentPrivilegedApp(const QString &appId, QDBus::CallMode mode);

    /// scanRate() -> i: the present scan rate.
    [[nodiscard]] int scanRate(QDBus::CallMode mode);
};

} // namespace WindowManager
