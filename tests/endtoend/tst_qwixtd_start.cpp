#include "deviceundertest.h"

/// The daemon's start on devices in every condition, and what it makes of the device's events.
class TestStart : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void setUpAndOnline_fetchesTheListOnceAndAnnouncesItself();
};

void TestStart::setUpAndOnline_fetchesTheListOnceAndAnnouncesItself()
{
    DeviceUnderTest device;

    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication(QStringLiteral("u1"), QStringLiteral("Clock"), QStringLiteral("t")));

    EVENTUALLY_EQUAL(device.announced(),
                     QStringList({QStringLiteral("daemonDidStarted()"),
                                  QStringLiteral("applicationRegistered(u1, app-1, t)")}));
    QCOMPARE(device.requested(), QStringList({QStringLiteral("GET"),
                                              QStringLiteral("POST id=d9&identifier=u1&name=Clock&type=t")}));
}

QTEST_GUILESS_MAIN(TestStart)
#include "tst_qwixtd_start.moc"
