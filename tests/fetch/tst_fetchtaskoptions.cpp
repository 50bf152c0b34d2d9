#include "curlfake.h"
#include "messagecapture.h"
#include "platformcapture.h"
#include "vfetchtask.h"
#include "vfetchtask_p.h"

#include <QSignalSpy>
#include <QTemporaryFile>
#include <QtTest>

namespace
{

const QString url = QStringLiteral("https://host.example/path with blank");

QList<int> optionOrder(const CurlFake::Request &request)
{
    QList<int> order;
    for (const CurlFake::Option &noted : request.options) {
        order.append(noted.option);
    }
    return order;
}

class RefusingTask : public VFetchTask
{
public:
    using VFetchTask::VFetchTask;
    bool prepare() override { return false; }
};

} // namespace

/// What a run sets on libcurl, how it reports what libcurl says, and the debug lines on the way.
class TestFetchTaskOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void options_areSetInTheirOrderWithTheirValues();
    void method_data();
    void method();
    void customMethod_isTheWordOnTheWire();
    void emptyPost_setsAnEmptyBody();
    void noParameters_setNoBodyOptions();
    void body_hasItsLengthInBytes();
    void headers_areAscendingAndEightBit();
    void form_isBuiltFromItsParts();
    void timeout_isSetTwice();
    void status_decides_data();
    void status_decides();
    void noHandle_failsWithMinusOne();
    void curlError_isTheCode();
    void unresolvedHost_readsTheResolverAgain();
    void headerBlocks_theLastOneCounts();
    void everyRun_hasItsOwnHandle();
    void settings_canBeChangedDuringATransfer();
    void isRunning_duringATransfer();
    void debugStream_hidesCredentials();
    void refusedPrepare_hasItsLine();
};

void TestFetchTaskOptions::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestFetchTaskOptions::options_areSetInTheirOrderWithTheirValues()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::Put);
    task.setPostParam(QStringLiteral("a"), 1);
    task.setHeader(QStringLiteral("Accept"), QStringLiteral("text/plain"));
    task.run();

    const CurlFake::Request request = CurlFake::requests().constFirst();
    QCOMPARE(
        optionOrder(request),
        (QList<int>{CURLOPT_DNS_CACHE_TIMEOUT, CURLOPT_NOSIGNAL, CURLOPT_CUSTOMREQUEST, CURLOPT_POSTFIELDSIZE,
                    CURLOPT_COPYPOSTFIELDS, CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, CURLOPT_HEADERFUNCTION,
                    CURLOPT_HEADERDATA, CURLOPT_HTTPHEADER, CURLOPT_URL, CURLOPT_TIMEOUT,
                    CURLOPT_CONNECTTIMEOUT, CURLOPT_FOLLOWLOCATION, CURLOPT_ACCEPT_ENCODING}));
    QCOMPARE(request.number(CURLOPT_DNS_CACHE_TIMEOUT), 5L);
    QCOMPARE(request.number(CURLOPT_NOSIGNAL), 1L);
    QCOMPARE(request.number(CURLOPT_TIMEOUT), 180L);
    QCOMPARE(request.number(CURLOPT_CONNECTTIMEOUT), 180L);
    QCOMPARE(request.number(CURLOPT_FOLLOWLOCATION), 1L);
    QCOMPARE(request.text(CURLOPT_ACCEPT_ENCODING), QByteArray(""));
    QVERIFY(request.has(CURLOPT_ACCEPT_ENCODING));
    QCOMPARE(request.url(), QByteArray("https://host.example/path%20with%20blank"));
    QCOMPARE(request.body(), QByteArray("a=1"));
    QCOMPARE(request.headers, QList<QByteArray>{"Accept: text/plain"});
}

void TestFetchTaskOptions::method_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("option");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("word");
    QTest::newRow("Get") << 0 << static_cast<int>(CURLOPT_HTTPGET) << QByteArray() << QByteArray("GET");
    QTest::newRow("Post") << 1 << static_cast<int>(CURLOPT_HTTPPOST) << QByteArray() << QByteArray("POST");
    QTest::newRow("Put") << 2 << static_cast<int>(CURLOPT_CUSTOMREQUEST) << QByteArray("PUT")
                         << QByteArray("PUT");
    QTest::newRow("PostForm") << 3 << static_cast<int>(CURLOPT_HTTPPOST) << QByteArray()
                              << QByteArray("POST");
    QTest::newRow("Delete") << 4 << static_cast<int>(CURLOPT_CUSTOMREQUEST) << QByteArray("DELETE")
                            << QByteArray("DELETE");
    QTest::newRow("Custom") << 5 << static_cast<int>(CURLOPT_CUSTOMREQUEST) << QByteArray("PATCH")
                            << QByteArray("");
}

