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

    void line_data();
    void line();
    void lineInTheJournal_beginsWithItsPriority();
    void controlCharacters_areBlanks();
    void otherBytes_stay();
    void fullPipe_isAnErrorAndNoMore();
};

void TestPlatformLog::line_data()
{
    QTest::addColumn<int>("priority");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<QByteArray>("inJournal");
    QTest::newRow("verbose") << 2 << QByteArray("V/QWIXTD: a line\n") << QByteArray("<7>V/QWIXTD: a line\n");
    QTest::newRow("debug") << 3 << QByteArray("D/QWIXTD: a line\n") << QByteArray("<7>D/QWIXTD: a line\n");
    QTest::newRow("info") << 4 << QByteArray("I/QWIXTD: a line\n") << QByteArray("<6>I/QWIXTD: a line\n");
    QTest::newRow("warning") << 5 << QByteArray("W/QWIXTD: a line\n") << QByteArray("<4>W/QWIXTD: a line\n");
    QTest::newRow("error") << 6 << QByteArray("E/QWIXTD: a line\n") << QByteArray("<3>E/QWIXTD: a line\n");
    QTest::newRow("fatal") << 7 << QByteArray("F/QWIXTD: a line\n") << QByteArray("<2>F/QWIXTD: a line\n");
}

void TestPlatformLog::line()
{
    QFETCH(int, priority);
    QFETCH(QByteArray, expected);
    QFETCH(QByteArray, inJournal);
    QCOMPARE(written(priority, "QWIXTD", "a line"), QList<QByteArray>{expected});
    qputenv("JOURNAL_STREAM", "8:12345");
    QCOMPARE(written(priority, "QWIXTD", "a line"), QList<QByteArray>{inJournal});
}

void TestPlatformLog::lineInTheJournal_beginsWithItsPriority()
{
    // An empty tag, as before the daemon has set its own.
    qputenv("JOURNAL_STREAM", "8:12345");
    QCOMPARE(written(5, "", "early"), QList<QByteArray>{"<4>W/: early\n"});
}

void TestPlatformLog::controlCharacters_areBlanks()
{
    QCOMPARE(written(4, "T\nG", "one\nI/QWIXTD: forged\r\t\x1b[31m\x7f "),
             QList<QByteArray>{"I/T G: one I/QWIXTD: forged   [31m  \n"});
    QCOMPARE(written(4, "T",
                     "\xc2\x85next\xc2\x9b"
                     "31m\xc2\xa0\xc2"),
             QList<QByteArray>{"I/T:  next 31m\xc2\xa0\xc2\n"});
}

void TestPlatformLog::otherBytes_stay()
{
    QCOMPARE(written(4, "T", "\xc3\xbc %s \xff"), QList<QByteArray>{"I/T: \xc3\xbc %s \xff\n"});
}

void TestPlatformLog::fullPipe_isAnErrorAndNoMore()
{
    const StandardError standardError;
    int result = 0;
    for (int i = 0; i < 100000 && result >= 0; ++i) {
        result = __android_log_write(4, "T", "line");
    }
    QVERIFY(result < 0);
}

QTEST_GUILESS_MAIN(TestPlatformLog)
#include "tst_platformlog.moc"
