#include "curlfake.h"
#include "platformcapture.h"
#include "taskthread.h"
#include "vfetchtask.h"
#include "vfetchtask_p.h"

#include <QSignalSpy>
#include <QtTest>

#if __has_include(<QTextCodec>)
#include <QTextCodec>
#endif

namespace
{

/// Makes the local encoding another than UTF-8 while it lives, with a Qt that knows others.
class EightBitLocale
{
#if __has_include(<QTextCodec>)
public:
    EightBitLocale()
        : before(QTextCodec::codecForLocale())
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    }
    ~EightBitLocale()
    {
        QTextCodec::setCodecForLocale(before);
    }
    Q_DISABLE_COPY(EightBitLocale)

private:
    QTextCodec *before;
#else
public:
    ~EightBitLocale() {} // so that an unused one is no warning
#endif
};

const QString url = QStringLiteral("https://host.example/path with space");

QList<int> optionOrder(const CurlFake::Request &request)
{
    QList<int> order;
    for (const CurlFake::Option &noted : request.options) {
        order.append(noted.option);
    }
    return order;
}

/// Everything that a request can carry.
void fill(VFetchTask &task, int method)
{
    task.setUrl(url);
    task.setRequestMethod(method);
    task.setCustomMethod("PATCH");
    task.setHeader(QStringLiteral("A"), QStringLiteral("1"));
    task.setHeader(QStringLiteral("B"), QStringLiteral("2"));
    task.setPostParam(QStringLiteral("a"), 1);
    task.setFormPart(QStringLiteral("part"), QStringLiteral("text"), QStringLiteral("value"));
    task.setFormPart(QStringLiteral("picture"), QStringLiteral("file"), QStringLiteral("/p"));
}

} // namespace

/// What a run sets on libcurl, and that it sends nothing when one setting fails.
class TestFetchTaskOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void run_setsItsOptionsInOrder();
    void method_setsItsOption_data();
    void method_setsItsOption();
    void customMethod_isTheWordOnTheWire();
    void emptyPost_setsAnEmptyBody();
    void noParameters_setNoBodyOptions_data();
    void noParameters_setNoBodyOptions();
    void parameters_haveTheirLengthInBytes();
    void rawBody_takesTheParametersPlace();
    void headers_areAscendingAndEightBit();
    void formParts_areAddedByKind();
    void formParts_areInTheLocalEncoding();
    void noKnownFormPart_setsNoForm();
    void timeout_isSetTwice();

    void refusedOption_isNotSent_data();
    void refusedOption_isNotSent();
    void refusedFormPart_isNotSent_data();
    void refusedFormPart_isNotSent();
    void noMemoryForAHeader_isNotSent_data();
    void noMemoryForAHeader_isNotSent();
    void requestAfterARefusedOne_isSent();

    void settings_areSetUnderTheirLock();
    void settingsUnderChange_areWaitedFor();
    void settingsChangedDuringATransfer_holdFromTheNextRun();
    void everyRun_freesWhatItMade();
};

void TestFetchTaskOptions::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestFetchTaskOptions::run_setsItsOptionsInOrder()
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
    QVERIFY(request.has(CURLOPT_ACCEPT_ENCODING));
    QCOMPARE(request.text(CURLOPT_ACCEPT_ENCODING), QByteArray(""));
    QCOMPARE(request.url(), QByteArray("https://host.example/path%20with%20space"));
    QCOMPARE(request.body(), QByteArray("a=1"));
    QCOMPARE(request.headers, QList<QByteArray>{"Accept: text/plain"});
}

