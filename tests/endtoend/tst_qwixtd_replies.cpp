#include "certificates.h"
#include "deviceundertest.h"

/// What the daemon reads from answers in every shape.
class TestReplies : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void registrationReply_givesTheId_data();
    void registrationReply_givesTheId();
    void numberAsId_isSentAsItsDigits();
    void listWithoutApplications_isAListAllTheSame_data();
    void listWithoutApplications_isAListAllTheSame();
    void listWithOddElements_givesTheOthers();
    void anySuccessStatus_isASuccess_data();
    void anySuccessStatus_isASuccess();
    void updateAndDeletionReplies_areNotRead();
    void replyOfAnyLength_isTakenIntoMemoryWhole();
    void redirect_isFollowed();
    void packedReply_isUnpacked_data();
    void packedReply_isUnpacked();
};

namespace
{
// Answers requests of one method with this body, and leaves the others to the server.
DeveloperServer::Script answering(const QByteArray &method, const QByteArray &body, int status = 200)
{
    return [=](const HttpRequest &request) -> std::optional<HttpAnswer> {
        if (request.method != method) {
            return std::nullopt;
        }
        HttpAnswer answer;
        answer.status = status;
        answer.body = body;
        return answer;
    };
}

DeveloperServer::Script answeringExactly(const QByteArray &status, const QByteArray &header,
                                         const QByteArray &body)
{
    const QByteArray text = "HTTP/1.1 " + status + "\r\n" + header +
                            "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    return [text](const HttpRequest &) { return HttpAnswer::exactly(text); };
}

/// The most memory that the program had at any time, in bytes.
qint64 mostMemory(DeviceUnderTest &device)
{
    return device.program().statusField("VmHWM").split(' ').first().toLongLong() * 1024;
}

bool startServer(HttpServer &server)
{
    return server.start(Certificates::shared().serverCertificate(), Certificates::shared().serverKey());
}
} // namespace

void TestReplies::registrationReply_givesTheId_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("appId");

    QTest::newRow("text") << QByteArray(R"({"app_id":"a1","status":"ok"})") << "a1"_text;
    QTest::newRow("number") << QByteArray(R"({"app_id":7,"status":"ok"})") << "7"_text;
    QTest::newRow("largest number") << QByteArray(R"({"app_id":9223372036854775807})")
                                    << "9223372036854775807"_text;
    QTest::newRow("escaped text") << QByteArray(R"({"app_id":"\u00fc\n1"})") << "ü\n1"_text;
    QTest::newRow("empty text") << QByteArray(R"({"app_id":""})") << ""_text;
    QTest::newRow("null") << QByteArray(R"({"app_id":null})") << ""_text;
    QTest::newRow("no id") << QByteArray(R"({"status":"ok"})") << ""_text;
    QTest::newRow("array for id") << QByteArray(R"({"app_id":["a1"]})") << ""_text;
    QTest::newRow("empty object") << QByteArray("{}") << ""_text;
    QTest::newRow("array") << QByteArray(R"([{"app_id":"a1"}])") << ""_text;
    QTest::newRow("no JSON") << QByteArray("<html>ok</html>") << ""_text;
    QTest::newRow("cut JSON") << QByteArray(R"({"app_id":"a1")") << ""_text;
    QTest::newRow("nothing") << QByteArray() << ""_text;
    QTest::newRow("deep nesting") << QByteArray(20000, '[') << ""_text;
}

void TestReplies::registrationReply_givesTheId()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, appId);
    DeviceUnderTest device;
    device.server().setScript(answering("POST", reply));
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(),
                     QStringList({started, QStringLiteral("applicationRegistered(u1, %1, t)").arg(appId)}));
    // The record stands under that id, the empty one too.
    QVERIFY(device.updateApplication(appId, "u1"_text, "Watch"_text, "t"_text));
    EVENTUALLY_EQUAL(device.requested().value(2),
                     QStringLiteral("PUT app_id=%1&name=Watch&type=t").arg(appId));
}

void TestReplies::numberAsId_isSentAsItsDigits()
{
    DeviceUnderTest device;
    device.server().setScript(answering(
        "GET", R"({"apps":[{"device_id":"d9","app_id":12,"identifier":"u1","name":5,"type":true}]})"));
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication("12"_text, "u1"_text, "5"_text, "true"_text));
    QVERIFY(device.updateApplication("12"_text, "u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.requested(), QStringList({"GET"_text, "PUT app_id=12&name=Clock&type=t"_text}));
    QVERIFY(device.hasLine("I/QWIXTD: QWixtApplicationManager: application is not changed"));
}

void TestReplies::listWithoutApplications_isAListAllTheSame_data()
{
    QTest::addColumn<QByteArray>("reply");

    QTest::newRow("no apps") << QByteArray("{}");
    QTest::newRow("apps null") << QByteArray(R"({"apps":null})");
    QTest::newRow("apps an object") << QByteArray(R"({"apps":{"a1":{"device_id":"d9","app_id":"a1"}}})");
    QTest::newRow("apps a text") << QByteArray(R"({"apps":"a1"})");
    QTest::newRow("array") << QByteArray(R"([{"device_id":"d9","app_id":"a1"}])");
    QTest::newRow("no JSON") << QByteArray("<html>apps</html>");
    QTest::newRow("cut JSON") << QByteArray(R"({"apps":[{"device_id":"d9","app_id":"a1"})");
    QTest::newRow("nothing") << QByteArray();
}

void TestReplies::listWithoutApplications_isAListAllTheSame()
{
    QFETCH(QByteArray, reply);
    DeviceUnderTest device;
    device.server().setScript(answering("GET", reply));

    QVERIFY(device.startAll());
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.requested().count("GET"_text), 1);
}

