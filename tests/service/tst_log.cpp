#include "log.h"
#include "platformcapture.h"
#include "platformlog.h"

#include <QtTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

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
    void trailingBlank_isKept();
    void fatal_writesItsLineAndAborts();
};

void TestLog::lineBeforeTheTagIsSet_carriesAnEmptyTag()
{
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
    QCOMPARE(lines.at(0).priority, 4);
    QCOMPARE(lines.at(0).text, QByteArray("i 1"));
    QCOMPARE(lines.at(1).priority, 5);
    QCOMPARE(lines.at(1).text, QByteArray("w two"));
    QCOMPARE(lines.at(2).priority, 6);
    QCOMPARE(lines.at(2).text, QByteArray("e ff"));
}

void TestLog::verboseAndDebug_writeNothing()
{
    logVerbose("verbose %s", "text");
    logDebug("debug %d", 7);
    // The format is not even looked at: this text address cannot be read.
    logDebug("%s", reinterpret_cast<const char *>(8));
    logVerbose("%s", reinterpret_cast<const char *>(8));
    QVERIFY(PlatformCapture::lines().isEmpty());
    QVERIFY(!debugLogEnabled());
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

void TestLog::trailingBlank_isKept()
{
    logInfo("ends in a blank ");
    QCOMPARE(PlatformCapture::lines().constFirst().text, QByteArray("ends in a blank "));
}

void TestLog::fatal_writesItsLineAndAborts()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        // Tell the parent what was written when the process aborts.
        static int out = ends[1];
        std::signal(SIGABRT, [](int) {
            const PlatformCapture::Line line = PlatformCapture::lines().constFirst();
            const QByteArray told = QByteArray::number(line.priority) + ' ' + line.text;
            const ssize_t sent = ::write(out, told.constData(), static_cast<size_t>(told.size()));
            std::signal(SIGABRT, SIG_DFL);
            _exit(sent > 0 ? 42 : 43);
        });
        logFatal("the end of %s", "all");
    }
    close(ends[1]);
    char told[64] = {};
    QVERIFY(read(ends[0], told, sizeof told - 1) > 0);
    close(ends[0]);
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 42);
    QCOMPARE(QByteArray(told), QByteArray("7 the end of all"));
}

QTEST_GUILESS_MAIN(TestLog)
#include "tst_log.moc"