void TestFetchTaskOptions::method()
{
    QFETCH(int, method);
    QFETCH(int, option);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, word);
    VFetchTask task(1);
    task.setUrl(url);
    task.setCustomMethod("PATCH");
    task.setRequestMethod(method);
    task.setPostParam(QStringLiteral("a"), 1);
    task.setFormPart(QStringLiteral("part"), QStringLiteral("text"), QStringLiteral("value"));
    task.run();

    const CurlFake::Request request = CurlFake::requests().constFirst();
    const auto set = static_cast<CURLoption>(option);
    QVERIFY(request.has(set));
    for (const CURLoption other : {CURLOPT_HTTPGET, CURLOPT_HTTPPOST, CURLOPT_CUSTOMREQUEST}) {
        QCOMPARE(request.has(other), other == set);
    }
    QCOMPARE(request.text(set), text);
    if (method == VFetchTask::Get) {
        QCOMPARE(request.number(CURLOPT_HTTPGET), 1L);
    }
    if (method == VFetchTask::Post) {
        QCOMPARE(reinterpret_cast<intptr_t>(request.options.at(2).object), static_cast<intptr_t>(1));
    }
    QCOMPARE(request.body(), QByteArray("a=1")); // every method carries the body
    QCOMPARE(PlatformCapture::count("FetchTask: " + word +
                                    " Status=200 Url=https://host.example/path%20with%20blank"),
             1);
}

void TestFetchTaskOptions::customMethod_isTheWordOnTheWire()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::Custom);
    task.setCustomMethod("OPTIONS");
    task.run();
    QCOMPARE(CurlFake::requests().constFirst().method(), QByteArray("OPTIONS"));
}

void TestFetchTaskOptions::emptyPost_setsAnEmptyBody()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::Post);
    task.run();
    const CurlFake::Request request = CurlFake::requests().constFirst();
    QVERIFY(request.has(CURLOPT_COPYPOSTFIELDS));
    QCOMPARE(request.number(CURLOPT_POSTFIELDSIZE), 0L);
}

void TestFetchTaskOptions::noParameters_setNoBodyOptions()
{
    for (const int method : {0, 2, 3, 4, 5}) {
        CurlFake::reset();
        VFetchTask task(1);
        task.setUrl(url);
        task.setCustomMethod("X");
        task.setRequestMethod(method);
        task.run();
        const CurlFake::Request request = CurlFake::requests().constFirst();
        QVERIFY(!request.has(CURLOPT_POSTFIELDSIZE));
        QVERIFY(!request.has(CURLOPT_COPYPOSTFIELDS));
    }
}

void TestFetchTaskOptions::body_hasItsLengthInBytes()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::Put);
    task.setPostParams({{QStringLiteral("a"), QString::fromUtf8("\xe2\x82\xac")}});
    task.run();
    QCOMPARE(CurlFake::requests().constFirst().number(CURLOPT_POSTFIELDSIZE), 5L);
    QCOMPARE(CurlFake::requests().constFirst().body(), QByteArray("a=\xe2\x82\xac"));

    CurlFake::reset();
    task.setBody(QByteArray("be\0hind", 7));
    task.run();
    QCOMPARE(CurlFake::requests().constFirst().body(), QByteArray("be"));
}

void TestFetchTaskOptions::headers_areAscendingAndEightBit()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setHeader(QStringLiteral("X-B"), QStringLiteral("%1 stays"));
    task.setHeader(QStringLiteral("Accept"), QString::fromUtf8("\xc3\xbc"));
    task.setHeader(QStringLiteral("X-A"), QStringLiteral("old"));
    task.setHeader(QStringLiteral("X-A"), QStringLiteral("new"));
    task.run();
    QCOMPARE(CurlFake::requests().constFirst().headers,
             (QList<QByteArray>{"Accept: \xfc", "X-A: new", "X-B: %1 stays"}));
}

