#include "daemonwatcher.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QUuid>

namespace
{
const auto service = QStringLiteral("com.qwixtd");
const auto path = QStringLiteral("/");
const auto interfaceName = QStringLiteral("com.vorlet.qwixtd");
} // namespace

DaemonWatcher::DaemonWatcher(const QString &busAddress, QObject *parent)
    : QObject(parent)
    , connectionName(QUuid::createUuid().toString())
    , bus(QDBusConnection::connectToBus(busAddress, connectionName))
{
}

DaemonWatcher::~DaemonWatcher()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

bool DaemonWatcher::start()
{
    if (!bus.isConnected()) {
        return false;
    }
    auto *const watcher =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &DaemonWatcher::daemonAppeared);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, &DaemonWatcher::daemonVanished);
    // The connection reports its own end by a signal that comes from no service.
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(busLost()));
    // No sender is named: what anybody says under the daemon's interface is worth seeing.
    const bool isSubscribed =
        bus.connect(QString(), path, interfaceName, QStringLiteral("daemonDidStarted"), this,
                    SLOT(daemonDidStarted())) &&
        bus.connect(QString(), path, interfaceName, QStringLiteral("applicationRegistered"), this,
                    SLOT(applicationRegistered(QString, QString, QString))) &&
        bus.connect(QString(), path, interfaceName, QStringLiteral("applicationDeleted"), this,
                    SLOT(applicationDeleted(QString, QString, QString)));
    // The bus answers in order: once it has answered a call, the subscriptions are in force.
    isDaemonPresent();
    return isSubscribed;
}

bool DaemonWatcher::isDaemonPresent() const
{
    QDBusConnectionInterface *const busItself = bus.interface();
    return busItself != nullptr && busItself->isServiceRegistered(service).value();
}

void DaemonWatcher::registerApplication(const QString &uuid, const QString &name, const QString &type)
{
    call(QStringLiteral("registerQwixtApplication"), {uuid, name, type});
}

void DaemonWatcher::updateApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                                      const QString &type)
{
    call(QStringLiteral("updateQwixtApplication"), {qwixtId, uuid, name, type});
}

void DaemonWatcher::deleteApplication(const QString &qwixtId, const QString &uuid, const QString &type)
{
    call(QStringLiteral("deleteQwixtApplication"), {qwixtId, uuid, type});
}

void DaemonWatcher::daemonDidStarted()
{
    Q_EMIT received(QStringLiteral("daemonDidStarted"), {});
}

void DaemonWatcher::applicationRegistered(const QString &uuid, const QString &qwixtId, const QString &type)
{
    Q_EMIT received(QStringLiteral("applicationRegistered"), {uuid, qwixtId, type});
}

void DaemonWatcher::applicationDeleted(const QString &uuid, const QString &qwixtId, const QString &type)
{
    Q_EMIT received(QStringLiteral("applicationDeleted"), {uuid, qwixtId, type});
}

void DaemonWatcher::call(const QString &member, const QStringList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interfaceName, member);
    for (const QString &argument : arguments) {
        message << argument;
    }
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, member, arguments](QDBusPendingCallWatcher *finished) {
                const QDBusError error = finished->error();
                finished->deleteLater();
                Q_EMIT answered(member, arguments,
                                error.isValid() ? QStringLiteral("%1: %2").arg(error.name(), error.message())
                                                : QString());
            });
}
