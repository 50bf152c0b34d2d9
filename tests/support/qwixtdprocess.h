#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The real daemon, as a process that trusts the tests' authority, which nobody else does:
/// tools/run-daemon.sh puts a certificate bundle over the system's for it alone. It ends with this object,
/// and with the test program however that ends.
class QwixtdProcess
{
public:
    /// @p program is the daemon's path, @p bundlePath the certificates that it trusts.
    QwixtdProcess(const QString &program, const QString &bundlePath);
    ~QwixtdProcess();
    Q_DISABLE_COPY(QwixtdProcess)

    /// For the next start(); an empty value removes the variable.
    void setEnvironment(const QString &name, const QString &value);
    /// For the next start(): further options of bubblewrap; the certificate bundle comes on top of them.
    void setSandbox(const QStringList &arguments);
    /// Starts the daemon on a bus and against a server ("host:port"), and waits until the program runs.
    /// False, with a warning, when it does not come to that.
    bool start(const QString &busAddress, const QString &serverHost);

    bool isRunning() const;
    /// True when the daemon has ended by itself within @p timeoutMs.
    bool waitForExit(int timeoutMs);
    /// The daemon's exit status, or 128 and the signal's number when a signal ended it. After its end only.
    int exitStatus() const;
    /// Ends the daemon with SIGTERM, as a service supervisor does, and waits for it.
    void terminate();

    /// The daemon's own process id, for /proc and signals.
    qint64 processId() const;
    /// The value of one field of /proc/PID/status, such as "VmRSS" or "Threads".
    QByteArray statusField(const QByteArray &name) const;

    /// What the daemon wrote to standard error so far, by lines; a last line that is not ended is left out.
    QList<QByteArray> errorLines();
    /// Those lines, once: what this returns is in no later answer of any of these functions.
    QList<QByteArray> takeErrorLines();
    /// All that the daemon wrote so far, to standard output and standard error.
    QByteArray output();
    /// Whether a daemon's output has what no daemon may ever write, whatever is done to it: a sanitizer's
    /// report, or a complaint of Qt's.
    static bool hasComplaint(const QByteArray &output);

private:
    void collect();
    qint64 findDaemon() const;
    QString statusPath() const;

    const QString program;
    const QString bundlePath;
    QProcessEnvironment environment;
    QStringList sandbox;
    const QTemporaryDir directory;
    QProcess process;
    qint64 daemonId = 0;
    QByteArray standardOutput;
    QByteArray standardError;
};
