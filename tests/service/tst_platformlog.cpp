#include "logpriority.h"
#include "platformlog.h"

#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

namespace
{

/// What standard error is given while it lives, each write(2) a packet of its own.
class StandardError
{
public:
    StandardError()
        : saved(dup(STDERR_FILENO))
    {
        if (pipe2(ends, O_DIRECT | O_NONBLOCK) != 0) {
            qFatal("no pipe");
        }
        dup2(ends[1], STDERR_FILENO);
    }
    ~StandardError()
    {
        dup2(saved, STDERR_FILENO);
        close(saved);
        close(ends[0]);
        close(ends[1]);
    }
    Q_DISABLE_COPY(StandardError)

    QList<QByteArray> writes() const
    {
        QList<QByteArray> packets;
        char buffer[4096];
        for (ssize_t count = read(ends[0], buffer, sizeof buffer); count > 0;
             count = read(ends[0], buffer, sizeof buffer)) {
            packets.append(QByteArray(buffer, static_cast<int>(count)));
        }
        return packets;
    }

private:
    int saved;
    int ends[2];
};

QList<QByteArray> written(int priority, const char *tag, const char *text)
{
    const StandardError standardError;
    __android_log_write(priority, tag, text);
    return standardError.writes();
}

} // namespace

class TestPlatformLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qunsetenv("JOURNAL_STREAM"); }
    void cleanup() { qunsetenv("JOURNAL_STREAM"); }

    void eachPriority_hasItsLetter_data();
    void eachPriority_hasItsLetter();
    void lineInTheJournal_beginsWithItsPriority_data();
    void lineInTheJournal_beginsWithItsPriority();
    void controlCharacters_becomeSpaces();
    void otherBytes_stay();
    void fullPipe_isAnErrorAndNoMore();
};

void TestPlatformLog::eachPriority_hasItsLetter_data()
{
    QTest::addColumn<int>("priority");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("verbose") << int(LogPriority::Verbose) << QByteArray("V/QWIXTD: a line\n");
    QTest::newRow("debug") << int(LogPriority::Debug) << QByteArray("D/QWIXTD: a line\n");
    QTest::newRow("info") << int(LogPriority::Info) << QByteArray("I/QWIXTD: a line\n");
    QTest::newRow("warning") << int(LogPriority::Warning) << QByteArray("W/QWIXTD: a line\n");
    QTest::newRow("error") << int(LogPriority::Error) << QByteArray("E/QWIXTD: a line\n");
    QTest::newRow("fatal") << int(LogPriority::Fatal) << QByteArray("F/QWIXTD: a line\n");
}

void TestPlatformLog::eachPriority_hasItsLetter()
{
    QFETCH(int, priority);
    QFETCH(QByteArray, line);

    const QList<QByteArray> writes = written(priority, "QWIXTD", "a line");

    QCOMPARE(writes, QList<QByteArray>{line});
}

void TestPlatformLog::lineInTheJournal_beginsWithItsPriority_data()
{
    QTest::addColumn<int>("priority");
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<QByteArray>("line");
    const QByteArray tag = "QWIXTD";
    QTest::newRow("verbose") << int(LogPriority::Verbose) << tag << QByteArray("<7>V/QWIXTD: a line\n");
    QTest::newRow("debug") << int(LogPriority::Debug) << tag << QByteArray("<7>D/QWIXTD: a line\n");
    QTest::newRow("info") << int(LogPriority::Info) << tag << QByteArray("<6>I/QWIXTD: a line\n");
    QTest::newRow("warning") << int(LogPriority::Warning) << tag << QByteArray("<4>W/QWIXTD: a line\n");
    QTest::newRow("error") << int(LogPriority::Error) << tag << QByteArray("<3>E/QWIXTD: a line\n");
    QTest::newRow("fatal") << int(LogPriority::Fatal) << tag << QByteArray("<2>F/QWIXTD: a line\n");
    QTest::newRow("before the tag is set")
        << int(LogPriority::Warning) << QByteArray() << QByteArray("<4>W/: a line\n");
}

void TestPlatformLog::lineInTheJournal_beginsWithItsPriority()
{
    QFETCH(int, priority);
    QFETCH(QByteArray, tag);
    QFETCH(QByteArray, line);
    qputenv("JOURNAL_STREAM", "8:12345");

    const QList<QByteArray> writes = written(priority, tag.constData(), "a line");

    QCOMPARE(writes, QList<QByteArray>{line});
}

void TestPlatformLog::controlCharacters_becomeSpaces()
{
    const QList<QByteArray> oneByte =
        written(LogPriority::Info, "T\nG", "one\nI/QWIXTD: forged\r\t\x1b[31m\x7f ");
    const QList<QByteArray> twoBytes = written(LogPriority::Info, "T",
                                               "\xc2\x85next\xc2\x9b"
                                               "31m\xc2\xa0\xc2");

    QCOMPARE(oneByte, QList<QByteArray>{"I/T G: one I/QWIXTD: forged   [31m  \n"});
    QCOMPARE(twoBytes, QList<QByteArray>{"I/T:  next 31m\xc2\xa0\xc2\n"});
}

void TestPlatformLog::otherBytes_stay()
{
    const QList<QByteArray> writes = written(LogPriority::Info, "T", "\xc3\xbc %s \xff");

    QCOMPARE(writes, QList<QByteArray>{"I/T: \xc3\xbc %s \xff\n"});
}

void TestPlatformLog::fullPipe_isAnErrorAndNoMore()
{
    const StandardError standardError;

    int result = 0;
    for (int i = 0; i < 100000 && result >= 0; ++i) {
        result = __android_log_write(LogPriority::Info, "T", "line");
    }

    QVERIFY(result < 0);
}

QTEST_GUILESS_MAIN(TestPlatformLog)
#include "tst_platformlog.moc"
