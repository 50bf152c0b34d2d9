#include "nameonbus.h"

#include "device.h"
#include "measures.h"

#include <QDBusConnection>
#include <QTest>
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
    QObject::connect(
        &watcher, &QDBusServiceWatcher::serviceOwnerChanged,
        [this](const QString &, const QString &, const QString &owner) { isClaimed = !owner.isEmpty(); });
}

NameOnBus::~NameOnBus()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

QString NameOnBus::address() const
{
    return bus.address();
}

void NameOnBus::waitFor(bool claimed)
{
    require(QTest::qWaitFor([&] { return isClaimed == claimed; }, patienceMs),
            claimed ? QStringLiteral("the name is not claimed") : QStringLiteral("the name is not free"));
}
