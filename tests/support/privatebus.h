#pragma once

#include <QString>
#include <QTemporaryDir>

#include <cstdio>

/// A dbus-daemon of the test's own, with a policy that allows everything. It ends with this object, and with
/// the test program however that ends.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    Q_DISABLE_COPY(PrivateBus)

    /// Starts the daemon and waits until it listens; false, with a warning, when it cannot be started.
    bool start();
    /// Starts the daemon and makes it the system bus of this process and of those that it starts. Call it
    /// before the process first uses QDBusConnection::systemBus().
    bool startAsSystemBus();
    /// Ends the daemon at once, as a crash would; connections see the bus go away.
    void stop();

    QString address() const;
    qint64 processId() const;
    /// A directory for *.service files, which the daemon reads at start().
    QString servicesDirectory() const;

private:
    QTemporaryDir directory;
    std::FILE *daemon = nullptr; ///< what it writes; null while there is none
    int daemonId = 0;
    QString busAddress;
};
