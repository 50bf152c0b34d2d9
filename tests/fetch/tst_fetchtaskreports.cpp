#include "curlfake.h"
#include "messagecapture.h"
#include "platformcapture.h"
#include "taskthread.h"
#include "threadtext.h"
#include "vfetchtask.h"
#include "vfetchtask_p.h"
#include "watchingtask.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace
{

const QString url = QStringLiteral("https://host.example/path with space");
const QByteArray sentUrl = "https://host.example/path%20with%20space";

/// What a task's signals said, and whether the task counted as running at that moment.
struct Heard {
    explicit Heard(VFetchTask &task)
    {
        QObject::connect(&task, &VFetchTask::success, &task, [this, &task](const QByteArray &body) {
            results.append({0, body, task.isRunning()});
        });
        QObject::connect(&task, &VFetchTask::failure, &task, [this, &task](int code, const QByteArray &body) {
            results.append({code, body, task.isRunning()});
        });
    }

    struct Result {
        int code; ///< 0 for a success
        QByteArray body;
        bool whileRunning;
    };
    QList<Result> results;
};

} // namespace

/// What a run reports of what libcurl says, when, and its lines on the way.
class TestFetchTaskReports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void status_decides_data();
    void status_decides();
    void noHandle_failsWithMinusOne();
    void curlError_isTheCode();
    void transferCutOff_hasNoBody();
    void statusUnknown_isACurlError();
    void unresolvedHost_readsTheResolverFirst();

    void responseHeader_hasTheStatusOfTheTransfer();
    void responseHeader_isEightBitText();
    void responseHeader_holdsTheLastRunsOnly();
    void responseHeader_ofSeveralBlocksIsTheLast();

    void result_comesWhileTheTaskRuns_data();
    void result_comesWhileTheTaskRuns();
    void hook_findsTheTaskRunningWithItsLastResults();
    void refusedRun_keepsTheLastResults();
    void transfer_countsAsRunning();

    void run_namesItsThread();
    void oneTimeUpdate_namesItsThread();
    void refusedRun_hasItsLines();
    void headerLines_hideCredentials();
};

void TestFetchTaskReports::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestFetchTaskReports::status_decides_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("199") << 199 << false;
    QTest::newRow("200") << 200 << true;
    QTest::newRow("204") << 204 << true;
    QTest::newRow("299") << 299 << true;
    QTest::newRow("300") << 300 << false;
    QTest::newRow("304") << 304 << false;
    QTest::newRow("400") << 400 << false;
    QTest::newRow("404") << 404 << false;
    QTest::newRow("503") << 503 << false;
}

void TestFetchTaskReports::status_decides()
{
    QFETCH(int, status);
    QFETCH(bool, succeeds);
    CurlFake::setAnswer({CURLE_OK, status, "the body", "HTTP/1.1 999 Odd\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);
    const Heard heard(task);

    task.run();

    QCOMPARE(heard.results.size(), 1);
    QCOMPARE(heard.results.constFirst().code, succeeds ? 0 : status);
    QCOMPARE(heard.results.constFirst().body, QByteArray("the body"));
    QCOMPARE(task.status(), status);
    QCOMPARE(task.responseBody(), QByteArray("the body"));
    const QByteArray line = "FetchTask: GET Status=" + QByteArray::number(status) + " Url=" + sentUrl;
    QCOMPARE(PlatformCapture::count(line), 1);
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning).contains(line), !succeeds);
    QCOMPARE(PlatformCapture::texts(LogPriority::Debug),
             QList<QByteArray>{"FetchTask: Making request to " + sentUrl} +
                 (succeeds ? QList<QByteArray>{line} : QList<QByteArray>{}));
}

void TestFetchTaskReports::noHandle_failsWithMinusOne()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.run(); // a good one first: its status must not stay
    QCOMPARE(task.status(), 200);
    CurlFake::setInitFails(true);
    const Heard heard(task);

    task.run();

    QCOMPARE(heard.results.size(), 1);
    QCOMPARE(heard.results.constFirst().code, -1);
    QCOMPARE(heard.results.constFirst().body, QByteArray());
    QCOMPARE(task.status(), 0);
    QCOMPARE(PlatformCapture::texts(LogPriority::Error),
             QList<QByteArray>{"FetchTask: Unable to initialize curl."});
    QVERIFY(PlatformCapture::texts(LogPriority::Verbose).last().startsWith("FetchTask: 1 is finished in "));
    QVERIFY(!task.isRunning());
}

