#include "certificates.h"
#include "httpsclient.h"
#include "httpserver.h"

#include <QtTest>

#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

#include <cstdlib>
#include <curl/curl.h>
#include <memory>

namespace
{
const QByteArray path = "/api/v1/qwixt/apps";

HttpAnswer answerOf(const QByteArray &body, HttpAnswer::Ending ending = HttpAnswer::Ending::KeepOpen)
{
    HttpAnswer answer;
    answer.body = body;
    answer.ending = ending;
    return answer;
}
} // namespace

Q_DECLARE_METATYPE(HttpAnswer)
Q_DECLARE_METATYPE(HttpAnswer::Ending)

/// What the server does on the wire, with TLS and without.
class TestHttpServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void request_isKeptAsItCame_data() { withAndWithoutTls(); }
    void request_isKeptAsItCame();
    void longBodies_passWhole_data() { withAndWithoutTls(); }
    void longBodies_passWhole();
    void exactText_isSentAsItStands_data() { withAndWithoutTls(); }
    void exactText_isSentAsItStands();
    void queuedAnswers_comeBeforeTheScript();
    void withoutAnAnswer_theConnectionIsClosed();
    void chunkedAnswer_isPutTogether_data() { withAndWithoutTls(); }
    void chunkedAnswer_isPutTogether();
    void connection_endsAsTheAnswerSays_data();
    void connection_endsAsTheAnswerSays();
    void ending_comesBehindTheWholeAnswer_data();
    void ending_comesBehindTheWholeAnswer();
    void missingBytes_cutTheBodyOff_data() { withAndWithoutTls(); }
    void missingBytes_cutTheBodyOff();
    void endlessAnswer_goesOnUntilTheClientGoes_data() { withAndWithoutTls(); }
    void endlessAnswer_goesOnUntilTheClientGoes();
    void streamedAnswer_goesOnWhenThereIsMore_data() { withAndWithoutTls(); }
    void streamedAnswer_goesOnWhenThereIsMore();
    void noAnswer_keepsTheClientWaiting_data() { withAndWithoutTls(); }
    void noAnswer_keepsTheClientWaiting();
    void delay_isThatOfTheRequestItWasFor();
    void clientThatGoes_isNotInFlightAnyMore();
    void requestsAtOnce_areAnsweredInOrder();
    void requestsTooManyAtOnce_waitWithTheClient_data() { withAndWithoutTls(); }
    void requestsTooManyAtOnce_waitWithTheClient();
    void answer_isKeptByItsBeginning_data();
    void answer_isKeptByItsBeginning();
    void record_holdsTheNewestRequests_data();
    void record_holdsTheNewestRequests();
    void whatIsNoRequest_is400AndNotOnRecord();
    void failedHandshake_isReported();
    void keyOfAnotherCertificate_showsAtTheFirstClient();
    void stop_cutsOffAClientInItsHandshake();

private:
    static void withAndWithoutTls();
    bool start(bool withTls);
    HttpsClient::Result send(const QByteArray &method = "GET", const QByteArray &body = {}) const;

    std::unique_ptr<HttpServer> server;
    std::unique_ptr<HttpsClient> client;
};

void TestHttpServer::initTestCase()
{
    Certificates::shared();
}

void TestHttpServer::init()
{
    server = std::make_unique<HttpServer>();
    client = std::make_unique<HttpsClient>(Certificates::shared().authority().toUtf8());
}

void TestHttpServer::cleanup()
{
    client.reset();
    server.reset();
}

void TestHttpServer::withAndWithoutTls()
{
    QTest::addColumn<bool>("withTls");
    QTest::newRow("plain") << false;
    QTest::newRow("TLS") << true;
}

bool TestHttpServer::start(bool withTls)
{
    const Certificates &certificates = Certificates::shared();
    return withTls ? server->start(certificates.serverCertificate(), certificates.serverKey())
                   : server->start();
}

