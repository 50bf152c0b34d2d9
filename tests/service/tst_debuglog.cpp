#include "log.h"
#include "platformcapture.h"

#include <QtTest>

class TestDebugLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void verboseAndDebug_areWrittenWithTheirPriorities();
};

void TestDebugLog::verboseAndDebug_areWrittenWithTheirPriorities()
{
    QVERIFY(debugLogEnabled());

    logVerbose("verbose %d", 1);
    logDebug("debug %s", "two");

    const QList<PlatformCapture::Line> lines = PlatformCapture::lines();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0).priority, int(LogPriority::Verbose));
    QCOMPARE(lines.at(0).text, QByteArray("verbose 1"));
    QCOMPARE(lines.at(1).priority, int(LogPriority::Debug));
    QCOMPARE(lines.at(1).text, QByteArray("debug two"));
}

QTEST_GUILESS_MAIN(TestDebugLog)
#include "tst_debuglog.moc"
