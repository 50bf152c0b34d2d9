#include "deviceundertest.h"

#include <QElapsedTimer>

/// Short outages under a slow server: what is under way is not sent again, and what failed is sent again
/// once.
class TestOutages : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void slowServer_eachRequestIsSentOnce();
    void slowServer_onlyFailedRequestsAreSentAgain();
    void deletionAskedAgain_bothAreDone();
};

namespace
{

// Five outages of 0.3 s, each long over before the slow server has answered what was asked before the first.
bool flap(DeviceUnderTest &device)
{
    for (int i = 0; i < 5; ++i) {
        if (!device.setInternetAvailable(false)) {
            return false;
        }
        QTest::qWait(300);
        if (!device.setInternetAvailable(true)) {
            return false;
        }
        QTest::qWait(100);
    }
    return true;
}

/// How long a registration takes from the call to its announcement, in ms; -1 when it fails.
qint64 timeOfRegistration(DeviceUnderTest &device, const QString &uuid)
{
    const auto announced = device.announced().size() + 1;
    QElapsedTimer elapsed;
    elapsed.start();
    const bool asked = device.registerApplication(uuid, "Name"_text, "t"_text);
    const bool done = asked && QTest::qWaitFor([&] { return device.announced().size() == announced; }, 30000);
    return done ? elapsed.elapsed() : -1;
}

/// Adds the applications "app-x1" to "app-x<count>" of the widget "u2".
void addApplications(DeveloperServer &server, int count)
{
    for (int i = 1; i <= count; ++i) {
        server.addApplication(listedApplication(QStringLiteral("app-x%1").arg(i), "u2"_text, "Name"_text));
    }
}

} // namespace

void TestOutages::slowServer_eachRequestIsSentOnce()
{
    // Regression: each return of the internet sent the whole queue again, and what was asked later waited
    // behind it.
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failAlways(ServerFault::withDelay(1000));
    // The machine may be slow too: what a request costs in calm, before and after.
    const qint64 before = timeOfRegistration(device, "before"_text);
    QVERIFY(before >= 1000);
    device.server().clearRequests();
    QStringList requested;
    QStringList announced = device.announced();
    for (int i = 1; i <= 11; ++i) {
        requested.append(QStringLiteral("POST id=d9&identifier=w%1&name=Name&type=t").arg(i));
        announced.append(QStringLiteral("applicationRegistered(w%1, app-%2, t)").arg(i).arg(i + 1));
    }
    for (int i = 1; i <= 10; ++i) {
        QVERIFY(device.registerApplication(QStringLiteral("w%1").arg(i), "Name"_text, "t"_text));
    }

    QVERIFY(flap(device));
    QElapsedTimer sinceEleventh;
    sinceEleventh.start();
    QVERIFY(device.registerApplication("w11"_text, "Name"_text, "t"_text));

    QVERIFY(QTest::qWaitFor([&] { return device.announced().size() >= announced.size(); }, 60000));
    const qint64 eleventh = sinceEleventh.elapsed();
    QCOMPARE(device.announced(), announced);
    QTest::qWait(1500); // grace time: no request comes after the last
    QCOMPARE(device.requested(), requested);
    // It waited for the ten before it, and not for repeats of them.
    const qint64 after = timeOfRegistration(device, "after"_text);
    QVERIFY2(
        eleventh < 13 * qMax(before, after),
        qPrintable(QStringLiteral("%1 ms, one alone %2 and %3 ms").arg(eleventh).arg(before).arg(after)));
}

void TestOutages::slowServer_onlyFailedRequestsAreSentAgain()
{
    DeviceUnderTest device;
    addApplications(device.server(), 8);
    QVERIFY(device.startAll());
    device.server().clearRequests();
    // In the order of the requests: 2 and 8 are refused, 5 gets no answer.
    const QMap<int, ServerFault> faults = {{2, ServerFault::withStatus(503)},
                                           {5, ServerFault::withClosedConnection()},
                                           {8, ServerFault::withStatus(503)}};
    for (int i = 1; i <= 12; ++i) {
        ServerFault fault = faults.value(i);
        fault.delayMs = 200;
        device.server().failNext(1, fault);
    }
    device.server().failAlways(ServerFault::withDelay(200));
    QStringList asked;
    for (int i = 1; i <= 4; ++i) {
        const QString first = QStringLiteral("app-x%1").arg(2 * i - 1);
        const QString second = QStringLiteral("app-x%1").arg(2 * i);
        QVERIFY(device.registerApplication(QStringLiteral("w%1").arg(i), "Name"_text, "t"_text));
        QVERIFY(device.updateApplication(first, "u2"_text, "Other"_text, "t"_text));
        QVERIFY(device.deleteApplication(second, "u2"_text, "t"_text));
        asked.append({QStringLiteral("POST id=d9&identifier=w%1&name=Name&type=t").arg(i),
                      QStringLiteral("PUT app_id=%1&name=Other&type=t").arg(first),
                      QStringLiteral("DELETE app_id=%1&type=t").arg(second)});
    }

    QVERIFY(flap(device));

    EVENTUALLY_EQUAL(device.requested().size(), 15);
    const QStringList repeated = {asked.at(1), asked.at(4), asked.at(7)};
    EVENTUALLY_EQUAL(device.announced().size(), 1 + 4 + 4);
    QTest::qWait(500); // grace time: no request comes after the last
    QCOMPARE(device.requested(), asked + repeated);
}

void TestOutages::deletionAskedAgain_bothAreDone()
{
    // Regression: the second deletion's end took the first one's retry away, which then stayed in the queue
    // until the next return of the internet and was announced about a widget that had been registered anew.
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("app-x"_text, "u1"_text, "Name"_text));
    QVERIFY(device.startAll());
    device.server().clearRequests();
    device.server().failNext(1, ServerFault::withStatus(503));
    QVERIFY(device.deleteApplication("app-x"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.requested().size(), 1);

    QVERIFY(device.deleteApplication("app-x"_text, "u1"_text, "t"_text));

    const QString deleted = "applicationDeleted(u1, app-x, t)"_text;
    EVENTUALLY_EQUAL(device.announced().count(deleted), 2);
    QCOMPARE(device.requested(),
             QStringList(QVector<QString>(3, "DELETE app_id=app-x&type=t"_text).toList()));
    // Nothing of them is left to go out at the next return.
    QVERIFY(device.registerApplication("u1"_text, "Name"_text, "t"_text));
    QVERIFY(flap(device));
    EVENTUALLY(device.announced().last().startsWith("applicationRegistered(u1"_text));
    QTest::qWait(500); // grace time
    QCOMPARE(device.requested().size(), 4);
    QCOMPARE(device.announced().count(deleted), 2);
}

QTEST_GUILESS_MAIN(TestOutages)
#include "tst_qwixtd_outages.moc"
