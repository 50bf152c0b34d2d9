#include "daemonprocess.h"

#include <QFileInfo>

namespace
{
constexpr int patienceMs = 3000;
}

DaemonProcess::DaemonProcess(QObject *parent)
    : QObject(parent)
{
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    connect(&process, &QProcess::readyReadStandardOutput, this, &DaemonProcess::readLines);
    connect(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &DaemonProcess::reportEnd);
}

DaemonProcess::~DaemonProcess()
{
    // There is nobody left to report to.
    blockSignals(true);
    stop();
}

void DaemonProcess::set(const QString &program_, const QString &serverHost)
{
    program = program_;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QWIXTD_SERVER_HOST"), serverHost);
    // The lines are for a person, not for a journal.
    environment.remove(QStringLiteral("JOURNAL_STREAM"));
    process.setProcessEnvironment(environment);
}

bool DaemonProcess::isGiven() const
{
    return !program.isEmpty();
}

bool DaemonProcess::isRunning() const
{
    return process.state() != QProcess::NotRunning;
}

bool DaemonProcess::start()
{
    isStopping = false;
    if (!QFileInfo(program).isExecutable()) {
        return false;
    }
    // It ends with this program, however that ends.
    process.start(QStringLiteral("setpriv"),
                  {QStringLiteral("--pdeathsig"), QStringLiteral("TERM"), program});
    return process.waitForStarted();
}

void DaemonProcess::stop()
{
    if (!isRunning()) {
        return;
    }
    isStopping = true;
    process.terminate();
    if (!process.waitForFinished(patienceMs)) {
        process.kill();
        process.waitForFinished(patienceMs);
    }
}

QString DaemonProcess::errorText() const
{
    return QStringLiteral("cannot start %1: it is not there, or no program").arg(program);
}

void DaemonProcess::readLines()
{
    while (process.canReadLine()) {
        Q_EMIT lineRead(QString::fromUtf8(process.readLine()).trimmed());
    }
}

void DaemonProcess::reportEnd(int status, QProcess::ExitStatus how)
{
    if (!isStopping) {
        Q_EMIT ended(how == QProcess::NormalExit ? QStringLiteral("qwixtd ended with status %1").arg(status)
                                                 : QStringLiteral("qwixtd was ended by a signal"));
    }
}