HttpsClient::Result TestHttpServer::send(const QByteArray &method, const QByteArray &body) const
{
    return client->send(method, server->url(QString::fromLatin1(path)).toUtf8(), {}, body);
}

void TestHttpServer::request_isKeptAsItCame()
{
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    server->queueAnswer(answerOf("{}"));

    const QByteArray url = server->url(QString::fromLatin1(path)).toUtf8();
    const HttpsClient::Result result =
        client->send("PUT", url, {"Accept: application/json", "X-B:  b "}, QByteArray("name=a&=%\n\xc3\xbc"));

    QCOMPARE(result.code, 0);
    QCOMPARE(result.status, 200);
    QCOMPARE(result.body, QByteArray("{}"));
    QCOMPARE(server->requestCount(), 1);
    QCOMPARE(server->requests().at(0).bytes,
             "PUT " + path + " HTTP/1.1\r\nHost: " + server->host().toUtf8() +
                 "\r\nAccept: application/json\r\nX-B:  b \r\nContent-Length: 12\r\n"
                 "Content-Type: application/x-www-form-urlencoded\r\n\r\nname=a&=%\n\xc3\xbc");
}

void TestHttpServer::longBodies_passWhole()
{
    QFETCH(const bool, withTls);
    const QByteArray sent(100 * 1024, 'x');
    const QByteArray answered(3 * 1024 * 1024, 'y');
    QVERIFY(start(withTls));
    server->queueAnswer(answerOf(answered));

    const HttpsClient::Result result = send("POST", sent);

    QCOMPARE(server->requests().at(0).body, sent);
    QCOMPARE(result.code, 0);
    QCOMPARE(result.body, answered);
}

void TestHttpServer::exactText_isSentAsItStands()
{
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    client->setReuseConnection(true);
    const HttpAnswer teapot =
        HttpAnswer::exactly("HTTP/1.1 418 I am a teapot\r\nContent-Length: 3\r\n\r\nno\n");
    server->queueAnswer(teapot);
    server->queueAnswer(teapot);

    const HttpsClient::Result result = send();
    send();

    QCOMPARE(result.code, 0);
    QCOMPARE(result.status, 418);
    QCOMPARE(result.body, QByteArray("no\n"));
    QCOMPARE(server->requests().at(0).status, 418);
    // And the connection was closed behind it, though nothing said so.
    QVERIFY(server->requests().at(1).remotePort != server->requests().at(0).remotePort);
}

void TestHttpServer::queuedAnswers_comeBeforeTheScript()
{
    QVERIFY(start(false));
    server->setScript([](const HttpRequest &request) { return answerOf("scripted " + request.method); });
    server->queueAnswer(answerOf("first"));
    server->queueAnswer(answerOf("second"));

    const QList<QByteArray> bodies{send().body, send().body, send().body, send("PUT", "").body};

    QCOMPARE(bodies, QList<QByteArray>({"first", "second", "scripted GET", "scripted PUT"}));
}

void TestHttpServer::withoutAnAnswer_theConnectionIsClosed()
{
    QVERIFY(start(false));
    server->setScript([](const HttpRequest &) { return std::nullopt; });

    const HttpsClient::Result result = send();

    QCOMPARE(result.code, static_cast<int>(CURLE_GOT_NOTHING));
    QCOMPARE(server->requestCount(), 1);
}

void TestHttpServer::chunkedAnswer_isPutTogether()
{
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    HttpAnswer answer = answerOf("a body of more than one chunk");
    answer.framing = HttpAnswer::Framing::Chunked;
    server->queueAnswer(answer);

    const HttpsClient::Result result = send();

    QCOMPARE(result.code, 0);
    QCOMPARE(result.body, QByteArray("a body of more than one chunk"));
    QVERIFY(answer.text().endsWith("\r\n7\r\nne chun\r\n1\r\nk\r\n0\r\n\r\n"));
}

