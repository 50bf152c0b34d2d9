#include "privatebus.h"

#include <QDir>
#include <QFile>

namespace
{
constexpr int startTimeoutMs = 10000;
constexpr int stopTimeoutMs = 5000;
} // namespace

PrivateBus::PrivateBus()
{
    QDir(directory.path()).mkdir(QStringLiteral("services"));
}

PrivateBus::~PrivateBus()
{
    stop();
}

bool PrivateBus::start()
{
    // A copy, so that the services that it names stand in a directory of this bus's own.
    const QString configuration = directory.filePath(QStringLiteral("bus.conf"));
    if (!QFile::exists(configuration) &&
        !QFile::copy(QStringLiteral(QWIXTD_BUS_CONFIGURATION), configuration)) {
        qWarning("cannot copy %s to %s", QWIXTD_BUS_CONFIGURATION, qPrintable(configuration));
        return false;
    }
    // setpriv has the daemon killed with the test program, however that ends.
    daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    daemon.start(QStringLiteral("setpriv"),
                 {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"), QStringLiteral("dbus-daemon"),
                  QStringLiteral("--nofork"), QStringLiteral("--nosyslog"),
                  QStringLiteral("--print-address=1"), QStringLiteral("--config-file=%1").arg(configuration),
                  QStringLiteral("--address=unix:path=%1").arg(directory.filePath(QStringLiteral("bus")))});
    QByteArray line;
    while (!line.endsWith('\n')) {
        if (!daemon.waitForReadyRead(startTimeoutMs)) {
            qWarning("the private bus did not start: %s", qPrintable(daemon.errorString()));
            return false;
        }
        line += daemon.readAllStandardOutput();
    }
    busAddress = QString::fromUtf8(line).trimmed();
    return true;
}

bool PrivateBus::startAsSystemBus()
{
    return start() && qputenv("DBUS_SYSTEM_BUS_ADDRESS", busAddress.toUtf8());
}

void PrivateBus::stop()
{
    if (daemon.state() != QProcess::NotRunning) {
        daemon.kill();
        daemon.waitForFinished(stopTimeoutMs);
    }
}

QString PrivateBus::address() const
{
    return busAddress;
}

qint64 PrivateBus::processId() const
{
    return daemon.processId();
}

QString PrivateBus::servicesDirectory() const
{
    return directory.filePath(QStringLiteral("services"));
}