void TestFetchTaskOptions::method_setsItsOption_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("option");
    QTest::addColumn<qlonglong>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("word");
    QTest::newRow("Get") << 0 << int(CURLOPT_HTTPGET) << 1LL << QByteArray() << QByteArray("GET");
    QTest::newRow("Post") << 1 << int(CURLOPT_HTTPPOST) << 1LL << QByteArray() << QByteArray("POST");
    QTest::newRow("Put") << 2 << int(CURLOPT_CUSTOMREQUEST) << 0LL << QByteArray("PUT") << QByteArray("PUT");
    QTest::newRow("PostForm") << 3 << int(CURLOPT_HTTPPOST) << 0LL << QByteArray() << QByteArray("POST");
    QTest::newRow("Delete") << 4 << int(CURLOPT_CUSTOMREQUEST) << 0LL << QByteArray("DELETE")
                            << QByteArray("DELETE");
    QTest::newRow("Custom") << 5 << int(CURLOPT_CUSTOMREQUEST) << 0LL << QByteArray("PATCH")
                            << QByteArray("");
}

void TestFetchTaskOptions::method_setsItsOption()
{
    QFETCH(int, method);
    QFETCH(int, option);
    QFETCH(qlonglong, number);
    QFETCH(QByteArray, word);
    const auto set = static_cast<CURLoption>(option);
    VFetchTask task(1);
    fill(task, method);

    task.run();

    const CurlFake::Request request = CurlFake::requests().constFirst();
    for (const CURLoption other : {CURLOPT_HTTPGET, CURLOPT_HTTPPOST, CURLOPT_CUSTOMREQUEST}) {
        QCOMPARE(request.has(other), other == set);
    }
    QTEST(request.text(set), "text");
    if (number != 0) {
        const CurlFake::Option noted = request.options.at(2);
        QCOMPARE(noted.number + reinterpret_cast<qintptr>(noted.object), number);
    }
    QCOMPARE(request.body(), QByteArray("a=1")); // every method carries the body
    QCOMPARE(PlatformCapture::count("FetchTask: " + word +
                                    " Status=200 Url=https://host.example/path%20with%20space"),
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

void TestFetchTaskOptions::noParameters_setNoBodyOptions_data()
{
    QTest::addColumn<int>("method");
    QTest::newRow("Get") << 0;
    QTest::newRow("Put") << 2;
    QTest::newRow("PostForm") << 3;
    QTest::newRow("Delete") << 4;
    QTest::newRow("Custom") << 5;
}

void TestFetchTaskOptions::noParameters_setNoBodyOptions()
{
    QFETCH(int, method);
    VFetchTask task(1);
    task.setUrl(url);
    task.setCustomMethod("X");
    task.setRequestMethod(method);

    task.run();

    const CurlFake::Request request = CurlFake::requests().constFirst();
    QVERIFY(!request.has(CURLOPT_POSTFIELDSIZE));
    QVERIFY(!request.has(CURLOPT_COPYPOSTFIELDS));
}

void TestFetchTaskOptions::parameters_haveTheirLengthInBytes()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::Put);
    task.setPostParams({{QStringLiteral("a"), QString::fromUtf8("\xe2\x82\xac")}});

    task.run();

    QCOMPARE(CurlFake::requests().constFirst().number(CURLOPT_POSTFIELDSIZE), 5L);
    QCOMPARE(CurlFake::requests().constFirst().body(), QByteArray("a=\xe2\x82\xac"));
}

void TestFetchTaskOptions::rawBody_takesTheParametersPlace()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::Put);
    task.setPostParam(QStringLiteral("a"), 1);
    task.setBody(QByteArray("be\0hind", 7));

    task.run();

    QCOMPARE(CurlFake::requests().constFirst().number(CURLOPT_POSTFIELDSIZE), 2L);
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

void TestFetchTaskOptions::formParts_areAddedByKind()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::PostForm);
    task.setFormPart(QStringLiteral("text"), QStringLiteral("text"), 42);
    task.setFormPart(QStringLiteral("other"), QStringLiteral("picture"), QStringLiteral("skipped"));
    task.setFormPart(QStringLiteral("file"), QStringLiteral("file"), QStringLiteral("/a/path"));

    task.run();

    const QList<CurlFake::FormPart> form = CurlFake::requests().constFirst().form;
    QCOMPARE(form.size(), 2);
    QCOMPARE(form.at(0).name, QByteArray("file"));
    QCOMPARE(form.at(0).source, CURLFORM_FILE);
    QCOMPARE(form.at(0).value, QByteArray("/a/path"));
    QCOMPARE(form.at(1).name, QByteArray("text"));
    QCOMPARE(form.at(1).source, CURLFORM_COPYCONTENTS);
    QCOMPARE(form.at(1).value, QByteArray("42"));
}