void TestHttpServer::connection_endsAsTheAnswerSays_data()
{
    using Codes = QList<int>;
    QTest::addColumn<bool>("withTls");
    QTest::addColumn<HttpAnswer::Ending>("ending");
    QTest::addColumn<Codes>("codes");
    const Codes nothing{CURLE_GOT_NOTHING};
    const Codes error{CURLE_RECV_ERROR};
    QTest::newRow("plain, closed") << false << HttpAnswer::Ending::Close << nothing;
    QTest::newRow("plain, cut off") << false << HttpAnswer::Ending::CutOff << nothing;
    QTest::newRow("plain, reset") << false << HttpAnswer::Ending::Reset << error;
    QTest::newRow("TLS, closed") << true << HttpAnswer::Ending::Close << nothing;
    // Whether a missing goodbye is an error is a matter of libcurl's version.
    QTest::newRow("TLS, cut off") << true << HttpAnswer::Ending::CutOff << nothing + error;
    QTest::newRow("TLS, reset") << true << HttpAnswer::Ending::Reset << error;
}

void TestHttpServer::connection_endsAsTheAnswerSays()
{
    QFETCH(const bool, withTls);
    QFETCH(const HttpAnswer::Ending, ending);
    QFETCH(const QList<int>, codes);
    QVERIFY(start(withTls));
    server->queueAnswer(HttpAnswer::nothing(ending));

    const HttpsClient::Result result = send();

    QVERIFY2(codes.contains(result.code), qPrintable(QString::number(result.code)));
    QCOMPARE(result.status, 0);
    QCOMPARE(server->requests().at(0).status, 0);
    QVERIFY(server->requests().at(0).answeredAtMs > 0);
}

void TestHttpServer::ending_comesBehindTheWholeAnswer_data()
{
    QTest::addColumn<bool>("withTls");
    QTest::addColumn<HttpAnswer::Ending>("ending");
    for (const bool withTls : {false, true}) {
        const char *const kind = withTls ? "TLS" : "plain";
        QTest::addRow("%s, closed", kind) << withTls << HttpAnswer::Ending::Close;
        QTest::addRow("%s, cut off", kind) << withTls << HttpAnswer::Ending::CutOff;
    }
}

void TestHttpServer::ending_comesBehindTheWholeAnswer()
{
    QFETCH(const bool, withTls);
    QFETCH(const HttpAnswer::Ending, ending);
    const QByteArray body(300000, 'z');
    client->setReuseConnection(true);
    QVERIFY(start(withTls));
    server->queueAnswer(answerOf(body, ending));
    server->queueAnswer(answerOf(body, ending));

    const HttpsClient::Result first = send();
    const HttpsClient::Result second = send();

    QCOMPARE(first.code, 0);
    QCOMPARE(first.body, body);
    QCOMPARE(second.code, 0);
    QVERIFY(server->requests().at(1).remotePort != server->requests().at(0).remotePort);
}

void TestHttpServer::missingBytes_cutTheBodyOff()
{
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    HttpAnswer answer = answerOf("0123456789", HttpAnswer::Ending::Close);
    answer.missingBytes = 3;
    server->queueAnswer(answer);

    const HttpsClient::Result result = send();

    QCOMPARE(result.code, static_cast<int>(CURLE_PARTIAL_FILE));
    QCOMPARE(result.body, QByteArray("0123456"));
}

void TestHttpServer::endlessAnswer_goesOnUntilTheClientGoes()
{
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    HttpAnswer answer = answerOf("abc");
    answer.framing = HttpAnswer::Framing::Endless;
    server->queueAnswer(answer);
    server->queueAnswer(answerOf("still there"));
    constexpr int enough = 2 * 1024 * 1024;
    client->setLargestBody(enough);

    const HttpsClient::Result endless = send();
    const HttpsClient::Result next = send();

    QCOMPARE(endless.code, static_cast<int>(CURLE_WRITE_ERROR));
    QVERIFY(endless.body.size() > enough);
    QCOMPARE(endless.body.left(enough), QByteArray("abc").repeated(enough / 3 + 1).left(enough));
    QCOMPARE(next.body, QByteArray("still there"));
}