void TestReplies::listWithOddElements_givesTheOthers()
{
    DeviceUnderTest device;
    device.server().setScript(answering("GET", R"({"apps":[7,"x",null,["d9"],{},{"app_id":"a0"},
        {"device_id":"d9","app_id":"a1","identifier":"gone","name":"N","type":"t"},
        {"device_id":"d9","app_id":"a2","name":"N"},
        {"device_id":"d9","app_id":"a3","identifier":"u1","name":"N","type":"t"}],"more":1})"));

    QVERIFY(device.startAll());

    // The one without a widget's id belongs to no installed widget, and has no type to send.
    EVENTUALLY_EQUAL(device.requested().mid(1),
                     QStringList({"DELETE app_id=a1&type=t"_text, "DELETE app_id=a2"_text}));
}

void TestReplies::anySuccessStatus_isASuccess_data()
{
    QTest::addColumn<int>("status");

    QTest::newRow("201") << 201;
    QTest::newRow("202") << 202;
    QTest::newRow("299") << 299;
}

void TestReplies::anySuccessStatus_isASuccess()
{
    QFETCH(int, status);
    DeviceUnderTest device;
    device.server().setScript(answering("POST", R"({"app_id":"a1","status":"made"})", status));
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, a1, t)"_text}));
    QVERIFY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application registered with status made"));
}

void TestReplies::updateAndDeletionReplies_areNotRead()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    device.server().failNext(2, ServerFault::withBodyThatIsNoJson());

    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u1, a1, t)"_text}));
    QVERIFY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application updated"));
    QVERIFY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application deleted"));
}

void TestReplies::replyOfAnyLength_isTakenIntoMemoryWhole()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    const QByteArray padding(20000000, 'x');
    device.server().setScript(answering("POST", R"({"padding":")" + padding + R"(","app_id":"a1"})"));
    const qint64 before = mostMemory(device);
    QVERIFY(before > 0);

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, a1, t)"_text}));
    QVERIFY(mostMemory(device) >= before + padding.size());
}

void TestReplies::redirect_isFollowed()
{
    DeviceUnderTest device;
    HttpServer target;
    HttpServer first;
    QVERIFY(startServer(target) && startServer(first));
    target.setScript(answeringExactly("200 OK", "X-Any: thing", R"({"app_id":"a1","status":"ok"})"));
    const QByteArray location = "https://" + target.host().toLatin1() + "/elsewhere?list=1";
    first.setScript(answeringExactly("307 Temporary Redirect", "Location: " + location, "{}"));
    device.useServer(first.host());

    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, a1, t)"_text}));
    QCOMPARE(first.requestCount(), 2);
    QCOMPARE(target.requestCount(), 2);
    const HttpRequest list = target.requests().at(0);
    const HttpRequest registration = target.requests().at(1);
    QCOMPARE(list.firstLine(), QByteArray("GET /elsewhere?list=1 HTTP/1.1"));
    QCOMPARE(registration.firstLine(), QByteArray("POST /elsewhere?list=1 HTTP/1.1"));
    QVERIFY(registration.bytes.endsWith("\r\n\r\nid=d9&identifier=u1&name=Clock&type=t"));
    // The other server is not the one that the key is for.
    QVERIFY(!list.bytes.contains("Authorization"));
    QVERIFY(!registration.bytes.contains("Authorization"));
}

void TestReplies::packedReply_isUnpacked_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("body");

    // {"apps":[{"device_id":"d9","app_id":"a1","identifier":"gone","name":"N","type":"packed"}]}
    QTest::newRow("gzip") << QByteArray("gzip")
                          << QByteArray::fromHex(
                                 "1f8b0800000000000203ab564a2c282856b28aae564a492dcb4c4e8dcf4c51b2524ab154d20"
                                 "1c940788986405e664a6a5e49665a666a1150243d3f2f15289697989b0ae4f9019925950520"
                                 "66416272766a8a526d6c2d00e5382c4f5a000000");
    QTest::newRow("deflate")
        << QByteArray("deflate")
        << qCompress(
               QByteArray(
                   R"({"apps":[{"device_id":"d9","app_id":"a1","identifier":"gone","type":"packed"}]})"))
               .mid(4);
}

void TestReplies::packedReply_isUnpacked()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, body);
    DeviceUnderTest device;
    HttpServer server;
    QVERIFY(startServer(server));
    server.setScript(answeringExactly("200 OK", "Content-Encoding: " + encoding, body));
    device.useServer(server.host());

    QVERIFY(device.startAll());

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(gone, a1, packed)"_text}));
}

QTEST_GUILESS_MAIN(TestReplies)
#include "tst_qwixtd_replies.moc"
