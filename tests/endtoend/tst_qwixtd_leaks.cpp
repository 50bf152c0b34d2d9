#include "certificates.h"
#include "deviceundertest.h"

/// A build with the leak sanitizer reports leaks although the daemon ends without exit handlers.
class TestLeaks : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void busLostByADaemonThatLeaks_isReported();
    void nameRefusedToADaemonThatLeaks_isReported();
};

namespace
{
constexpr int promptMs = 20000;
constexpr int statusOfTheSanitizer = 23; // and of no end of the daemon's own
const QByteArray report = "ERROR: LeakSanitizer: detected memory leaks";

void setStatusOfTheSanitizer(QwixtdProcess &daemon)
{
    daemon.setEnvironment("ASAN_OPTIONS"_text, QStringLiteral("exitcode=%1").arg(statusOfTheSanitizer));
}
} // namespace

void TestLeaks::busLostByADaemonThatLeaks_isReported()
{
    PrivateBus bus;
    QVERIFY(bus.start());
    QwixtdProcess daemon(QStringLiteral(QWIXTD_LEAKING_PROGRAM), Certificates::shared().bundle());
    setStatusOfTheSanitizer(daemon);
    QVERIFY(daemon.start(bus.address(), "localhost:1"_text));
    DaemonWatcher watcher(bus.address());
    EVENTUALLY(watcher.isDaemonPresent());

    bus.stop();

    QVERIFY(daemon.waitForExit(promptMs));
    QVERIFY2(daemon.output().contains(report), daemon.output().constData());
    QVERIFY(daemon.output().contains("lost the system bus"));
    QCOMPARE(daemon.exitStatus(), statusOfTheSanitizer);
}

void TestLeaks::nameRefusedToADaemonThatLeaks_isReported()
{
    QwixtdProcess daemon(QStringLiteral(QWIXTD_LEAKING_PROGRAM), Certificates::shared().bundle());
    setStatusOfTheSanitizer(daemon);

    QVERIFY(daemon.start("unix:path=/nonexistent/bus"_text, "localhost:1"_text));

    QVERIFY(daemon.waitForExit(promptMs));
    QVERIFY2(daemon.output().contains(report), daemon.output().constData());
    QCOMPARE(daemon.exitStatus(), statusOfTheSanitizer);
}

QTEST_GUILESS_MAIN(TestLeaks)
#include "tst_qwixtd_leaks.moc"
