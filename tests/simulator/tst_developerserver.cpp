#include "certificates.h"
#include "developerserver.h"
#include "httpsclient.h"
#include "servewhile.h"

#include <QtTest>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <arpa/inet.h>
#include <future>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace
{
const QByteArray acceptJson = "Accept: application/json";
// ":k3y" in base64.
const QByteArray authorization = "Authorization: Basic OmszeQ==";
const QList<QByteArray> usual{acceptJson, authorization};
constexpr int promptMs = 1000;

QJsonObject object(const QByteArray &body)
{
    return QJsonDocument::fromJson(body).object();
}
} // namespace

class TestDeveloperServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void post_createsARecordAndAnswersItsId();
    void put_changesNameAndType();
    void delete_removesTheRecord();
    void get_listsApplicationsOfAllDevices();
    void unknownApplication_is404_data();
    void unknownApplication_is404();
    void requestThatIsNotAsItShouldBe_isRefused_data();
    void requestThatIsNotAsItShouldBe_isRefused();
    void withoutAKey_everythingIs401();
    void fieldValues_areNotDecoded_data();
    void fieldValues_areNotDecoded();
    void bodyOf100Kilobytes_isKeptWhole();
    void headers_areKeptAsReceived();
    void oneConnectionForTwoRequests_isSeen();
    void connectionEach_isSeen();
    void statusFault_doesNotDoWhatWasAsked();
    void faults_lineUpAndEnd();
    void lastingFault_staysUntilCleared();
    void closedConnection_hasNoAnswer();
    void bodyThatIsNoJson_comesAfterTheDeed();
    void delay_holdsTheAnswerBack();
    void clearingFaults_releasesAHeldAnswer();
    void script_answersInPlaceOfTheServer();
    void concurrentRequests_areCounted();
    void requestsOneAfterTheOther_doNotOverlap();
    void answeredSignal_carriesTheAnswer();
    void stopWithAHeldAnswer_isPrompt();
    void stopWithSilentConnections_isPrompt();
    void recordsBehindTheDevicesBack_areSeen();
    void takenPort_isReported();
    void unusableFile_isReported_data();
    void unusableFile_isReported();
    void restart_keepsRecords();

private:
    HttpsClient::Result send(const QByteArray &method, const QByteArray &body = {},
                             const QList<QByteArray> &headers = usual);
    std::vector<int> statusesOfGets(int count);
    QByteArray url(const QByteArray &target = "/api/v1/qwixt/apps") const;
    bool startServer();

    std::unique_ptr<DeveloperServer> server;
    std::unique_ptr<HttpsClient> client;
};

void TestDeveloperServer::initTestCase()
{
    Certificates::shared();
}

void TestDeveloperServer::init()
{
    server = std::make_unique<DeveloperServer>();
    server->setApiKey(QStringLiteral("k3y"));
    QVERIFY2(startServer(), qPrintable(server->errorText()));
    client = std::make_unique<HttpsClient>(Certificates::shared().authority().toUtf8());
}

void TestDeveloperServer::cleanup()
{
    client.reset();
    server.reset();
}

bool TestDeveloperServer::startServer()
{
    return server->start(Certificates::shared().serverCertificate(), Certificates::shared().serverKey());
}

QByteArray TestDeveloperServer::url(const QByteArray &target) const
{
    return "https://127.0.0.1:" + QByteArray::number(server->port()) + target;
}

HttpsClient::Result TestDeveloperServer::send(const QByteArray &method, const QByteArray &body,
                                              const QList<QByteArray> &headers)
{
    return client->send(method, url(), headers, body);
}

std::vector<int> TestDeveloperServer::statusesOfGets(int count)
{
    std::vector<int> statuses;
    for (int number = 0; number < count; ++number) {
        statuses.push_back(send("GET").status);
    }
    return statuses;
}

