#pragma once

#include <QByteArray>
#include <QDir>
#include <QList>
#include <QProcess>

/// One request as the front server saw it. Times are milliseconds since the epoch.
struct FrontRun {
    /// Goes on to the developer server in the header "X-Run".
    QByteArray id;
    qint64 beginMs = 0;
    qint64 endMs = 0;
    /// "POST id=d9&identifier=u1"
    QByteArray request;
    QByteArray protocol;
    /// What was passed on to the client.
    int status = 0;
    /// False when the developer server's answer broke off.
    bool isWhole = false;
};

/// A real nginx on loopback that ends TLS and HTTP/2 before the developer server, as the one in the field
/// does. It runs as the current user from a directory of its own, and ends with this object and with the test
/// program.
class FrontServer
{
public:
    enum class End { Terminated, Killed };

    /// @p certificate and @p key are PEM files; requests go on to 127.0.0.1:@p backendPort.
    FrontServer(const QString &directory, const QString &certificate, const QString &key,
                quint16 backendPort);
    ~FrontServer();
    Q_DISABLE_COPY(FrontServer)

    /// Starts it, on the same port each time, and waits until it takes connections. False, with a warning,
    /// when it does not.
    bool start();
    /// Ends it with all its connections at once; the port is free then.
    void stop(End how);
    bool isRunning() const;
    quint16 port() const;

    /// What has come to an end since the last call, oldest first. A request under way when the server ended
    /// is not among them.
    QList<FrontRun> newRuns();

private:
    bool takesConnections() const;

    const QDir directory;
    const quint16 boundPort;
    QProcess process;
    qint64 logRead = 0;
};