void TestFetchTaskOptions::formParts_areInTheLocalEncoding()
{
    const EightBitLocale locale;
    const QString letter = QString::fromUtf8("\xc3\xbc");
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::PostForm);
    task.setFormPart(letter, QStringLiteral("text"), letter + letter);

    task.run();

    const CurlFake::FormPart part = CurlFake::requests().constFirst().form.constFirst();
    QCOMPARE(part.name, letter.toLocal8Bit());
    QCOMPARE(part.value, (letter + letter).toLocal8Bit());
}

void TestFetchTaskOptions::noKnownFormPart_setsNoForm()
{
    VFetchTask task(1);
    task.setUrl(url);
    task.setRequestMethod(VFetchTask::PostForm);
    task.setFormPart(QStringLiteral("other"), QStringLiteral("picture"), QStringLiteral("skipped"));

    task.run();

    QCOMPARE(CurlFake::requests().constFirst().options.at(2).option, CURLOPT_HTTPPOST);
    QVERIFY(CurlFake::requests().constFirst().options.at(2).object == nullptr);
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

void TestFetchTaskOptions::refusedOption_isNotSent_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("option");
    const auto row = [](const char *name, int method, CURLoption option) {
        QTest::newRow(name) << method << int(option);
    };
    row("name cache", VFetchTask::Get, CURLOPT_DNS_CACHE_TIMEOUT);
    row("no signals", VFetchTask::Get, CURLOPT_NOSIGNAL);
    row("GET", VFetchTask::Get, CURLOPT_HTTPGET);
    row("POST", VFetchTask::Post, CURLOPT_HTTPPOST);
    row("PUT", VFetchTask::Put, CURLOPT_CUSTOMREQUEST);
    row("form", VFetchTask::PostForm, CURLOPT_HTTPPOST);
    row("DELETE", VFetchTask::Delete, CURLOPT_CUSTOMREQUEST);
    row("custom word", VFetchTask::Custom, CURLOPT_CUSTOMREQUEST);
    row("body's length", VFetchTask::Put, CURLOPT_POSTFIELDSIZE);
    row("body", VFetchTask::Put, CURLOPT_COPYPOSTFIELDS);
    row("write function", VFetchTask::Get, CURLOPT_WRITEFUNCTION);
    row("write target", VFetchTask::Get, CURLOPT_WRITEDATA);
    row("header function", VFetchTask::Get, CURLOPT_HEADERFUNCTION);
    row("header target", VFetchTask::Get, CURLOPT_HEADERDATA);
    row("headers", VFetchTask::Get, CURLOPT_HTTPHEADER);
    row("URL", VFetchTask::Get, CURLOPT_URL);
    row("time-out", VFetchTask::Get, CURLOPT_TIMEOUT);
    row("connection's time-out", VFetchTask::Get, CURLOPT_CONNECTTIMEOUT);
    row("redirects", VFetchTask::Get, CURLOPT_FOLLOWLOCATION);
    row("encodings", VFetchTask::Get, CURLOPT_ACCEPT_ENCODING);
}