void TestDeveloperServer::post_createsARecordAndAnswersItsId()
{
    const HttpsClient::Result result = send("POST", "id=d9&identifier=u1&name=Clock&type=t");

    QCOMPARE(result.status, 200);
    const QJsonObject reply = object(result.body);
    QVERIFY(!reply[QStringLiteral("app_id")].toString().isEmpty());
    QVERIFY(!reply[QStringLiteral("status")].toString().isEmpty());
    const QList<ServerApplication> held = server->applications();
    QCOMPARE(held.size(), 1);
    QCOMPARE(held[0].appId, reply[QStringLiteral("app_id")].toString());
    QCOMPARE(held[0].deviceId, QStringLiteral("d9"));
    QCOMPARE(held[0].identifier, QStringLiteral("u1"));
    QCOMPARE(held[0].name, QStringLiteral("Clock"));
    QCOMPARE(held[0].type, QStringLiteral("t"));
}

void TestDeveloperServer::put_changesNameAndType()
{
    const QString id = server->addApplication(
        {QStringLiteral("d9"), {}, QStringLiteral("u1"), QStringLiteral("Old"), QStringLiteral("t")});

    const HttpsClient::Result result = send("PUT", "app_id=" + id.toUtf8() + "&name=New&type=t2");

    QCOMPARE(result.status, 200);
    QCOMPARE(server->applications().at(0).name, QStringLiteral("New"));
    QCOMPARE(server->applications().at(0).type, QStringLiteral("t2"));
    QCOMPARE(server->applications().at(0).identifier, QStringLiteral("u1"));
}

void TestDeveloperServer::delete_removesTheRecord()
{
    const QString first = server->addApplication({});
    const QString second = server->addApplication({});

    const HttpsClient::Result result = send("DELETE", "app_id=" + first.toUtf8() + "&type=t");

    QCOMPARE(result.status, 200);
    QCOMPARE(server->applications().size(), 1);
    QCOMPARE(server->applications().at(0).appId, second);
}

void TestDeveloperServer::get_listsApplicationsOfAllDevices()
{
    server->addApplication({QStringLiteral("d9"), QStringLiteral("a1"), QStringLiteral("u1"),
                            QStringLiteral("Clock"), QStringLiteral("t")});
    server->addApplication({QStringLiteral("other"), QStringLiteral("a2"), QStringLiteral("u2"),
                            QStringLiteral("Rain"), QStringLiteral("t")});

    const HttpsClient::Result result = send("GET");

    QCOMPARE(result.status, 200);
    const QJsonArray apps = object(result.body)[QStringLiteral("apps")].toArray();
    QCOMPARE(apps.size(), 2);
    const QJsonObject first{{QStringLiteral("device_id"), QStringLiteral("d9")},
                            {QStringLiteral("app_id"), QStringLiteral("a1")},
                            {QStringLiteral("identifier"), QStringLiteral("u1")},
                            {QStringLiteral("name"), QStringLiteral("Clock")},
                            {QStringLiteral("type"), QStringLiteral("t")}};
    QCOMPARE(apps.at(0).toObject(), first);
    QCOMPARE(apps.at(1).toObject()[QStringLiteral("device_id")].toString(), QStringLiteral("other"));
}

void TestDeveloperServer::unknownApplication_is404_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("update") << QByteArray("PUT") << QByteArray("app_id=a9&name=n&type=t");
    QTest::newRow("delete") << QByteArray("DELETE") << QByteArray("app_id=a9&type=t");
}

void TestDeveloperServer::unknownApplication_is404()
{
    QFETCH(const QByteArray, method);
    QFETCH(const QByteArray, body);

    const HttpsClient::Result result = send(method, body);

    QCOMPARE(result.status, 404);
}

