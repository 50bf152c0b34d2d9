#include "certificates.h"
#include "deviceundertest.h"

#include <csignal>

/// How the daemon ends: names that it cannot have, a bus that is not there or goes away, its supervisor.
class TestEnd : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void secondInstance_endsAndTheFirstGoesOn();
    void noBus_endsWithTheReason();
    void busLost_endsForTheSupervisorToStartItAgain();
    void busLostWhileATransferHangs_endsAtOnceAllTheSame();
    void busLost_endsWithoutDestroyingWhatTheFetchThreadUses();
    void endUnderLoad_isPromptAndNoCrash_data();
    void endUnderLoad_isPromptAndNoCrash();
    void busLostWhileARetryWaits_endsAtOnceAllTheSame();
    void terminatedWhileATransferHangs_endsAtOnce();
};

namespace
{
constexpr int promptMs = 5000 * slowdown;
constexpr int statusOfMinusOne = 255;

ServerFault hangs()
{
    return ServerFault::withDelay(60000);
}

/// Asks for forty registrations, of which the first seven are refused once.
void askForMuch(DeviceUnderTest &device)
{
    device.server().failNext(7, ServerFault::withStatus(503));
    for (int i = 0; i < 40; ++i) {
        device.watcher().registerApplication(QStringLiteral("w%1").arg(i), "Name"_text, "t"_text);
    }
}
} // namespace

void TestEnd::secondInstance_endsAndTheFirstGoesOn()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    QwixtdProcess second(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());

    QVERIFY(second.start(device.bus().address(), device.server().host()));
    QVERIFY(second.waitForExit(promptMs));

    QCOMPARE(second.exitStatus(), statusOfMinusOne);
    QCOMPARE(second.output(), QByteArray("W/QWIXTD: QWIXTD: failed to register dbus service \n"));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
}

void TestEnd::noBus_endsWithTheReason()
{
    QwixtdProcess program(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());

    QVERIFY(program.start("unix:path=/nonexistent/bus"_text, "localhost"_text));
    QVERIFY(program.waitForExit(promptMs));

    QCOMPARE(program.exitStatus(), statusOfMinusOne);
    QCOMPARE(program.output(),
             QByteArray("W/QWIXTD: QWIXTD: failed to register dbus service Not connected to D-Bus server\n"));
}

void TestEnd::busLost_endsForTheSupervisorToStartItAgain()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QCOMPARE(device.lines(), QList<QByteArray>{"W/QWIXTD: QWIXTD: lost the system bus"});
    QCOMPARE(device.program().exitStatus(), 1);
}

void TestEnd::busLostWhileATransferHangs_endsAtOnceAllTheSame()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failAlways(hangs());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QCOMPARE(device.program().exitStatus(), 1);
    QVERIFY(device.hasLine("W/QWIXTD: QWIXTD: lost the system bus"));
}

void TestEnd::busLost_endsWithoutDestroyingWhatTheFetchThreadUses()
{
    // The application object and what exit handlers take down must outlive a transfer that is under way.
    DeviceUnderTest device(QStringLiteral(QWIXTD_WITNESSED_PROGRAM));
    QVERIFY(device.startAll());
    device.server().failAlways(hangs());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QCOMPARE(device.program().exitStatus(), 1);
    QVERIFY2(!device.program().output().contains("witness:"), device.program().output().constData());
}

void TestEnd::endUnderLoad_isPromptAndNoCrash_data()
{
    QTest::addColumn<bool>("busIsLost");
    QTest::addColumn<int>("status");

    QTest::newRow("terminated") << false << 128 + SIGTERM;
    QTest::newRow("bus lost") << true << 1;
}

// The fetch thread is in the middle of a handshake or of an answer as likely as not, with libraries and
// objects that must not be gone then. The number of ends comes from the environment variable
// QWIXTD_TEST_ENDS, for a longer trial than that of every day.
void TestEnd::endUnderLoad_isPromptAndNoCrash()
{
    QFETCH(bool, busIsLost);
    QFETCH(int, status);
    const int ends = qEnvironmentVariable("QWIXTD_TEST_ENDS", "5"_text).toInt();
    QVERIFY(ends > 0);

    for (int round = 1; round <= ends; ++round) {
        DeviceUnderTest device;
        QVERIFY(device.startAll());
        askForMuch(device);
        EVENTUALLY(device.server().requestCount() >= 2 + round % 15);
        device.expectExit();
        if (busIsLost) {
            device.bus().stop();
        } else {
            QCOMPARE(::kill(static_cast<pid_t>(device.program().processId()), SIGTERM), 0);
        }

        QVERIFY(device.program().waitForExit(promptMs));
        QCOMPARE(device.program().exitStatus(), status);
    }
}

void TestEnd::busLostWhileARetryWaits_endsAtOnceAllTheSame()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failAlways(ServerFault::withStatus(503));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY(device.lines('W').size() == 1);

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QCOMPARE(device.program().exitStatus(), 1);
}

void TestEnd::terminatedWhileATransferHangs_endsAtOnce()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failAlways(hangs());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);

    device.expectExit();
    QCOMPARE(::kill(static_cast<pid_t>(device.program().processId()), SIGTERM), 0);

    QVERIFY(device.program().waitForExit(promptMs));
    QCOMPARE(device.program().exitStatus(), 128 + SIGTERM);
    QCOMPARE(device.lines('E'), QList<QByteArray>());
}

QTEST_GUILESS_MAIN(TestEnd)
#include "tst_qwixtd_end.moc"
