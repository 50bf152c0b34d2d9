#include "privatebus.h"

#include <QDir>
#include <QFile>

namespace
{
constexpr int startTimeoutMs = 10000;
constexpr int stopTimeoutMs = 5000;

const char configuration[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=%1/bus</listen>
  <servicedir>%1/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";
} // namespace

PrivateBus::PrivateBus()
{
    QDir(folder.path()).mkdir(QStringLiteral("services"));
}

PrivateBus::~PrivateBus()
{
    stop();
}

bool PrivateBus::start()
{
    const QString configurationPath = folder.filePath(QStringLiteral("bus.conf"));
    QFile file(configurationPath);
    if (!file.open(QIODevice::WriteOnly)) {
        qWarning("cannot write the configuration of the private bus");
        return false;
    }
    file.write(QString::fromLatin1(configuration).arg(folder.path()).toUtf8());
    file.close();

    // setpriv has the daemon killed with the test program, however that ends.
    daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    daemon.start(QStringLiteral("setpriv"),
                 {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"), QStringLiteral("dbus-daemon"),
                  QStringLiteral("--nofork"), QStringLiteral("--nosyslog"),
                  QStringLiteral("--print-address=1"),
                  QStringLiteral("--config-file=%1").arg(configurationPath)});
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

QString PrivateBus::servicesFolder() const
{
    return folder.filePath(QStringLiteral("services"));
}