void TestDeveloperServer::requestThatIsNotAsItShouldBe_isRefused_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QList<QByteArray>>("headers");
    QTest::addColumn<int>("status");

    const QByteArray apps = "/api/v1/qwixt/apps";
    const QByteArray whole = "id=d&identifier=u&name=n&type=t";
    QTest::newRow("other path") << QByteArray("GET") << QByteArray("/api/v1/qwixt") << QByteArray() << usual
                                << 404;
    QTest::newRow("path below") << QByteArray("GET") << apps + "/a1" << QByteArray() << usual << 404;
    QTest::newRow("query") << QByteArray("GET") << apps + "?device=d" << QByteArray() << usual << 404;
    QTest::newRow("encoded path") << QByteArray("GET") << QByteArray("/api/v1/qwixt/app%73") << QByteArray()
                                  << usual << 404;
    QTest::newRow("other method") << QByteArray("PATCH") << apps << whole << usual << 405;
    QTest::newRow("no key") << QByteArray("GET") << apps << QByteArray() << QList<QByteArray>{acceptJson}
                            << 401;
    QTest::newRow("wrong key") << QByteArray("GET") << apps << QByteArray()
                               << QList<QByteArray>{acceptJson, "Authorization: Basic OndyMG5n"} << 401;
    QTest::newRow("with a user name")
        << QByteArray("GET") << apps << QByteArray()
        << QList<QByteArray>{acceptJson, "Authorization: Basic " + QByteArray("u:k3y").toBase64()} << 401;
    QTest::newRow("empty key") << QByteArray("GET") << apps << QByteArray()
                               << QList<QByteArray>{acceptJson, "Authorization: Basic Og=="} << 401;
    QTest::newRow("accepts anything") << QByteArray("GET") << apps << QByteArray()
                                      << QList<QByteArray>{"Accept: */*", authorization} << 406;
    QTest::newRow("accepts nothing") << QByteArray("GET") << apps << QByteArray()
                                     << QList<QByteArray>{"Accept:", authorization} << 406;
    QTest::newRow("post without id") << QByteArray("POST") << apps << QByteArray("identifier=u&name=n&type=t")
                                     << usual << 400;
    QTest::newRow("post without identifier")
        << QByteArray("POST") << apps << QByteArray("id=d&name=n&type=t") << usual << 400;
    QTest::newRow("post without name")
        << QByteArray("POST") << apps << QByteArray("id=d&identifier=u&type=t") << usual << 400;
    QTest::newRow("post without type")
        << QByteArray("POST") << apps << QByteArray("id=d&identifier=u&name=n") << usual << 400;
    QTest::newRow("post without body") << QByteArray("POST") << apps << QByteArray("") << usual << 400;
    QTest::newRow("put without app_id")
        << QByteArray("PUT") << apps << QByteArray("name=n&type=t") << usual << 400;
    QTest::newRow("delete without type")
        << QByteArray("DELETE") << apps << QByteArray("app_id=a") << usual << 400;
}

void TestDeveloperServer::requestThatIsNotAsItShouldBe_isRefused()
{
    QFETCH(const QByteArray, method);
    QFETCH(const QByteArray, target);
    QFETCH(const QByteArray, body);
    QFETCH(const QList<QByteArray>, headers);
    QFETCH(const int, status);

    const HttpsClient::Result result = client->send(method, url(target), headers, body);

    QCOMPARE(result.status, status);
    QVERIFY(object(result.body).contains(QStringLiteral("error")));
    QVERIFY(server->applications().isEmpty());
    // Refused requests are on record like any other.
    QCOMPARE(server->requestCount(), 1);
    QCOMPARE(server->requests().at(0).status, status);
    QCOMPARE(server->requests().at(0).target, target);
}

void TestDeveloperServer::withoutAKey_everythingIs401()
{
    server->setApiKey(QString());

    const HttpsClient::Result result = send("GET", {}, {acceptJson, "Authorization: Basic Og=="});

    QCOMPARE(result.status, 401);
}

void TestDeveloperServer::fieldValues_areNotDecoded_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QString>("kept");
    QTest::newRow("percent") << QByteArray("50%25") << QStringLiteral("50%25");
    QTest::newRow("plus") << QByteArray("a+b") << QStringLiteral("a+b");
    QTest::newRow("space") << QByteArray("a b") << QStringLiteral("a b");
    QTest::newRow("equals") << QByteArray("a=b") << QStringLiteral("a=b");
    QTest::newRow("ampersand ends the field") << QByteArray("a&b") << QStringLiteral("a");
    QTest::newRow("empty") << QByteArray("") << QString();
    QTest::newRow("umlaut") << QByteArray("\xc3\xbc") << QString(QChar(0xfc));
}