void TestFetchTaskOptions::refusedOption_isNotSent()
{
    QFETCH(int, method);
    QFETCH(int, option);
    CurlFake::failOption(static_cast<CURLoption>(option), CURLE_UNKNOWN_OPTION);
    VFetchTask task(1);
    fill(task, method);
    const QSignalSpy failures(&task, &VFetchTask::failure);
    const QSignalSpy successes(&task, &VFetchTask::success);

    task.run();

    QCOMPARE(CurlFake::requestCount(), 0);
    QCOMPARE(successes.count(), 0);
    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 48);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"FetchTask: Option " + QByteArray::number(option) +
                               " was refused with 48. The request is not sent."});
    QCOMPARE(PlatformCapture::texts(LogPriority::Error).size(), 1);
    QVERIFY(PlatformCapture::texts(LogPriority::Error)
                .constFirst()
                .startsWith("FetchTask: [Error] 48 https://host.example/path%20with%20space "));
    QVERIFY(!PlatformCapture::texts().join('\n').contains("Making request"));
    QCOMPARE(CurlFake::openHandles() + CurlFake::openHeaderLists() + CurlFake::openForms(), 0);
}

void TestFetchTaskOptions::refusedFormPart_isNotSent_data()
{
    QTest::addColumn<QByteArray>("part");
    QTest::addColumn<int>("refusal");
    QTest::addColumn<int>("code");
    const auto row = [](const char *name, const char *part, CURLFORMcode refusal, CURLcode code) {
        QTest::newRow(name) << QByteArray(part) << int(refusal) << int(code);
    };
    row("text, no memory", "part", CURL_FORMADD_MEMORY, CURLE_OUT_OF_MEMORY);
    row("file, no memory", "picture", CURL_FORMADD_MEMORY, CURLE_OUT_OF_MEMORY);
    row("option twice", "part", CURL_FORMADD_OPTION_TWICE, CURLE_BAD_FUNCTION_ARGUMENT);
    row("null", "part", CURL_FORMADD_NULL, CURLE_BAD_FUNCTION_ARGUMENT);
    row("unknown option", "part", CURL_FORMADD_UNKNOWN_OPTION, CURLE_BAD_FUNCTION_ARGUMENT);
    row("incomplete", "part", CURL_FORMADD_INCOMPLETE, CURLE_BAD_FUNCTION_ARGUMENT);
    row("illegal array", "part", CURL_FORMADD_ILLEGAL_ARRAY, CURLE_BAD_FUNCTION_ARGUMENT);
    row("forms left out of the library", "part", CURL_FORMADD_DISABLED, CURLE_NOT_BUILT_IN);
}

void TestFetchTaskOptions::refusedFormPart_isNotSent()
{
    QFETCH(QByteArray, part);
    QFETCH(int, refusal);
    CurlFake::failFormPart(part, static_cast<CURLFORMcode>(refusal));
    VFetchTask task(1);
    fill(task, VFetchTask::PostForm);
    const QSignalSpy failures(&task, &VFetchTask::failure);

    task.run();

    QCOMPARE(CurlFake::requestCount(), 0);
    QCOMPARE(failures.count(), 1);
    QTEST(failures.at(0).at(0).toInt(), "code");
    QCOMPARE(CurlFake::openHandles() + CurlFake::openHeaderLists() + CurlFake::openForms(), 0);
}

void TestFetchTaskOptions::noMemoryForAHeader_isNotSent_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("first") << QByteArray("A: 1");
    QTest::newRow("last") << QByteArray("B: 2");
}

void TestFetchTaskOptions::noMemoryForAHeader_isNotSent()
{
    QFETCH(QByteArray, line);
    CurlFake::failHeader(line);
    VFetchTask task(1);
    fill(task, VFetchTask::Put);
    const QSignalSpy failures(&task, &VFetchTask::failure);

    task.run();

    QCOMPARE(CurlFake::requestCount(), 0);
    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 27);
    QCOMPARE(CurlFake::openHandles() + CurlFake::openHeaderLists(), 0);
}

void TestFetchTaskOptions::requestAfterARefusedOne_isSent()
{
    VFetchTask task(1);
    fill(task, VFetchTask::Put);
    CurlFake::failOption(CURLOPT_URL, CURLE_OUT_OF_MEMORY);
    task.run();
    CurlFake::reset();

    task.run();

    QCOMPARE(CurlFake::requestCount(), 1);
    QCOMPARE(task.status(), 200);
}

