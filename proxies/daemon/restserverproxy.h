#pragma once

#include <QDBusInterface>

namespace Daemon
{

/// The device's own web server.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class RestServerProxy : public QDBusInterface
{
public:
    RestServerProxy(QObject *parent, const QDBusConnection &connection);

    /// setAuth(ss): what the server asks its callers for.
    void setAuth(const QString &user, const QString &password, QDBus::CallMode mode);

    /// baseUrl() -> s: where the server is reached.
    [[nodiscard]] QString baseUrl(QDBus::CallMode mode);
    /// isServerRunning() -> b: whether the server runs.
    [[nodiscard]] bool isServerRunning(QDBus::CallMode mode);
    /// isSecureConnection() -> b: whether it is reached over TLS.
    [[nodiscard]] bool isSecureConnection(QDBus::CallMode mode);

    /// Signal restServerDidStart(): the server is up.
    bool connectRestServerDidStart(QObject *receiver, const char *slot);
    bool disconnectRestServerDidStart(QObject *receiver, const char *slot);
};

} // namespace Daemon