void TestDeveloperServer::fieldValues_areNotDecoded()
{
    QFETCH(const QByteArray, sent);
    QFETCH(const QString, kept);
    const QByteArray body = "id=d&identifier=u&name=" + sent + "&type=t";

    const HttpsClient::Result result = send("POST", body);

    QCOMPARE(result.status, 200);
    QCOMPARE(server->applications().at(0).name, kept);
    QCOMPARE(server->requests().at(0).body, body);
}

void TestDeveloperServer::bodyOf100Kilobytes_isKeptWhole()
{
    const QByteArray name(100 * 1024, 'x');
    const QByteArray body = "id=d&identifier=u&name=" + name + "&type=t";

    const HttpsClient::Result posted = send("POST", body);
    const HttpsClient::Result list = send("GET");

    QCOMPARE(posted.status, 200);
    QCOMPARE(server->requests().at(0).body, body);
    QCOMPARE(server->applications().at(0).name.toUtf8(), name);
    const QJsonArray apps = object(list.body)[QStringLiteral("apps")].toArray();
    QCOMPARE(apps.at(0).toObject()[QStringLiteral("name")].toString().toUtf8(), name);
}

void TestDeveloperServer::headers_areKeptAsReceived()
{
    const QList<QPair<QByteArray, QByteArray>> expected{{"X-Last", "z%41"},
                                                        {"x-First", "1"},
                                                        {"X-Last", "again"},
                                                        {"Accept", "application/json"},
                                                        {"Authorization", "Basic OmszeQ=="}};

    send("GET", {}, {"X-Last: z%41", "x-First: 1", "X-Last: again", acceptJson, authorization});

    const HttpRequest request = server->requests().at(0);
    QList<QPair<QByteArray, QByteArray>> headers = request.headers;
    QVERIFY(headers.size() >= 6);
    QCOMPARE(headers.takeFirst().first, QByteArray("Host"));
    QCOMPARE(headers.mid(headers.size() - 5), expected);
    QCOMPARE(request.header("X-FIRST"), QByteArray("1"));
    QCOMPARE(request.header("X-None"), QByteArray());
}

void TestDeveloperServer::oneConnectionForTwoRequests_isSeen()
{
    client->setReuseConnection(true);

    send("GET", {}, usual + QList<QByteArray>{"X-Number: 1"});
    send("GET", {}, usual + QList<QByteArray>{"X-Number: 2"});

    const QList<HttpRequest> requests = server->requests();
    QCOMPARE(requests.size(), 2);
    QVERIFY(requests[0].remotePort > 0);
    QCOMPARE(requests[1].remotePort, requests[0].remotePort);
    QCOMPARE(requests[1].header("X-Number"), QByteArray("2"));
}

void TestDeveloperServer::connectionEach_isSeen()
{
    send("GET");
    send("GET");

    const QList<HttpRequest> requests = server->requests();
    QCOMPARE(requests.size(), 2);
    QVERIFY(requests[1].remotePort != requests[0].remotePort);
}

void TestDeveloperServer::statusFault_doesNotDoWhatWasAsked()
{
    server->failNext(1, ServerFault::withStatus(503));

    const HttpsClient::Result result = send("POST", "id=d&identifier=u&name=n&type=t");

    QCOMPARE(result.status, 503);
    QVERIFY(server->applications().isEmpty());
    QCOMPARE(server->requests().at(0).status, 503);
}

void TestDeveloperServer::faults_lineUpAndEnd()
{
    server->failNext(2, ServerFault::withStatus(500));
    server->failNext(1, ServerFault::withStatus(204));

    const std::vector<int> statuses = statusesOfGets(4);

    QCOMPARE(statuses, (std::vector<int>{500, 500, 204, 200}));
}

void TestDeveloperServer::lastingFault_staysUntilCleared()
{
    server->failAlways(ServerFault::withStatus(502));
    server->failNext(1, ServerFault::withStatus(503));

    const std::vector<int> failing = statusesOfGets(3);
    server->clearFaults();
    const std::vector<int> cleared = statusesOfGets(1);

    QCOMPARE(failing, (std::vector<int>{503, 502, 502}));
    QCOMPARE(cleared, std::vector<int>{200});
}