void TestFetchTaskOptions::form_isBuiltFromItsParts()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::PostForm);
    task.setFormPart(QStringLiteral("other"), QStringLiteral("picture"), QStringLiteral("skipped"));
    task.run();
    QCOMPARE(CurlFake::requests().constFirst().options.at(2).option, CURLOPT_HTTPPOST);
    QVERIFY(CurlFake::requests().constFirst().options.at(2).object == nullptr); // no part of a known kind

    CurlFake::reset();
    task.setFormPart(QStringLiteral("name"), QStringLiteral("text"), QStringLiteral("value"));
    task.run();
    QVERIFY(CurlFake::requests().constFirst().options.at(2).object != nullptr);
}

void TestFetchTaskOptions::timeout_isSetTwice()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setTimeout(12);
    task.run();
    QCOMPARE(CurlFake::requests().constFirst().number(CURLOPT_TIMEOUT), 12L);
    QCOMPARE(CurlFake::requests().constFirst().number(CURLOPT_CONNECTTIMEOUT), 12L);
}

void TestFetchTaskOptions::status_decides_data()
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

void TestFetchTaskOptions::status_decides()
{
    QFETCH(int, status);
    QFETCH(bool, succeeds);
    CurlFake::setAnswer({CURLE_OK, status, "the body", "HTTP/1.0 999 Odd\r\nX: y\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);
    const QSignalSpy successes(&task, &VFetchTask::success);
    const QSignalSpy failures(&task, &VFetchTask::failure);
    task.run();

    QCOMPARE(successes.count(), succeeds ? 1 : 0);
    QCOMPARE(failures.count(), succeeds ? 0 : 1);
    if (succeeds) {
        QCOMPARE(successes.at(0).at(0).toByteArray(), QByteArray("the body"));
    } else {
        QCOMPARE(failures.at(0).at(0).toInt(), status);
        QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray("the body"));
    }
    QCOMPARE(task.status(), status);
    QCOMPARE(task.responseBody(), QByteArray("the body"));
    QCOMPARE(task.responseHeader().statusCode(), status); // of the transfer, not of the text
    QCOMPARE(task.responseHeader().majorVersion(), 1);
    QCOMPARE(task.responseHeader().minorVersion(), 1);
    QCOMPARE(task.responseHeader().value(QStringLiteral("x")), QStringLiteral("y"));

    const QByteArray line = "FetchTask: GET Status=" + QByteArray::number(status) +
                            " Url=https://host.example/path%20with%20blank";
    QCOMPARE(PlatformCapture::count(line), 1);
    QCOMPARE(PlatformCapture::texts(5).contains(line), !succeeds);
    QCOMPARE(PlatformCapture::texts(3).contains(line), succeeds);
}

void TestFetchTaskOptions::noHandle_failsWithMinusOne()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.run(); // a good one first: its status must not stay
    QCOMPARE(task.status(), 200);
    CurlFake::setInitFails(true);
    const QSignalSpy failures(&task, &VFetchTask::failure);
    task.run();
    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), -1);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(task.status(), 0);
    QCOMPARE(PlatformCapture::texts(6), QList<QByteArray>{"FetchTask: Unable to initialize curl."});
    QVERIFY(PlatformCapture::texts(2).last().startsWith("FetchTask: 1 is finished in thread 0x"));
    QVERIFY(!task.isRunning());
}

void TestFetchTaskOptions::curlError_isTheCode()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.run(); // a good one first: its status must not stay
    CurlFake::setAnswer({CURLE_OPERATION_TIMEDOUT, 0, "", ""});
    const QSignalSpy failures(&task, &VFetchTask::failure);
    task.run();
    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 28);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(task.status(), 0);
    QCOMPARE(PlatformCapture::texts(6),
             QList<QByteArray>{
                 "FetchTask: [Error] 28 https://host.example/path%20with%20blank Timeout was reached"});
    QCOMPARE(CurlFake::resolverReads(), 0);
}

void TestFetchTaskOptions::unresolvedHost_readsTheResolverAgain()
{
    CurlFake::setAnswer({CURLE_COULDNT_RESOLVE_HOST, 0, "", ""});
    VFetchTask task(1);
    task.setUrl(url);
    const QSignalSpy failures(&task, &VFetchTask::failure);
    // Before the failure is told: whoever retries at once must meet the new configuration.
    int readsWhenTold = 0;
    connect(&task, &VFetchTask::failure, &task,
            [&readsWhenTold] { readsWhenTold = CurlFake::resolverReads(); });
    task.run();
    QCOMPARE(failures.at(0).at(0).toInt(), 6);
    QCOMPARE(CurlFake::resolverReads(), 1);
    QCOMPARE(readsWhenTold, 1);
}

