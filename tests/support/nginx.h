#pragma once

#include <QByteArray>
#include <QDir>
#include <QList>
#include <QProcess>
#include <QString>

/// A real nginx on loopback, as one process. It runs as the current user from a directory of its own, and
/// ends with this object and with the program that made it.
class Nginx
{
public:
    enum class End { Terminated, Killed };

    explicit Nginx(const QString &directory);
    ~Nginx();
    Q_DISABLE_COPY(Nginx)

    /// Found when the object is made, and the same at each start.
    quint16 port() const;
    QString filePath(const QString &name) const;

    /// Writes the configuration of the next start(): @p http stands in its http block, which begins with
    /// where nginx keeps its temporary files. A failure ends the program with the reason.
    void configure(const QString &http);
    /// Starts it and waits until it takes connections on port(). False, with a warning, when it does not.
    bool start();
    /// Ends it with all its connections at once; the port is free then.
    void stop(End how);
    bool isRunning() const;
    qint64 processId() const;

    /// The lines of access.log since the last call, without their ends, oldest first.
    QList<QByteArray> newLogLines();

private:
    bool takesConnections() const;

    const QDir directory;
    const quint16 boundPort;
    QProcess process;
    qint64 logRead = 0;
};
