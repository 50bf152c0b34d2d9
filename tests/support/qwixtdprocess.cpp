#include "qwixtdprocess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <csignal>
#include <iterator>

namespace
{
constexpr int startTimeoutMs = 20000;
constexpr int stopTimeoutMs = 10000;
constexpr int pollMs = 5;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

QwixtdProcess::QwixtdProcess(const QString &program_, const QString &bundlePath_)
    : program(program_)
    , bundlePath(bundlePath_)
    , environment(QProcessEnvironment::systemEnvironment())
{
    // What a developer's machine may have set, and the daemon or its libraries would follow.
    for (const char *name :
         {"JOURNAL_STREAM", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
        environment.remove(QString::fromLatin1(name));
    }
}

QwixtdProcess::~QwixtdProcess()
{
    if (!isRunning()) {
        return;
    }
    // What watches the daemon reports at the end that it can see.
    terminate();
    if (isRunning()) {
        process.kill();
        process.waitForFinished(stopTimeoutMs);
    }
}

void QwixtdProcess::setEnvironment(const QString &name, const QString &value)
{
    if (value.isEmpty()) {
        environment.remove(name);
    } else {
        environment.insert(name, value);
    }
}

void QwixtdProcess::setSandbox(const QStringList &arguments)
{
    sandbox = arguments;
}

bool QwixtdProcess::start(const QString &busAddress, const QString &serverHost)
{
    daemonId = 0;
    standardOutput.clear();
    standardError.clear();
    setEnvironment(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), busAddress);
    setEnvironment(QStringLiteral("QWIXTD_SERVER_HOST"), serverHost);
    process.setProcessEnvironment(environment);
    QFile::remove(statusPath());
    process.start(QStringLiteral(QWIXTD_RUN_SCRIPT),
                  QStringList{bundlePath, statusPath(), program} + sandbox);
    QElapsedTimer elapsed;
    elapsed.start();
    while (daemonId == 0 && elapsed.elapsed() < startTimeoutMs) {
        daemonId = findDaemon();
        // A daemon that ends at once, as it does without a bus, has been started all the same.
        if (daemonId == 0 && process.waitForFinished(pollMs)) {
            return true;
        }
        if (process.state() == QProcess::NotRunning) {
            break;
        }
    }
    if (daemonId == 0) {
        qWarning("%s was not started: %s", qPrintable(program), qPrintable(process.errorString()));
    }
    return daemonId != 0;
}

bool QwixtdProcess::isRunning() const
{
    return process.state() != QProcess::NotRunning;
}

bool QwixtdProcess::waitForExit(int timeoutMs)
{
    return process.state() == QProcess::NotRunning || process.waitForFinished(timeoutMs);
}

int QwixtdProcess::exitStatus() const
{
    return process.exitCode();
}

void QwixtdProcess::terminate()
{
    if (isRunning() && daemonId > 0) {
        ::kill(static_cast<pid_t>(daemonId), SIGTERM);
        process.waitForFinished(stopTimeoutMs);
    }
}

qint64 QwixtdProcess::processId() const
{
    return daemonId;
}

QByteArray QwixtdProcess::statusField(const QByteArray &name) const
{
    const QList<QByteArray> lines = contentOf(QStringLiteral("/proc/%1/status").arg(daemonId)).split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name + ':')) {
            return line.mid(name.size() + 1).trimmed();
        }
    }
    return {};
}

QList<QByteArray> QwixtdProcess::errorLines()
{
    collect();
    QList<QByteArray> lines = standardError.split('\n');
    lines.removeLast();
    return lines;
}

QList<QByteArray> QwixtdProcess::takeErrorLines()
{
    const QList<QByteArray> lines = errorLines();
    standardError.remove(0, standardError.lastIndexOf('\n') + 1);
    return lines;
}

QByteArray QwixtdProcess::output()
{
    collect();
    return standardOutput + standardError;
}

bool QwixtdProcess::hasComplaint(const QByteArray &output)
{
    static const char *const complaints[] = {"ERROR: AddressSanitizer",
                                             "ERROR: LeakSanitizer",
                                             "runtime error:",
                                             "QObject",
                                             "QThread",
                                             "QTimer",
                                             "QMutex",
                                             "QDBusConnection",
                                             "Fatal"};
    return std::any_of(std::begin(complaints), std::end(complaints),
                       [&output](const char *complaint) { return output.contains(complaint); });
}

void QwixtdProcess::collect()
{
    if (isRunning()) {
        process.waitForReadyRead(0);
    }
    standardOutput += process.readAllStandardOutput();
    standardError += process.readAllStandardError();
}

QString QwixtdProcess::statusPath() const
{
    return directory.filePath(QStringLiteral("status"));
}

// The sandbox names the process before it has become the program, or what QWIXTD_RUN_UNDER puts before that.
qint64 QwixtdProcess::findDaemon() const
{
    const QByteArray status = contentOf(statusPath());
    const QJsonDocument firstLine = QJsonDocument::fromJson(status.left(status.indexOf('\n')));
    const qint64 child = firstLine.object().value(QStringLiteral("child-pid")).toInt();
    const QString running = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(child));
    return running.isEmpty() || QFileInfo(running).fileName() == QStringLiteral("bwrap") ? 0 : child;
}
