#include "deviceundertest.h"

#include <QSet>

/// An internet that comes and goes while the server is slow and fails. No request may get lost then, and none
/// is sent while an earlier run of it is under way.
class TestFlapping : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void internetFlapsUnderASlowFailingServer_nothingIsLost();
    void internetFlapsFromTheStart_nothingIsLost();
    void busLostWhileTheInternetFlaps_endsAtOnce();
};

namespace
{
constexpr int ofEachKind = 6;
constexpr int toggles = 24;

ServerFault slow(ServerFault fault)
{
    fault.delayMs = 40;
    return fault;
}

// Every kind of failure, and slow successes among them.
void failInEveryWay(DeveloperServer &server, int rounds)
{
    for (int i = 0; i < rounds; ++i) {
        server.failNext(2, slow(ServerFault::withStatus(503)));
        server.failNext(1, slow(ServerFault::withClosedConnection()));
        server.failNext(1, slow(ServerFault()));
        server.failNext(1, slow(ServerFault::withStatus(401)));
    }
}

// One request of each kind, and what shows that all three were done.
bool requestAll(DeviceUnderTest &device, int number, QSet<QString> &expected)
{
    const QString text = QString::number(number);
    expected.insert(QStringLiteral("registered widget-%1").arg(text));
    expected.insert(QStringLiteral("deleted delete-%1").arg(text));
    expected.insert(QStringLiteral("updated update-%1").arg(text));
    return device.registerApplication("widget-"_text + text, "Name"_text, "t"_text) &&
           device.deleteApplication("delete-"_text + text, "u1"_text, "t"_text) &&
           device.updateApplication("update-"_text + text, "u2"_text, "Other"_text, "t"_text);
}

// What the daemon announced, and the updates, which it announces nothing for, as the server has them.
QSet<QString> done(DeviceUnderTest &device)
{
    QSet<QString> results;
    const QStringList announced = device.announced();
    for (const QString &text : announced) {
        const QStringList parts = text.mid(text.indexOf("("_text) + 1).split(", "_text);
        if (text.startsWith("applicationRegistered"_text)) {
            results.insert("registered "_text + parts.at(0));
        } else if (text.startsWith("applicationDeleted"_text)) {
            results.insert("deleted "_text + parts.at(1));
        }
    }
    const QList<ServerApplication> applications = device.server().applications();
    for (const ServerApplication &application : applications) {
        if (application.name == "Other"_text) {
            results.insert("updated "_text + application.appId);
        }
    }
    return results;
}

void addApplications(DeveloperServer &server)
{
    for (int i = 0; i < ofEachKind; ++i) {
        const QString number = QString::number(i);
        server.addApplication(listedApplication("delete-"_text + number, "u1"_text, "Name"_text));
        server.addApplication(listedApplication("update-"_text + number, "u2"_text, "Name"_text));
    }
}
} // namespace

void TestFlapping::internetFlapsUnderASlowFailingServer_nothingIsLost()
{
    DeviceUnderTest device;
    addApplications(device.server());
    QVERIFY(device.startAll());
    failInEveryWay(device.server(), 6);
    QSet<QString> expected;

    for (int i = 0; i < toggles; ++i) {
        QVERIFY(device.setInternetAvailable(i % 2 != 0));
        if (i % (toggles / ofEachKind) == 0) {
            QVERIFY(requestAll(device, i / (toggles / ofEachKind), expected));
        }
        QTest::qWait(i % 5 * 10);
    }
    QVERIFY(device.setInternetAvailable(true));

    QCOMPARE(expected.size(), 3 * ofEachKind);
    EVENTUALLY_EQUAL(done(device), expected);
    QCOMPARE(device.server().maximumConcurrent(), 1);
    QCOMPARE(device.announced().count(started), 1);
}

void TestFlapping::internetFlapsFromTheStart_nothingIsLost()
{
    DeviceUnderTest device;
    // The list fails once and then comes; what follows it fails too.
    device.server().failNext(1, slow(ServerFault::withStatus(503)));
    device.server().failNext(1, slow(ServerFault()));
    failInEveryWay(device.server(), 2);
    QVERIFY(device.startServices() && device.startProgram());
    QSet<QString> expected;

    for (int i = 0; i < toggles; ++i) {
        QVERIFY(device.setInternetAvailable(i % 2 != 0));
        const QString uuid = QStringLiteral("widget-%1").arg(i);
        QVERIFY(device.registerApplication(uuid, "Name"_text, "t"_text));
        expected.insert("registered "_text + uuid);
    }
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(done(device), expected);
    QCOMPARE(device.server().maximumConcurrent(), 1);
}

void TestFlapping::busLostWhileTheInternetFlaps_endsAtOnce()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    failInEveryWay(device.server(), 20);
    for (int i = 0; i < toggles; ++i) {
        QVERIFY(device.registerApplication(QStringLiteral("widget-%1").arg(i), "Name"_text, "t"_text));
        QVERIFY(device.setInternetAvailable(i % 2 != 0));
    }

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(5000));
    QCOMPARE(device.program().exitStatus(), 1);
}

QTEST_GUILESS_MAIN(TestFlapping)
#include "tst_qwixtd_flapping.moc"