void TestHttpServer::streamedAnswer_goesOnWhenThereIsMore()
{
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    QList<QByteArray> parts{"one ", "two "};
    int timesAsked = 0;
    HttpAnswer answer = answerOf("zero ");
    answer.headers = "X-One: 1\r\nX-Two: 2\r\n";
    answer.framing = HttpAnswer::Framing::Streamed;
    answer.source = [&] {
        ++timesAsked;
        return parts.isEmpty() ? QByteArray() : parts.takeFirst();
    };
    server->queueAnswer(answer);
    // Once all is sent it is woken, and its client hangs up at the ninth byte of what comes then.
    client->setLargestBody(21);
    QTimer waker;
    connect(&waker, &QTimer::timeout, this, [&] {
        if (parts.isEmpty() && timesAsked == 3) {
            parts = {"three ", "four "};
            server->wakeStreams();
        }
    });
    waker.start(10);

    const HttpsClient::Result result = send();

    QCOMPARE(result.code, static_cast<int>(CURLE_WRITE_ERROR));
    QCOMPARE(result.body, QByteArray("zero one two three four "));
    QVERIFY(server->requests().at(0).answerBytes.contains("\r\nX-One: 1\r\nX-Two: 2\r\n\r\nzero "));
}

void TestHttpServer::noAnswer_keepsTheClientWaiting()
{
    constexpr int timeoutMs = 3000; // a handshake on a busy machine takes a good part of a second
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    const QSignalSpy answered(server.get(), &HttpServer::answered);
    server->queueAnswer(HttpAnswer::nothing(HttpAnswer::Ending::KeepOpen));
    client->setTimeout(timeoutMs);

    const HttpsClient::Result result = send();

    QCOMPARE(result.code, static_cast<int>(CURLE_OPERATION_TIMEDOUT));
    // The client hung up: its request has come to an end too.
    QTRY_COMPARE(answered.count(), 1);
    QCOMPARE(server->requests().at(0).status, 0);
    QVERIFY(server->requests().at(0).answeredAtMs - server->requests().at(0).receivedAtMs >= timeoutMs / 2);
}

void TestHttpServer::delay_isThatOfTheRequestItWasFor()
{
    // A delay whose answer was released early must not release a later one of the same connection.
    constexpr int firstDelayMs = 300;
    QVERIFY(start(false));
    client->setReuseConnection(true);
    HttpAnswer late = answerOf("late");
    late.delayMs = firstDelayMs;
    server->queueAnswer(late);
    late.delayMs = 3 * firstDelayMs;
    server->queueAnswer(late);
    const auto release =
        connect(server.get(), &HttpServer::held, server.get(), &HttpServer::releaseHeldAnswers);

    send();
    disconnect(release);
    send();

    const QList<HttpRequest> requests = server->requests();
    QCOMPARE(requests.at(1).remotePort, requests.at(0).remotePort);
    QVERIFY(requests.at(0).answeredAtMs - requests.at(0).receivedAtMs < firstDelayMs);
    QVERIFY(requests.at(1).answeredAtMs - requests.at(1).receivedAtMs >= 3 * firstDelayMs);
}

void TestHttpServer::clientThatGoes_isNotInFlightAnyMore()
{
    QVERIFY(start(false));
    HttpAnswer late = answerOf("late");
    late.delayMs = 60000;
    server->queueAnswer(late);
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), server->port());
    socket.write("GET / HTTP/1.1\r\n\r\n");
    QTRY_COMPARE(server->requestCount(), 1);

    const QSignalSpy answered(server.get(), &HttpServer::answered);
    socket.abort();

    QTRY_COMPARE(answered.count(), 1);
    QCOMPARE(server->requests().at(0).status, 0);
    server->clearRequests();
    QCOMPARE(server->maximumConcurrent(), 0);
}