void TestFetchTaskOptions::headerBlocks_theLastOneCounts()
{
    CurlFake::setAnswer(
        {CURLE_OK, 200, "", "HTTP/1.1 302 Found\r\nX: a\r\n\r\nHTTP/1.1 200 OK\r\nX: b\r\n\r\n"});
    VFetchTask task(1);
    task.setUrl(url);
    task.run();
    task.run(); // what the first run left is cleared
    QCOMPARE(task.responseHeader().allValues(QStringLiteral("X")), QStringList{QStringLiteral("b")});
}

void TestFetchTaskOptions::everyRun_hasItsOwnHandle()
{
    VFetchTask task(1);
    task.setUrl(url);
    for (int i = 0; i < 3; ++i) {
        task.run();
        QCOMPARE(CurlFake::openHandles(), 0);
    }
    QCOMPARE(CurlFake::requestCount(), 3);
}

void TestFetchTaskOptions::settings_canBeChangedDuringATransfer()
{
    CurlFake::hold();
    VFetchTask task(1);
    task.setUrl(url);
    QThread thread;
    task.moveToThread(&thread);
    thread.start();
    QMetaObject::invokeMethod(&task, "run");
    QTRY_COMPARE(CurlFake::requestCount(), 1);

    QElapsedTimer clock;
    clock.start();
    task.setHeader(QStringLiteral("A"), QStringLiteral("b"));
    task.setUrl(QStringLiteral("https://other.example/"));
    QVERIFY(clock.elapsed() < 1000);
    CurlFake::release();
    QMetaObject::invokeMethod(&task, "run", Qt::BlockingQueuedConnection);
    QCOMPARE(CurlFake::requests().at(0).url(), QByteArray("https://host.example/path%20with%20blank"));
    QCOMPARE(CurlFake::requests().at(1).url(), QByteArray("https://other.example/"));
    thread.quit();
    thread.wait();
}

void TestFetchTaskOptions::isRunning_duringATransfer()
{
    CurlFake::hold();
    VFetchTask task(1);
    task.setUrl(url);
    QThread thread;
    task.moveToThread(&thread);
    thread.start();
    QMetaObject::invokeMethod(&task, "run");
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    QVERIFY(task.isRunning());
    CurlFake::release();
    QTRY_VERIFY(!task.isRunning());
    thread.quit();
    thread.wait();
}

void TestFetchTaskOptions::debugStream_hidesCredentials()
{
    const MessageCapture messages;
    VFetchTask task(1);
    task.setUrl(url);
    task.setHeader(QStringLiteral("Accept"), QStringLiteral("application/json"));
    task.setHeader(QStringLiteral("authorization"), QStringLiteral("Basic c2VjcmV0"));
    task.run();
    QCOMPARE(messages.debugTexts(), (QStringList{QStringLiteral("header Accept : application/json"),
                                                 QStringLiteral("header authorization : ***")}));
    QVERIFY(!PlatformCapture::texts().join('\n').contains("c2VjcmV0"));
    QCOMPARE(PlatformCapture::texts(3).constFirst(),
             QByteArray("FetchTask: Making request to https://host.example/path%20with%20blank"));
    QCOMPARE(PlatformCapture::texts(2).at(0), QByteArray("Fetch task created"));
    QVERIFY(PlatformCapture::texts(2).at(1).startsWith("FetchTask: 1 is running in thread 0x"));
}

void TestFetchTaskOptions::refusedPrepare_hasItsLine()
{
    {
        RefusingTask task(9);
        task.run();
    }
    QCOMPARE(PlatformCapture::texts(3),
             QList<QByteArray>{"FetchTask. Prepare has returned false. Task 9 skipped."});
    QCOMPARE(CurlFake::requestCount(), 0);
    const QList<QByteArray> verbose = PlatformCapture::texts(2);
    QCOMPARE(verbose.size(), 3);
    QCOMPARE(verbose.at(0), QByteArray("Fetch task created"));
    QCOMPARE(verbose.at(2), QByteArray("Fetch task deleted"));

    PlatformCapture::clear();
    VFetchTask task(1);
    task.findChild<VFetchTaskPrivate *>()->scheduleOneTimeUpdateIn(0);
    const QByteArray line = PlatformCapture::texts(3).constFirst();
    QVERIFY(line.startsWith("FetchTask: void VFetchTaskPrivate::scheduleOneTimeUpdateIn(int) Thread: "));
    QVERIFY(line.endsWith(' '));
}

QTEST_GUILESS_MAIN(TestFetchTaskOptions)
#include "tst_fetchtaskoptions.moc"
