#include "deviceundertest.h"

#include <QElapsedTimer>

/// The bus is answered while the network hangs.
class TestResponsiveness : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void transferHangs_callsAreAnsweredWithin50ms();
};

void TestResponsiveness::transferHangs_callsAreAnsweredWithin50ms()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failAlways(ServerFault::withDelay(60000));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);

    qint64 slowestMs = 0;
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(device.registerApplication(QStringLiteral("w%1").arg(i), "Name"_text, "t"_text));
        slowestMs = std::max(slowestMs, elapsed.elapsed());
    }

    QVERIFY2(slowestMs <= 50 * slowdown, QByteArray::number(slowestMs).constData());
    // It hung all the while.
    QCOMPARE(device.server().requestCount(), 2);
    QCOMPARE(device.server().requests().at(1).answeredAtMs, qint64(0));
}

QTEST_GUILESS_MAIN(TestResponsiveness)
#include "tst_qwixtd_responsiveness.moc"
