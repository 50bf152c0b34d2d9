// The daemon as a process: its start, its memory, its rest, its size.

#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>
#include <QUuid>

namespace
{
constexpr int patienceMs = 20000;
constexpr double nsPerMs = 1e6;
constexpr double bytesPerKilobyte = 1024;
constexpr double bytesPerMegabyte = 1024 * 1024;

/// A bus without a device, and a view of the daemon's name on it.
class NameOnBus
{
public:
    NameOnBus()
    {
        require(privateBus.start(), QStringLiteral("no bus"));
        const QDBusConnection bus = QDBusConnection::connectToBus(privateBus.address(), connectionName);
        watcher.setConnection(bus);
        watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
        watcher.addWatchedService(Device::service);
        QObject::connect(
            &watcher, &QDBusServiceWatcher::serviceOwnerChanged,
            [this](const QString &, const QString &, const QString &owner) { isOwned = !owner.isEmpty(); });
    }

    ~NameOnBus() { QDBusConnection::disconnectFromBus(connectionName); }
    Q_DISABLE_COPY(NameOnBus)

    QString address() const { return privateBus.address(); }

    void waitFor(bool owned)
    {
        require(QTest::qWaitFor([&] { return isOwned == owned; }, patienceMs),
                QStringLiteral("the name is not %1")
                    .arg(owned ? QStringLiteral("claimed") : QStringLiteral("free")));
    }

private:
    PrivateBus privateBus;
    const QString connectionName = QUuid::createUuid().toString();
    QDBusServiceWatcher watcher;
    bool isOwned = false;
};

/// From the start of the process to its name on the bus.
double startMs(NameOnBus &name, const QString &program)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), name.address());
    process.setProcessEnvironment(environment);
    QElapsedTimer elapsed;
    elapsed.start();
    process.start(program, QStringList());
    name.waitFor(true);
    const auto taken = static_cast<double>(elapsed.nsecsElapsed());
    process.kill();
    process.waitForFinished(patienceMs);
    name.waitFor(false);
    return taken / nsPerMs;
}

double floorMemory()
{
    NameOnBus name;
    QwixtdProcess floor(QStringLiteral(PROCESS_FLOOR), Certificates::shared().authority());
    require(floor.start(name.address(), QString()), QStringLiteral("the floor does not start"));
    name.waitFor(true);
    return Measure::privateDirtyBytes(floor.processId());
}

double readyMemory(StaticServer &server)
{
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    return Measure::privateDirtyBytes(device.processId());
}
} // namespace

QVector<Row> Figures::start(const Scale &scale)
{
    NameOnBus name;
    QVector<double> figure;
    QVector<double> floor;
    for (int round = 0; round < scale.starts; ++round) {
        floor.append(startMs(name, QStringLiteral(PROCESS_FLOOR)));
        figure.append(startMs(name, QStringLiteral(QWIXTD_PROGRAM)));
    }
    return {{QStringLiteral("start of the process to its name on the bus"), QStringLiteral("ms"),
             least(figure), least(floor), 1.0}};
}

QVector<Row> Figures::memory(const Scale &scale)
{
    StaticServer server;
    QVector<double> figure;
    QVector<double> floor;
    for (int round = 0; round < scale.rounds; ++round) {
        floor.append(floorMemory() / bytesPerMegabyte);
        figure.append(readyMemory(server) / bytesPerMegabyte);
    }
    return {{QStringLiteral("own memory, Ready"), QStringLiteral("MB"), median(figure), median(floor), 1.2}};
}

QVector<Row> Figures::idle(const Scale &scale)
{
    StaticServer server;
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    QTest::qWait(1000); // what follows the list is done by then
    const qint64 before = Measure::contextSwitches(device.processId());
    QTest::qWait(scale.idleMs);
    const qint64 after = Measure::contextSwitches(device.processId());
    return {{QStringLiteral("context switches in %1 s, Ready, empty queue").arg(scale.idleMs / 1000),
             QString(), static_cast<double>(after - before), std::nullopt, 0, Row::Judged::Value}};
}

QVector<Row> Figures::programSize(const Scale & /*scale*/)
{
    const QTemporaryDir directory;
    const QString copy = directory.filePath(QStringLiteral("qwixtd"));
    require(QProcess::execute(QStringLiteral("strip"),
                              {QStringLiteral("-o"), copy, QStringLiteral(QWIXTD_PROGRAM)}) == 0,
            QStringLiteral("the program cannot be stripped"));
    return {{QStringLiteral("stripped program"), QStringLiteral("KB"),
             static_cast<double>(QFileInfo(copy).size()) / bytesPerKilobyte, std::nullopt, 200,
             Row::Judged::Value}};
}