void TestHttpServer::requestsAtOnce_areAnsweredInOrder()
{
    QVERIFY(start(false));
    server->setScript([](const HttpRequest &request) {
        HttpAnswer answer = HttpAnswer::exactly(request.target + request.body + ' ');
        answer.ending = HttpAnswer::Ending::KeepOpen;
        answer.delayMs = request.target == "/1" ? 300 : 0;
        return answer;
    });
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), server->port());

    // The later ones come while the first is still being held.
    socket.write("PUT /1 HTTP/1.1\r\nContent-Length: 1\r\n\r\na");
    QTRY_COMPARE(server->requestCount(), 1);
    socket.write("GET /2 HTTP/1.1\r\n\r\nGET /3 HTTP/1.1\r\n\r\n");

    const QByteArray expected = "/1a /2 /3 ";
    QTRY_COMPARE(socket.bytesAvailable(), qint64(expected.size()));
    QCOMPARE(socket.readAll(), expected);
    QCOMPARE(server->maximumConcurrent(), 1);
}

void TestHttpServer::requestsTooManyAtOnce_waitWithTheClient()
{
    constexpr int flood = 32 * 1024 * 1024;
    constexpr int longEnoughMs = 1500;
    QFETCH(const bool, withTls);
    QVERIFY(start(withTls));
    HttpAnswer late = answerOf("late");
    late.delayMs = 60000;
    server->queueAnswer(late);
    QSslSocket socket;
    socket.setPeerVerifyMode(QSslSocket::VerifyNone);
    if (withTls) {
        socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), server->port());
        QTRY_VERIFY(socket.isEncrypted());
    } else {
        socket.connectToHost(QStringLiteral("127.0.0.1"), server->port());
    }
    socket.write("GET /1 HTTP/1.1\r\n\r\n");
    QTRY_COMPARE(server->requestCount(), 1);

    socket.write("PUT /2 HTTP/1.1\r\nContent-Length: " + QByteArray::number(flood) + "\r\n\r\n" +
                 QByteArray(flood, 'x'));
    // More than the buffers of the system hold.
    const auto isMostGone = [&] {
        return socket.bytesToWrite() + socket.encryptedBytesToWrite() < flood / 2;
    };
    const bool isTaken = QTest::qWaitFor(isMostGone, longEnoughMs);
    server->releaseHeldAnswers();

    QVERIFY2(!isTaken, "what nobody asks for yet fills the server's memory");
    QTRY_COMPARE_WITH_TIMEOUT(server->requestCount(), 2, 30000);
    QCOMPARE(server->requests().at(1).body.size(), flood);
}

void TestHttpServer::answer_isKeptByItsBeginning_data()
{
    QTest::addColumn<HttpAnswer>("answer");
    QTest::addColumn<QByteArray>("text");
    const HttpAnswer plain = answerOf("body");
    HttpAnswer chunked = plain;
    chunked.framing = HttpAnswer::Framing::Chunked;
    HttpAnswer streamed = plain;
    streamed.framing = HttpAnswer::Framing::Streamed;
    HttpAnswer cut = plain;
    cut.missingBytes = 3;
    HttpAnswer cutInItsHead = plain;
    cutInItsHead.missingBytes = 6;
    HttpAnswer cutToNothing = plain;
    cutToNothing.missingBytes = 1000;
    HttpAnswer empty = plain;
    empty.status = 204;
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n";
    QTest::newRow("with its length") << plain << head + "Content-Length: 4\r\n\r\nbody";
    QTest::newRow("in chunks") << chunked
                               << head + "Transfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n0\r\n\r\n";
    QTest::newRow("streamed") << streamed << head + "\r\nbody";
    QTest::newRow("cut in its body") << cut << head + "Content-Length: 4\r\n\r\nb";
    QTest::newRow("cut in its head") << cutInItsHead << head + "Content-Length: 4\r\n";
    QTest::newRow("cut to nothing") << cutToNothing << QByteArray();
    QTest::newRow("without a body") << empty << QByteArray("HTTP/1.1 204 OK\r\n\r\n");
    QTest::newRow("exact") << HttpAnswer::exactly("HTTP/1.1 418 No") << QByteArray("HTTP/1.1 418 No");
    QTest::newRow("none") << HttpAnswer::nothing(HttpAnswer::Ending::Close) << QByteArray();
}

