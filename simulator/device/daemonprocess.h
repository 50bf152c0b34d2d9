#pragma once

#include <QProcess>

/// The application daemon as a program that this process starts and ends, and whose lines it reads. It ends
/// with this process in any case.
class DaemonProcess : public QObject
{
    Q_OBJECT
public:
    explicit DaemonProcess(QObject *parent = nullptr);
    /// Ends the program.
    ~DaemonProcess() override;

    /// @p program_ is started without arguments, with QWIXTD_SERVER_HOST set to @p serverHost.
    void set(const QString &program_, const QString &serverHost);
    /// Whether set() has named a program.
    bool isGiven() const;
    bool isRunning() const;

    /// False, with errorText(), when the program cannot be started.
    bool start();
    /// Ends it and waits for its end, 3 s for a friendly one.
    void stop();
    QString errorText() const;

Q_SIGNALS:
    /// A line of the program's standard output or standard error.
    void lineRead(const QString &line);
    /// The program has ended and nobody had asked it to.
    void ended(const QString &how);

private:
    void readLines();
    void reportEnd(int status, QProcess::ExitStatus how);

    QString program;
    QProcess process;
    bool isStopping = false;
};
