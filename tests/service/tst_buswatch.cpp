#include "buswatch.h"
#include "platformcapture.h"
#include "privatebus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTimer>
#include <QtTest>

#include <memory>

/// The bus goes away before or after somebody watches it.
class TestBusWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void busLostLater_endsTheEventLoop();
    void busLostBeforeTheWatch_endsTheEventLoopToo();
    void busThere_isNotReported();

private:
    QDBusConnection connect();

    static constexpr int graceMs = 500;
    static constexpr int patienceMs = 10000;
    static constexpr int nothingHappened = 77;
    const QString connectionName = QStringLiteral("watched");
    std::unique_ptr<PrivateBus> bus;
};

namespace
{
const QList<QByteArray> warning = {"QWIXTD: lost the system bus"};

// The status that the event loop ends with, within this time.
int statusWithin(int milliseconds, int statusOtherwise)
{
    QTimer end;
    end.setSingleShot(true);
    QObject::connect(&end, &QTimer::timeout, [=] { QCoreApplication::exit(statusOtherwise); });
    end.start(milliseconds);
    return QCoreApplication::exec();
}
} // namespace

void TestBusWatch::init()
{
    PlatformCapture::clear();
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

void TestBusWatch::busLostLater_endsTheEventLoop()
{
    const BusWatch watch(connect());

    QTimer::singleShot(0, this, [this] { bus->stop(); });

    QCOMPARE(statusWithin(patienceMs, nothingHappened), BusWatch::lostBusStatus);
    QCOMPARE(PlatformCapture::texts(5), warning);
    QCOMPARE(PlatformCapture::lines().size(), 1);
}

void TestBusWatch::busLostBeforeTheWatch_endsTheEventLoopToo()
{
    const QDBusConnection connection = connect();
    QVERIFY(connection.isConnected());
    bus->stop();
    QTRY_VERIFY(!connection.isConnected());

    const BusWatch watch(connection);

    QCOMPARE(PlatformCapture::lines().size(), 0);
    QCOMPARE(statusWithin(patienceMs, nothingHappened), BusWatch::lostBusStatus);
    QCOMPARE(PlatformCapture::texts(5), warning);
    QCOMPARE(PlatformCapture::lines().size(), 1);
}

void TestBusWatch::busThere_isNotReported()
{
    const BusWatch watch(connect());

    const int status = statusWithin(graceMs, nothingHappened);

    QCOMPARE(status, nothingHappened);
    QCOMPARE(PlatformCapture::lines().size(), 0);
}

QTEST_GUILESS_MAIN(TestBusWatch)
#include "tst_buswatch.moc"