void TestHttpServer::answer_isKeptByItsBeginning()
{
    QFETCH(const HttpAnswer, answer);
    QFETCH(const QByteArray, text);

    const QByteArray whole = answer.text();

    QCOMPARE(whole, text);
    for (int size = 0; size <= text.size() + 1; ++size) {
        QCOMPARE(answer.beginning(size), text.left(size));
    }
}

void TestHttpServer::record_holdsTheNewestRequests_data()
{
    QTest::addColumn<int>("most");
    QTest::addColumn<QList<QByteArray>>("held");
    QTest::newRow("none") << 0 << QList<QByteArray>();
    QTest::newRow("some") << 2 << QList<QByteArray>{"b", "c"};
    QTest::newRow("all") << 3 << QList<QByteArray>{"a", "b", "c"};
}

void TestHttpServer::record_holdsTheNewestRequests()
{
    QFETCH(const int, most);
    QFETCH(const QList<QByteArray>, held);
    QVERIFY(start(false));
    server->setMostOnRecord(most);
    server->setScript([](const HttpRequest &) { return answerOf("{}"); });

    for (const char *const body : {"a", "b", "c"}) {
        QCOMPARE(send("PUT", body).body, QByteArray("{}"));
    }

    QList<QByteArray> bodies;
    const QList<HttpRequest> requests = server->requests();
    for (const HttpRequest &request : requests) {
        QCOMPARE(request.status, 200);
        bodies.append(request.body);
    }
    QCOMPARE(bodies, held);
}

void TestHttpServer::whatIsNoRequest_is400AndNotOnRecord()
{
    QVERIFY(start(false));
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), server->port());

    socket.write("hello\r\n\r\n");

    QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 400 "));
    QCOMPARE(server->requestCount(), 0);
}

void TestHttpServer::failedHandshake_isReported()
{
    QVERIFY(start(true));
    const QSignalSpy failed(server.get(), &HttpServer::handshakeFailed);
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), server->port());

    socket.write("GET / HTTP/1.1\r\n\r\n");

    QTRY_COMPARE(failed.count(), 1);
    QVERIFY(!failed.at(0).at(0).toString().isEmpty());
    QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(server->requestCount(), 0);
}

void TestHttpServer::keyOfAnotherCertificate_showsAtTheFirstClient()
{
    // A key that is one, but of another certificate.
    const QTemporaryDir directory;
    const QString key = directory.filePath(QStringLiteral("other.key"));
    // Not by QProcess, which cannot start a program where the processor is emulated (qemu-user).
    const QByteArray command =
        "openssl ecparam -name prime256v1 -genkey -noout -out '" + key.toLocal8Bit() + '\'';
    QCOMPARE(std::system(command.constData()), 0);
    QVERIFY(server->start(Certificates::shared().serverCertificate(), key));
    const QSignalSpy failed(server.get(), &HttpServer::handshakeFailed);

    const HttpsClient::Result result = send();

    QVERIFY(result.code != 0);
    QTRY_COMPARE(failed.count(), 1);
}

void TestHttpServer::stop_cutsOffAClientInItsHandshake()
{
    QVERIFY(start(true));
    const quint16 port = server->port();
    QTcpSocket silent;
    silent.connectToHost(QStringLiteral("127.0.0.1"), port);
    QTRY_COMPARE(silent.state(), QAbstractSocket::ConnectedState);
    QCoreApplication::processEvents();

    server->stop();

    QTRY_COMPARE(silent.state(), QAbstractSocket::UnconnectedState);
    QVERIFY(!server->isRunning());
    QVERIFY(server->start(port));
}

QTEST_GUILESS_MAIN(TestHttpServer)
#include "tst_httpserver.moc"