void TestFetchTaskOptions::settings_areSetUnderTheirLock()
{
    VFetchTask task(1);
    fill(task, VFetchTask::PostForm);
    QMutex &mutex = task.findChild<VFetchTaskPrivate *>()->dataMutex;
    const auto isFree = [&mutex] { return mutex.tryLock() && (mutex.unlock(), true); };
    QList<int> unguarded;
    CurlFake::watchOptions([&isFree, &unguarded](CURLoption option) {
        if (isFree()) {
            unguarded.append(option);
        }
    });
    CurlFake::hold();
    TaskThread thread(task);

    QMetaObject::invokeMethod(&task, "run");
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    const bool freeDuringTheTransfer = isFree();
    thread.finish();

    QCOMPARE(unguarded, QList<int>());
    QVERIFY(freeDuringTheTransfer);
}

void TestFetchTaskOptions::settingsUnderChange_areWaitedFor()
{
    VFetchTask task(1);
    fill(task, VFetchTask::Put);
    auto *const d = task.findChild<VFetchTaskPrivate *>();
    TaskThread thread(task);

    d->dataMutex.lock();
    QMetaObject::invokeMethod(&task, "run");
    QTRY_COMPARE(CurlFake::openHandles(), 1);
    QTest::qWait(20); // grace time: a run that does not wait reads what stands there
    d->url = QUrl(QStringLiteral("https://other.example/"));
    d->method = VFetchTask::Custom;
    d->customMethod = "MOVE";
    d->headers = {{QStringLiteral("C"), QStringLiteral("3")}};
    d->postParams = {{QStringLiteral("b"), 2}};
    d->timeout = 7;
    d->dataMutex.unlock();
    thread.finish();

    const CurlFake::Request request = CurlFake::requests().constFirst();
    QCOMPARE(request.url(), QByteArray("https://other.example/"));
    QCOMPARE(request.method(), QByteArray("MOVE"));
    QCOMPARE(request.headers, QList<QByteArray>{"C: 3"});
    QCOMPARE(request.body(), QByteArray("b=2"));
    QCOMPARE(request.number(CURLOPT_TIMEOUT), 7L);
    QCOMPARE(PlatformCapture::count("FetchTask:  Status=200 Url=https://other.example/"), 1);
}

void TestFetchTaskOptions::settingsChangedDuringATransfer_holdFromTheNextRun()
{
    CurlFake::hold();
    VFetchTask task(1);
    task.setUrl(url);
    TaskThread thread(task);
    QMetaObject::invokeMethod(&task, "run");
    QTRY_COMPARE(CurlFake::requestCount(), 1);

    task.setUrl(QStringLiteral("https://other.example/"));
    task.setHeader(QStringLiteral("A"), QStringLiteral("b"));
    CurlFake::release();
    QMetaObject::invokeMethod(&task, "run", Qt::BlockingQueuedConnection);

    QCOMPARE(CurlFake::requests().at(0).url(), QByteArray("https://host.example/path%20with%20space"));
    QCOMPARE(CurlFake::requests().at(0).headers, QList<QByteArray>());
    QCOMPARE(CurlFake::requests().at(1).url(), QByteArray("https://other.example/"));
    QCOMPARE(CurlFake::requests().at(1).headers, QList<QByteArray>{"A: b"});
}

void TestFetchTaskOptions::everyRun_freesWhatItMade()
{
    VFetchTask task(1);
    fill(task, VFetchTask::PostForm);

    task.run();
    task.run();

    QCOMPARE(CurlFake::requestCount(), 2);
    QCOMPARE(CurlFake::requests().at(1).form.size(), 2);
    QCOMPARE(CurlFake::requests().at(1).headers.size(), 2);
    QCOMPARE(CurlFake::openHandles(), 0);
    QCOMPARE(CurlFake::openHeaderLists(), 0);
    QCOMPARE(CurlFake::openForms(), 0);
}

QTEST_GUILESS_MAIN(TestFetchTaskOptions)
#include "tst_fetchtaskoptions.moc"
