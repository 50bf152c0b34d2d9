#include "certificates.h"
#include "privatebus.h"
#include "qwixtdprocess.h"

#include <QtTest>

#include <QFile>

#include <csignal>
#include <memory>

namespace
{
QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

// What other tests stand on.
class TestTestSupport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void bundle_holdsTheAuthority();
    void daemonProcess_runsAndTrustsTheAuthority();
    void daemonProcess_endsWithTerminate();
    void daemonProcess_endsWithItsObject();
    void daemonWithoutABus_exitsWithItsStatusAndLine();
    void environment_reachesTheDaemon();
    void wordsToRunUnder_standBeforeTheDaemon();

private:
    PrivateBus bus;
};

void TestTestSupport::initTestCase()
{
    QVERIFY(bus.start());
}

void TestTestSupport::bundle_holdsTheAuthority()
{
    const Certificates &certificates = Certificates::shared();

    const QByteArray authority = contentOf(certificates.authority());
    const QByteArray bundle = contentOf(certificates.bundle());

    QVERIFY(authority.startsWith("-----BEGIN CERTIFICATE-----"));
    QVERIFY(bundle.endsWith(authority));
}

void TestTestSupport::daemonProcess_runsAndTrustsTheAuthority()
{
    QwixtdProcess daemon(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());

    const bool isStarted = daemon.start(bus.address(), QStringLiteral("127.0.0.1:1"));

    QVERIFY(isStarted);
    QVERIFY(daemon.isRunning());
    QVERIFY(daemon.processId() > 0);
    QCOMPARE(daemon.statusField("Name"), QByteArray("qwixtd"));
    QVERIFY(daemon.statusField("Threads").toInt() >= 1);
    QCOMPARE(daemon.statusField("NoSuchField"), QByteArray());
    // Seen through the daemon's own root: its bundle is the tests', and ours is what it was.
    const QString systemBundle = QStringLiteral("/etc/ssl/certs/ca-certificates.crt");
    const QByteArray authority = contentOf(Certificates::shared().authority());
    QVERIFY(contentOf(QStringLiteral("/proc/%1/root%2").arg(daemon.processId()).arg(systemBundle))
                .contains(authority));
    QVERIFY(!contentOf(systemBundle).contains(authority));
}

void TestTestSupport::daemonProcess_endsWithTerminate()
{
    QwixtdProcess daemon(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());
    QVERIFY(daemon.start(bus.address(), QStringLiteral("127.0.0.1:1")));
    const auto id = static_cast<pid_t>(daemon.processId());
    QVERIFY(!daemon.waitForExit(0));

    daemon.terminate();

    QVERIFY(!daemon.isRunning());
    QVERIFY(daemon.waitForExit(0));
    QCOMPARE(daemon.exitStatus(), 128 + SIGTERM);
    QVERIFY(::kill(id, 0) != 0);
}

void TestTestSupport::daemonProcess_endsWithItsObject()
{
    auto daemon =
        std::make_unique<QwixtdProcess>(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());
    QVERIFY(daemon->start(bus.address(), QStringLiteral("127.0.0.1:1")));
    const auto id = static_cast<pid_t>(daemon->processId());
    QCOMPARE(::kill(id, 0), 0);

    daemon.reset();

    QTRY_VERIFY(::kill(id, 0) != 0);
}

void TestTestSupport::daemonWithoutABus_exitsWithItsStatusAndLine()
{
    QwixtdProcess daemon(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());

    QVERIFY(daemon.start(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("127.0.0.1:1")));

    QVERIFY(daemon.waitForExit(20000));
    QCOMPARE(daemon.exitStatus(), 255);
    QCOMPARE(daemon.errorLines(), QList<QByteArray>{"W/QWIXTD: QWIXTD: failed to register dbus service "
                                                    "Not connected to D-Bus server"});
    QCOMPARE(daemon.output(), daemon.errorLines().at(0) + '\n');
}

void TestTestSupport::environment_reachesTheDaemon()
{
    qputenv("JOURNAL_STREAM", "8:1");
    QwixtdProcess daemon(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());
    daemon.setEnvironment(QStringLiteral("QWIXT_TEST_MARK"), QStringLiteral("seen"));

    const bool isStarted = daemon.start(bus.address(), QStringLiteral("127.0.0.1:1"));
    qunsetenv("JOURNAL_STREAM");

    QVERIFY(isStarted);
    const QList<QByteArray> variables =
        contentOf(QStringLiteral("/proc/%1/environ").arg(daemon.processId())).split('\0');
    QVERIFY(variables.contains("QWIXT_TEST_MARK=seen"));
    QVERIFY(variables.contains("QWIXTD_SERVER_HOST=127.0.0.1:1"));
    QVERIFY(variables.contains("DBUS_SYSTEM_BUS_ADDRESS=" + bus.address().toUtf8()));
    QVERIFY(!variables.contains("JOURNAL_STREAM=8:1"));
}

void TestTestSupport::wordsToRunUnder_standBeforeTheDaemon()
{
    qputenv("QWIXTD_RUN_UNDER", "env QWIXT_TEST_MARK=under");
    QwixtdProcess daemon(QStringLiteral(QWIXTD_PROGRAM), Certificates::shared().bundle());

    const bool isStarted = daemon.start(bus.address(), QStringLiteral("127.0.0.1:1"));
    qunsetenv("QWIXTD_RUN_UNDER");

    QVERIFY(isStarted);
    QTRY_COMPARE(daemon.statusField("Name"), QByteArray("qwixtd"));
    QVERIFY(contentOf(QStringLiteral("/proc/%1/environ").arg(daemon.processId()))
                .split('\0')
                .contains("QWIXT_TEST_MARK=under"));
}

QTEST_GUILESS_MAIN(TestTestSupport)
#include "tst_testsupport.moc"