void TestFetchTaskReports::curlError_isTheCode()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.run(); // a good one first: its status must not stay
    QCOMPARE(task.status(), 200);
    CurlFake::setAnswer({CURLE_OPERATION_TIMEDOUT, 0, "", ""});
    const Heard heard(task);

    task.run();

    QCOMPARE(heard.results.size(), 1);
    QCOMPARE(heard.results.constFirst().code, 28);
    QCOMPARE(heard.results.constFirst().body, QByteArray());
    QCOMPARE(task.status(), 0);
    QCOMPARE(PlatformCapture::texts(LogPriority::Error),
             QList<QByteArray>{"FetchTask: [Error] 28 " + sentUrl + " Timeout was reached"});
    QCOMPARE(CurlFake::resolverReads(), 0);
}

void TestFetchTaskReports::transferCutOff_hasNoBody()
{
    CurlFake::setAnswer({CURLE_PARTIAL_FILE, 200, "half of a bo", "HTTP/1.1 200 OK\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);
    const Heard heard(task);

    task.run();

    QCOMPARE(task.responseBody(), QByteArray("half of a bo")); // it did arrive
    QCOMPARE(heard.results.size(), 1);
    QCOMPARE(heard.results.constFirst().code, 18);
    QCOMPARE(heard.results.constFirst().body, QByteArray());
    QCOMPARE(task.status(), 0);
}

void TestFetchTaskReports::statusUnknown_isACurlError()
{
    CurlFake::failStatus(CURLE_BAD_FUNCTION_ARGUMENT);
    VFetchTask task(1);
    task.setUrl(url);
    const Heard heard(task);

    task.run();

    QCOMPARE(heard.results.size(), 1);
    QCOMPARE(heard.results.constFirst().code, 43);
    QCOMPARE(heard.results.constFirst().body, QByteArray());
}

void TestFetchTaskReports::unresolvedHost_readsTheResolverFirst()
{
    CurlFake::setAnswer({CURLE_COULDNT_RESOLVE_HOST, 0, "", ""});
    VFetchTask task(1);
    task.setUrl(url);
    // Before the failure is announced: whoever retries at once must meet the new configuration.
    QList<int> readsWhenAnnounced;
    connect(&task, &VFetchTask::failure, &task,
            [&readsWhenAnnounced] { readsWhenAnnounced.append(CurlFake::resolverReads()); });
    const Heard heard(task);

    task.run();

    QCOMPARE(heard.results.constFirst().code, 6);
    QCOMPARE(readsWhenAnnounced, QList<int>{1});
    QCOMPARE(CurlFake::resolverReads(), 1);
}

void TestFetchTaskReports::responseHeader_hasTheStatusOfTheTransfer()
{
    CurlFake::setAnswer({CURLE_OK, 404, "", "HTTP/1.0 999 Odd\r\nX: y\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);

    task.run();

    QCOMPARE(task.responseHeader().toString(), QStringLiteral("HTTP/1.1 404 \r\nX: y\r\n\r\n"));
}

void TestFetchTaskReports::responseHeader_isEightBitText()
{
    CurlFake::setAnswer({CURLE_OK, 200, "", "HTTP/1.1 200 OK\r\nX: \xc3\xbc\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);

    task.run();

    QCOMPARE(task.responseHeader().value(QStringLiteral("X")), QString::fromLatin1("\xc3\xbc"));
}

void TestFetchTaskReports::responseHeader_holdsTheLastRunsOnly()
{
    CurlFake::queueAnswer({CURLE_OK, 200, "", "HTTP/1.1 200 OK\r\nX: y\r\n\r\n"});
    CurlFake::queueAnswer({CURLE_OK, 200, "", ""});
    VFetchTask task(1);
    task.setUrl(url);
    task.run();
    QVERIFY(task.responseHeader().hasKey(QStringLiteral("X")));

    task.run();

    QCOMPARE(task.responseHeader().keys(), QStringList());
}

void TestFetchTaskReports::responseHeader_ofSeveralBlocksIsTheLast()
{
    CurlFake::setAnswer(
        {CURLE_OK, 200, "", "HTTP/1.1 302 Found\r\nX: a\r\n\r\nHTTP/1.1 200 OK\r\nX: b\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);

    task.run();

    QCOMPARE(task.responseHeader().allValues(QStringLiteral("X")), QStringList{QStringLiteral("b")});
}

void TestFetchTaskReports::result_comesWhileTheTaskRuns_data()
{
    QTest::addColumn<int>("curlCode");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("noHandle");
    QTest::addColumn<bool>("refuses");
    QTest::addColumn<int>("code");
    QTest::newRow("success") << 0 << 200 << false << false << 0;
    QTest::newRow("status") << 0 << 503 << false << false << 503;
    QTest::newRow("curl error") << 7 << 0 << false << false << 7;
    QTest::newRow("no handle") << 0 << 200 << true << false << -1;
    QTest::newRow("refused") << 0 << 200 << false << true << -2;
}

void TestFetchTaskReports::result_comesWhileTheTaskRuns()
{
    QFETCH(int, curlCode);
    QFETCH(int, status);
    QFETCH(bool, noHandle);
    QFETCH(bool, refuses);
    CurlFake::setAnswer({static_cast<CURLcode>(curlCode), status, "", ""});
    CurlFake::setInitFails(noHandle);
    WatchingTask task(1);
    task.refuses = refuses;
    const Heard heard(task);

    task.run();

    QCOMPARE(heard.results.size(), 1);
    QTEST(heard.results.constFirst().code, "code");
    QVERIFY(heard.results.constFirst().whileRunning);
    QVERIFY(!task.isRunning());
}

void TestFetchTaskReports::hook_findsTheTaskRunningWithItsLastResults()
{
    CurlFake::queueAnswer({CURLE_OK, 200, "first", ""});
    CurlFake::queueAnswer({CURLE_OK, 200, "second", ""});
    WatchingTask task(1);
    task.setUrl(url);
    task.run();
    QVERIFY(task.wasRunning);
    QCOMPARE(task.lastBody, QByteArray());

    task.run();

    QCOMPARE(task.lastBody, QByteArray("first"));
    QCOMPARE(task.responseBody(), QByteArray("second"));
}

void TestFetchTaskReports::refusedRun_keepsTheLastResults()
{
    CurlFake::setAnswer({CURLE_OK, 201, "the body", "HTTP/1.1 201 Made\r\nX: y\r\n\r\n"});
    WatchingTask task(1);
    task.setUrl(url);
    task.run();
    task.refuses = true;

    task.run();

    QCOMPARE(task.status(), 201);
    QCOMPARE(task.responseBody(), QByteArray("the body"));
    QVERIFY(task.responseHeader().hasKey(QStringLiteral("X")));
}

void TestFetchTaskReports::transfer_countsAsRunning()
{
    CurlFake::hold();
    VFetchTask task(1);
    task.setUrl(url);
    TaskThread thread(task);

    QMetaObject::invokeMethod(&task, "run");
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    const bool runningDuringTheTransfer = task.isRunning();
    thread.finish();

    QVERIFY(runningDuringTheTransfer);
    QVERIFY(!task.isRunning());
}

void TestFetchTaskReports::run_namesItsThread()
{
    WatchingTask task(7);
    task.setUrl(url);
    TaskThread thread(task);
    PlatformCapture::clear();

    QMetaObject::invokeMethod(&task, "run");
    thread.finish();

    QVERIFY(task.ranOn != QThread::currentThreadId());
    QCOMPARE(PlatformCapture::texts(LogPriority::Verbose),
             (QList<QByteArray>{"FetchTask: 7 is running in thread 0x" + threadText(task.ranOn),
                                "FetchTask: 7 is finished in thread 0x" + threadText(task.ranOn)}));
}

void TestFetchTaskReports::oneTimeUpdate_namesItsThread()
{
    VFetchTask task(1);
    PlatformCapture::clear();

    task.findChild<VFetchTaskPrivate *>()->scheduleOneTimeUpdateIn(0);

    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"FetchTask: void VFetchTaskPrivate::scheduleOneTimeUpdateIn(int) Thread: " +
                               threadText(QThread::currentThreadId()) + ' '});
    QCOMPARE(PlatformCapture::lines().constFirst().priority, int(LogPriority::Debug));
}

void TestFetchTaskReports::refusedRun_hasItsLines()
{
    auto task = std::make_unique<WatchingTask>(9);
    task->refuses = true;

    task->run();
    task.reset();

    QCOMPARE(PlatformCapture::texts(LogPriority::Debug),
             QList<QByteArray>{"FetchTask. Prepare has returned false. Task 9 skipped."});
    QCOMPARE(CurlFake::requestCount(), 0);
    QCOMPARE(
        PlatformCapture::texts(LogPriority::Verbose),
        (QList<QByteArray>{"Fetch task created",
                           "FetchTask: 9 is running in thread 0x" + threadText(QThread::currentThreadId()),
                           "Fetch task deleted"}));
}

void TestFetchTaskReports::headerLines_hideCredentials()
{
    const MessageCapture messages;
    VFetchTask task(1);
    task.setUrl(url);
    task.setHeader(QStringLiteral("Accept"), QStringLiteral("application/json"));
    task.setHeader(QStringLiteral("authorization"), QStringLiteral("Basic c2VjcmV0"));

    task.run();

    QCOMPARE(messages.debugTexts(), (QStringList{QStringLiteral("header Accept : application/json"),
                                                 QStringLiteral("header authorization : ***")}));
    QCOMPARE(CurlFake::requests().constFirst().headers,
             (QList<QByteArray>{"Accept: application/json", "authorization: Basic c2VjcmV0"}));
    QVERIFY(!PlatformCapture::texts().join('\n').contains("c2VjcmV0"));
}

QTEST_GUILESS_MAIN(TestFetchTaskReports)
#include "tst_fetchtaskreports.moc"
