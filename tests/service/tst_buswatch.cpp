#include "buswatch.h"
#include "privatebus.h"

#include <QDBusConnection>
#include <QSemaphore>
#include <QtTest>

#include <memory>

/// The bus goes away before or after somebody watches it.
class TestBusWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void busLostLater_isReportedWithoutTheEventLoop();
    void busLostBeforeTheWatch_isReportedAtOnce();
    void busThere_isNotReported();
    void busNeverThere_isNotReported();
    void busLostAfterTheWatch_isNotReported();

private:
    QDBusConnection connect();

    static constexpr int graceMs = 500;
    static constexpr int patienceMs = 10000;
    const QString connectionName = QStringLiteral("watched");
    std::unique_ptr<PrivateBus> bus;
};

void TestBusWatch::init()
{
    bus = std::make_unique<PrivateBus>();
    QVERIFY(bus->start());
}

void TestBusWatch::cleanup()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

QDBusConnection TestBusWatch::connect()
{
    return QDBusConnection::connectToBus(bus->address(), connectionName);
}

void TestBusWatch::busLostLater_isReportedWithoutTheEventLoop()
{
    static QSemaphore reports;
    const BusWatch watch(connect(), [] { reports.release(); });
    QCOMPARE(reports.available(), 0);

    bus->stop();

    QVERIFY(reports.tryAcquire(1, patienceMs));
}

void TestBusWatch::busLostBeforeTheWatch_isReportedAtOnce()
{
    static QSemaphore reports;
    const QDBusConnection connection = connect();
    QVERIFY(connection.isConnected());
    bus->stop();
    QTRY_VERIFY_WITH_TIMEOUT(!connection.isConnected(), patienceMs);

    const BusWatch watch(connection, [] { reports.release(); });

    QVERIFY(reports.available() >= 1);
}

void TestBusWatch::busThere_isNotReported()
{
    static QSemaphore reports;
    const QDBusConnection connection = connect();
    QVERIFY(connection.isConnected());

    const BusWatch watch(connection, [] { reports.release(); });

    QVERIFY(!reports.tryAcquire(1, graceMs));
    QVERIFY(connection.isConnected());
}

void TestBusWatch::busNeverThere_isNotReported()
{
    static QSemaphore reports;
    bus->stop();
    const QDBusConnection connection = connect();
    QVERIFY(!connection.isConnected());

    const BusWatch watch(connection, [] { reports.release(); });

    QVERIFY(!reports.tryAcquire(1, graceMs));
}

void TestBusWatch::busLostAfterTheWatch_isNotReported()
{
    static QSemaphore reports;
    const QDBusConnection connection = connect();
    {
        const BusWatch watch(connection, [] { reports.release(); });
    }

    bus->stop();

    QTRY_VERIFY_WITH_TIMEOUT(!connection.isConnected(), patienceMs);
    QVERIFY(!reports.tryAcquire(1, graceMs));
}

QTEST_GUILESS_MAIN(TestBusWatch)
#include "tst_buswatch.moc"