void TestDeveloperServer::closedConnection_hasNoAnswer()
{
    server->failNext(1, ServerFault::withClosedConnection());

    const HttpsClient::Result closed = send("POST", "id=d&identifier=u&name=n&type=t");
    const HttpsClient::Result next = send("GET");

    QVERIFY(closed.code != 0);
    QCOMPARE(closed.status, 0);
    QCOMPARE(closed.body, QByteArray());
    QVERIFY(server->applications().isEmpty());
    QCOMPARE(server->requests().at(0).status, 0);
    QCOMPARE(next.status, 200);
}

void TestDeveloperServer::bodyThatIsNoJson_comesAfterTheDeed()
{
    server->failNext(1, ServerFault::withBodyThatIsNoJson());

    const HttpsClient::Result result = send("POST", "id=d&identifier=u&name=n&type=t");

    QCOMPARE(result.status, 200);
    QVERIFY(!result.body.isEmpty());
    QVERIFY(QJsonDocument::fromJson(result.body).isNull());
    QCOMPARE(server->applications().size(), 1);
}

void TestDeveloperServer::delay_holdsTheAnswerBack()
{
    server->failNext(1, ServerFault::withDelay(300));

    const HttpsClient::Result result = send("GET");

    QCOMPARE(result.status, 200);
    const HttpRequest request = server->requests().at(0);
    QVERIFY(request.answeredAtMs - request.receivedAtMs >= 300);
}

void TestDeveloperServer::clearingFaults_releasesAHeldAnswer()
{
    server->failNext(1, ServerFault::withDelay(60000));
    connect(server.get(), &DeveloperServer::held, server.get(), &DeveloperServer::clearFaults);

    const HttpsClient::Result result = send("GET");

    QCOMPARE(result.status, 200);
}

void TestDeveloperServer::script_answersInPlaceOfTheServer()
{
    server->failNext(1, ServerFault::withStatus(503));
    server->setScript([](const HttpRequest &request) -> std::optional<HttpAnswer> {
        if (request.method != "PUT") {
            return std::nullopt;
        }
        HttpAnswer answer;
        answer.status = 418;
        answer.body = "scripted";
        return answer;
    });

    const HttpsClient::Result scripted = send("PUT", "x=y");
    const HttpsClient::Result notScripted = send("GET");
    server->setScript({});
    const HttpsClient::Result withoutScript = send("PUT", "x=y");

    QCOMPARE(scripted.status, 418);
    QCOMPARE(scripted.body, QByteArray("scripted"));
    // The fault was kept for the first answer of the server's own.
    QCOMPARE(notScripted.status, 503);
    QCOMPARE(withoutScript.status, 400);
}

void TestDeveloperServer::concurrentRequests_areCounted()
{
    constexpr int count = 3;
    server->failNext(count, ServerFault::withDelay(60000));
    QSignalSpy held(server.get(), &DeveloperServer::held);
    connect(server.get(), &DeveloperServer::held, server.get(), [&] {
        if (held.count() == count) {
            server->clearFaults();
        }
    });

    std::vector<int> statuses;
    serveWhile([&statuses, address = url()] {
        std::vector<std::future<int>> answers;
        for (int number = 0; number < count; ++number) {
            answers.push_back(std::async(std::launch::async, [address] {
                return HttpsClient(Certificates::shared().authority().toUtf8())
                    .send("GET", address, usual)
                    .status;
            }));
        }
        for (std::future<int> &answer : answers) {
            statuses.push_back(answer.get());
        }
    });

    QCOMPARE(statuses, std::vector<int>(count, 200));
    QCOMPARE(server->maximumConcurrent(), count);
    const QList<HttpRequest> requests = server->requests();
    for (int index = 0; index < count; ++index) {
        QCOMPARE(requests.at(index).othersInFlight, index);
    }
}

void TestDeveloperServer::requestsOneAfterTheOther_doNotOverlap()
{
    const std::vector<int> statuses = statusesOfGets(20);

    QCOMPARE(statuses, std::vector<int>(20, 200));
    QCOMPARE(server->requestCount(), 20);
    QCOMPARE(server->maximumConcurrent(), 1);
}

