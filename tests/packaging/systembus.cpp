#include "systembus.h"

#include <QFile>

namespace
{
constexpr int startTimeoutMs = 20000;
constexpr int stopTimeoutMs = 5000;
constexpr int callTimeoutMs = 30000;

// Said in a container that does not let the bus raise its limits; the bus goes on.
const QByteArray harmless = "Failed to set fd limit";

const QByteArray configuration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>%1</busconfig>
)";

QByteArray accounts()
{
    QFile file(QStringLiteral("/etc/passwd"));
    QByteArray lines = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    for (const auto &[user, name] : {std::pair{SystemBus::Qwixtd, "qwixtd"},
                                     {SystemBus::Widget, "widget"},
                                     {SystemBus::Intruder, "intruder"}}) {
        const QByteArray id = QByteArray::number(user);
        lines += QByteArray(name) + ":x:" + id + ':' + id + "::/:/bin/false\n";
    }
    return lines;
}

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}
} // namespace

bool SystemBus::Answer::isRefused() const
{
    return status != 0 && text.contains("org.freedesktop.DBus.Error.AccessDenied");
}

SystemBus::SystemBus()
{
    QFile::setPermissions(directory.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                QFile::ExeGroup | QFile::ExeOther);
}

SystemBus::~SystemBus()
{
    if (process.state() != QProcess::NotRunning) {
        process.kill(); // its sandbox ends the bus with itself
        process.waitForFinished(stopTimeoutMs);
    }
}

bool SystemBus::start(const QString &policies, const QByteArray &services)
{
    const QString accountsPath = directory.filePath(QStringLiteral("passwd"));
    const QString servicesPath = directory.filePath(QStringLiteral("services.conf"));
    if (!write(accountsPath, accounts()) ||
        !write(servicesPath, QByteArray(configuration).replace("%1", services))) {
        qWarning("cannot write the files of the system bus");
        return false;
    }
    // Everything of the machine's bus but its address and the directories of policies that a machine adds to.
    process.start(QStringLiteral("setpriv"),
                  {QStringLiteral("--pdeathsig"),
                   QStringLiteral("KILL"),
                   QStringLiteral("bwrap"),
                   QStringLiteral("--dev-bind"),
                   QStringLiteral("/"),
                   QStringLiteral("/"),
                   QStringLiteral("--die-with-parent"),
                   QStringLiteral("--ro-bind"),
                   accountsPath,
                   QStringLiteral("/etc/passwd"),
                   QStringLiteral("--tmpfs"),
                   QStringLiteral("/etc/dbus-1"),
                   QStringLiteral("--ro-bind"),
                   servicesPath,
                   QStringLiteral("/etc/dbus-1/system-local.conf"),
                   QStringLiteral("--ro-bind"),
                   policies,
                   QStringLiteral("/usr/share/dbus-1/system.d"),
                   QStringLiteral("dbus-daemon"),
                   QStringLiteral("--system"),
                   QStringLiteral("--nofork"),
                   QStringLiteral("--nosyslog"),
                   QStringLiteral("--nopidfile"),
                   QStringLiteral("--print-address=1"),
                   QStringLiteral("--address=unix:path=%1").arg(directory.filePath(QStringLiteral("bus")))});
    QByteArray line;
    while (!line.endsWith('\n')) {
        if (!process.waitForReadyRead(startTimeoutMs)) {
            qWarning("the system bus did not start: %s", process.readAllStandardError().constData());
            return false;
        }
        line += process.readAllStandardOutput();
    }
    busAddress = QString::fromUtf8(line).trimmed();
    return true;
}

QString SystemBus::address() const
{
    return busAddress;
}

QList<QByteArray> SystemBus::complaints()
{
    process.waitForReadyRead(0);
    QList<QByteArray> lines;
    for (const QByteArray &line : process.readAllStandardError().split('\n')) {
        if (!line.isEmpty() && !line.contains(harmless)) {
            lines.append(line);
        }
    }
    return lines;
}

QStringList SystemBus::switchingTo(User user)
{
    const QString id = QString::number(user);
    return {QStringLiteral("--reuid"), id, QStringLiteral("--regid"), id, QStringLiteral("--clear-groups")};
}

SystemBus::Answer SystemBus::send(User user, const QStringList &arguments) const
{
    QProcess client;
    client.setProcessChannelMode(QProcess::MergedChannels);
    client.start(QStringLiteral("setpriv"),
                 switchingTo(user) +
                     QStringList{QStringLiteral("dbus-send"), QStringLiteral("--bus=") + busAddress} +
                     arguments);
    if (!client.waitForFinished(callTimeoutMs) || client.exitStatus() != QProcess::NormalExit) {
        return {-1, client.errorString().toUtf8()};
    }
    return {client.exitCode(), client.readAll()};
}

SystemBus::Answer SystemBus::call(User user, const QString &destination, const QStringList &arguments) const
{
    return send(user, QStringList{QStringLiteral("--print-reply"), QStringLiteral("--dest=") + destination,
                                  QStringLiteral("/")} +
                          arguments);
}
