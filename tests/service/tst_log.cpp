#include "log.h"
#include "platformcapture.h"

#include <QtTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int reportedStatus = 42;
int reportFile = -1;

/// When this process aborts, it writes its first line to @p file and ends with reportedStatus.
void reportWhenAborted(int file)
{
    reportFile = file;
    std::signal(SIGABRT, [](int) {
        const PlatformCapture::Line line = PlatformCapture::lines().constFirst();
        const QByteArray report = QByteArray::number(line.priority) + ' ' + line.text;
        const ssize_t sent = ::write(reportFile, report.constData(), static_cast<size_t>(report.size()));
        std::signal(SIGABRT, SIG_DFL);
        _exit(sent > 0 ? reportedStatus : 1);
    });
}

} // namespace

class TestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PlatformCapture::clear(); }

    void lineBeforeTheTagIsSet_carriesAnEmptyTag();
    void emptyTag_leavesThePlaceToTheNext();
    void secondTag_isIgnored();
    void eachLevel_hasItsPriority();
    void verboseAndDebug_writeNothing();
    void longLine_isCutTo254Characters_data();
    void longLine_isCutTo254Characters();
    void trailingSpace_isKept();
    void fatal_writesItsLineAndAborts();
};

void TestLog::lineBeforeTheTagIsSet_carriesAnEmptyTag()
{
    // No tag is set yet: this test is the first.

    logInfo("early");

    QCOMPARE(PlatformCapture::lines().size(), 1);
    QCOMPARE(PlatformCapture::lines().constFirst().tag, QByteArray());
}

void TestLog::emptyTag_leavesThePlaceToTheNext()
{
    logSetTag("");
    logSetTag("QWIXTD");

    logInfo("line");

    QCOMPARE(PlatformCapture::lines().constFirst().tag, QByteArray("QWIXTD"));
}

void TestLog::secondTag_isIgnored()
{
    logSetTag("QWIXTD");
    logSetTag("OTHER");

    logInfo("line");

    QCOMPARE(PlatformCapture::lines().constFirst().tag, QByteArray("QWIXTD"));
}

void TestLog::eachLevel_hasItsPriority()
{
    logInfo("i %d", 1);
    logWarning("w %s", "two");
    logError("e %x", 255U);

    const QList<PlatformCapture::Line> lines = PlatformCapture::lines();
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0).priority, int(LogPriority::Info));
    QCOMPARE(lines.at(0).text, QByteArray("i 1"));
    QCOMPARE(lines.at(1).priority, int(LogPriority::Warning));
    QCOMPARE(lines.at(1).text, QByteArray("w two"));
    QCOMPARE(lines.at(2).priority, int(LogPriority::Error));
    QCOMPARE(lines.at(2).text, QByteArray("e ff"));
}

void TestLog::verboseAndDebug_writeNothing()
{
    QVERIFY(!debugLogEnabled());
    // The format is not even looked at: a string at this address cannot be read.
    const auto *const unreadable = reinterpret_cast<const char *>(8);

    logVerbose("verbose %s", "text");
    logDebug("debug %d", 7);
    logDebug("%s", unreadable);
    logVerbose("%s", unreadable);

    QVERIFY(PlatformCapture::lines().isEmpty());
}

void TestLog::longLine_isCutTo254Characters_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("written");
    QTest::newRow("one below the limit") << 253 << 253;
    QTest::newRow("at the limit") << 254 << 254;
    QTest::newRow("one above the limit") << 255 << 254;
    QTest::newRow("far above the limit") << 300 << 254;
}

void TestLog::longLine_isCutTo254Characters()
{
    QFETCH(int, length);
    QFETCH(int, written);
    QByteArray text(length, 'x');
    text[252] = 'y';

    logWarning("%s", text.constData());

    QCOMPARE(PlatformCapture::lines().constFirst().text, text.left(written));
}

void TestLog::trailingSpace_isKept()
{
    logInfo("ends in a space ");

    QCOMPARE(PlatformCapture::lines().constFirst().text, QByteArray("ends in a space "));
}

void TestLog::fatal_writesItsLineAndAborts()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);

    const pid_t child = fork();
    if (child == 0) {
        reportWhenAborted(ends[1]);
        logFatal("the end of %s", "all");
    }
    close(ends[1]);
    char report[64] = {};
    const ssize_t received = read(ends[0], report, sizeof report - 1);
    close(ends[0]);
    int status = 0;
    const pid_t ended = waitpid(child, &status, 0);

    QVERIFY(received > 0);
    QCOMPARE(ended, child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), reportedStatus);
    QCOMPARE(QByteArray(report), QByteArray::number(LogPriority::Fatal) + " the end of all");
}

QTEST_GUILESS_MAIN(TestLog)
#include "tst_log.moc"