void TestDeveloperServer::answeredSignal_carriesTheAnswer()
{
    const QSignalSpy answered(server.get(), &DeveloperServer::answered);

    send("GET");

    QCOMPARE(answered.count(), 1);
    const HttpRequest request = answered.at(0).at(0).value<HttpRequest>();
    QCOMPARE(request.status, 200);
    QVERIFY(request.answerBody.contains("apps"));
    QVERIFY(request.answeredAtMs >= request.receivedAtMs);
}

void TestDeveloperServer::stopWithAHeldAnswer_isPrompt()
{
    server->failNext(1, ServerFault::withDelay(60000));
    QElapsedTimer elapsed;
    connect(server.get(), &DeveloperServer::held, server.get(), [&] {
        elapsed.start();
        server->stop();
    });

    const HttpsClient::Result result = send("GET");

    QVERIFY(result.code != 0);
    QVERIFY2(elapsed.elapsed() < promptMs, qPrintable(QString::number(elapsed.elapsed())));
    QCOMPARE(server->requests().at(0).status, 0);
}

void TestDeveloperServer::stopWithSilentConnections_isPrompt()
{
    // One client that never begins the handshake, and one that keeps its connection after an answer.
    const int silent = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(server->port());
    QCOMPARE(::connect(silent, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    client->setReuseConnection(true);
    QCOMPARE(send("GET").status, 200);
    QElapsedTimer elapsed;
    elapsed.start();

    server.reset();

    QVERIFY2(elapsed.elapsed() < promptMs, qPrintable(QString::number(elapsed.elapsed())));
    ::close(silent);
}

void TestDeveloperServer::recordsBehindTheDevicesBack_areSeen()
{
    const QString first = server->addApplication({});
    const QString second = server->addApplication({});

    const bool isRemoved = server->removeApplication(first);
    const bool isRemovedAgain = server->removeApplication(first);
    const HttpsClient::Result one = send("GET");
    server->removeAllApplications();
    const HttpsClient::Result none = send("GET");

    QVERIFY(!first.isEmpty());
    QVERIFY(first != second);
    QVERIFY(isRemoved);
    QVERIFY(!isRemovedAgain);
    QCOMPARE(object(one.body)[QStringLiteral("apps")].toArray().size(), 1);
    QCOMPARE(object(none.body)[QStringLiteral("apps")].toArray().size(), 0);
}

void TestDeveloperServer::takenPort_isReported()
{
    DeveloperServer second;

    const bool isStarted = second.start(Certificates::shared().serverCertificate(),
                                        Certificates::shared().serverKey(), server->port());

    QVERIFY(!isStarted);
    QVERIFY(second.errorText().contains(QStringLiteral("127.0.0.1:%1").arg(server->port())));
    QVERIFY(!second.isRunning());
}

void TestDeveloperServer::unusableFile_isReported_data()
{
    QTest::addColumn<QString>("certificate");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("named");
    const Certificates &files = Certificates::shared();
    const auto nowhere = QStringLiteral("/nonexistent.pem");
    QTest::newRow("certificate that is not there") << nowhere << files.serverKey() << nowhere;
    QTest::newRow("key that is a certificate")
        << files.serverCertificate() << files.authority() << files.authority();
}

void TestDeveloperServer::unusableFile_isReported()
{
    QFETCH(const QString, certificate);
    QFETCH(const QString, key);
    QFETCH(const QString, named);
    DeveloperServer second;

    const bool isStarted = second.start(certificate, key);

    QVERIFY(!isStarted);
    QVERIFY(second.errorText().contains(named));
}

void TestDeveloperServer::restart_keepsRecords()
{
    server->addApplication({});
    server->stop();
    QVERIFY(!server->isRunning());
    QVERIFY(send("GET").code != 0);

    QVERIFY(startServer());
    const HttpsClient::Result result = send("GET");

    QCOMPARE(result.status, 200);
    QCOMPARE(server->applications().size(), 1);
}

QTEST_GUILESS_MAIN(TestDeveloperServer)
#include "tst_developerserver.moc"
