#include "nameonbus.h"

#include "device.h"
#include "measures.h"

#include <QDBusConnection>
#include <QTest>
#include <QTimer>
#include <QUuid>

namespace
{
constexpr int patienceMs = 20000;
}

NameOnBus::NameOnBus()
    : connectionName(QUuid::createUuid().toString())
{
    require(bus.start(), QStringLiteral("no bus"));
    watcher.setConnection(QDBusConnection::connectToBus(bus.address(), connectionName));
    watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcher.addWatchedService(Device::service);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged,
                     [this](const QString &, const QString &, const QString &owner) { noteOwner(owner); });
}

NameOnBus::~NameOnBus()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

QString NameOnBus::address() const
{
    return bus.address();
}

// QTest::qWaitFor sleeps between its looks, for as long as a start takes.
std::chrono::steady_clock::time_point NameOnBus::waitFor(bool claimed)
{
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, &QTimer::timeout, &change, &QEventLoop::quit);
    patience.start(patienceMs);
    while (isClaimed != claimed && patience.isActive()) {
        change.exec();
    }
    require(isClaimed == claimed,
            claimed ? QStringLiteral("the name is not claimed") : QStringLiteral("the name is not free"));
    return changedAt;
}

void NameOnBus::waitForAnswer()
{
    const QDBusConnection connection(connectionName);
    require(QTest::qWaitFor([&] { return Device::introspect(connection).contains(Device::interfaceName); },
                            patienceMs),
            QStringLiteral("the owner of the name does not answer"));
}

void NameOnBus::noteOwner(const QString &owner)
{
    isClaimed = !owner.isEmpty();
    changedAt = std::chrono::steady_clock::now();
    change.quit();
}
