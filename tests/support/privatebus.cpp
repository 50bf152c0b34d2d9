#include "privatebus.h"

#include <QDir>
#include <QFile>

#include <csignal>

namespace
{
QByteArray readLine(std::FILE *file)
{
    char line[500];
    return QByteArray(std::fgets(line, sizeof line, file)).trimmed();
}
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
    // Not by QProcess, which cannot start a program where the processor is emulated (qemu-user). setpriv has
    // the daemon killed with the test program, however that ends.
    const QString command =
        QStringLiteral("exec setpriv --pdeathsig KILL dbus-daemon --nofork --nosyslog --print-address=1 "
                       "--print-pid=1 '--config-file=%1' '--address=unix:path=%2'")
            .arg(configuration, directory.filePath(QStringLiteral("bus")));
    daemon = ::popen(qPrintable(command), "re");
    busAddress = daemon ? QString::fromUtf8(readLine(daemon)) : QString();
    daemonId = daemon ? readLine(daemon).toInt() : 0;
    if (daemonId <= 0) {
        qWarning("the private bus did not start: %s", qPrintable(command));
        stop();
        return false;
    }
    return true;
}

bool PrivateBus::startAsSystemBus()
{
    return start() && qputenv("DBUS_SYSTEM_BUS_ADDRESS", busAddress.toUtf8());
}

void PrivateBus::stop()
{
    if (daemonId > 0) {
        ::kill(daemonId, SIGKILL);
    }
    if (daemon) {
        ::pclose(daemon);
    }
    daemon = nullptr;
    daemonId = 0;
}

QString PrivateBus::address() const
{
    return busAddress;
}

qint64 PrivateBus::processId() const
{
    return daemonId;
}

QString PrivateBus::servicesDirectory() const
{
    return directory.filePath(QStringLiteral("services"));
}
