#include "platformcapture.h"
#include "privatebus.h"
#include "startup.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QtTest>

/// What a refused start leaves behind. The starts that go well are the end-to-end tests'.
class TestStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(bus.startAsSystemBus()); }
    void init() { PlatformCapture::clear(); }

    void nameTaken_endsBeforeAnythingIsMade();
    void pathTaken_endsWithTheNameStillClaimed();

private:
    PrivateBus bus;
};

void TestStartup::nameTaken_endsBeforeAnythingIsMade()
{
    QDBusConnection other = QDBusConnection::connectToBus(bus.address(), QStringLiteral("other"));
    QVERIFY(other.registerService(QStringLiteral("com.qwixtd")));

    const int status = runDaemon(*QCoreApplication::instance());

    QCOMPARE(status, -1);
    QCOMPARE(PlatformCapture::lines().size(), 1); // no line of a manager
    const PlatformCapture::Line line = PlatformCapture::lines().constFirst();
    QCOMPARE(line.priority, int(LogPriority::Warning));
    QCOMPARE(line.tag, QByteArray("QWIXTD"));
    QVERIFY(line.text.startsWith("QWIXTD: failed to register dbus service "));
    QVERIFY(QDBusConnection::systemBus().objectRegisteredAt(QStringLiteral("/")) == nullptr);
    QVERIFY(other.unregisterService(QStringLiteral("com.qwixtd")));
}

void TestStartup::pathTaken_endsWithTheNameStillClaimed()
{
    QDBusConnection system = QDBusConnection::systemBus();
    QObject occupant;
    QVERIFY(system.registerObject(QStringLiteral("/"), &occupant));

    const int status = runDaemon(*QCoreApplication::instance());

    QCOMPARE(status, -1);
    QCOMPARE(PlatformCapture::lines().size(), 1);
    QCOMPARE(PlatformCapture::lines().constFirst().priority, int(LogPriority::Warning));
    QVERIFY(PlatformCapture::texts().constFirst().startsWith("QWIXTD: failed to register dbus interface "));
    QCOMPARE(system.interface()->serviceOwner(QStringLiteral("com.qwixtd")).value(), system.baseService());
}

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
