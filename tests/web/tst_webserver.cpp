#include "certificates.h"
#include "eventstream.h"
#include "privatebus.h"
#include "requestguard.h"
#include "tracefile.h"
#include "webserver.h"

#include <QtTest>

#include <QJsonDocument>
#include <QTcpSocket>

#include <memory>

namespace
{
constexpr int largestCommand = 16 * 1024;
constexpr int mostConnections = 64;

QString textOf(const char *text)
{
    return QString::fromUtf8(text);
}

int statusOf(const QByteArray &answer)
{
    return answer.mid(9, 3).toInt();
}

QByteArray bodyOf(const QByteArray &answer)
{
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

// The data of all messages of a stream, each in its line; those of a type of their own, or the events.
QList<QByteArray> dataOf(const QByteArray &stream, const QByteArray &type = {})
{
    QList<QByteArray> found;
    QByteArray messages = stream;
    const QList<QByteArray> blocks = messages.replace("\n\n", "\v").split('\v');
    for (const QByteArray &block : blocks) {
        const auto data = block.indexOf("data: ");
        const bool isMeant =
            type.isEmpty() ? block.startsWith("id: ") : block.contains("event: " + type + "\n");
        if (isMeant && data >= 0) {
            found.append(block.mid(data + 6));
        }
    }
    return found;
}

QString titleOf(const QByteArray &event)
{
    return QJsonDocument::fromJson(event).object().value(QStringLiteral("title")).toString();
}
} // namespace

/// What the page's server gives to whom. The requests are written out, so that each is exactly what it says.
class TestWebServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void command_isObeyedOnlyWhenItComesFromThePage_data();
    void command_isObeyedOnlyWhenItComesFromThePage();
    void portOfHttp_isLeftOutByABrowser_data();
    void portOfHttp_isLeftOutByABrowser();
    void pageAndStream_areRefusedToOthersToo_data();
    void pageAndStream_areRefusedToOthersToo();
    void file_isGivenWithItsTypeAndProtection_data();
    void file_isGivenWithItsTypeAndProtection();
    void whatIsNotThere_isRefused_data();
    void whatIsNotThere_isRefused();
    void command_isAnsweredAsAtThePrompt();
    void commandThatEndsTheProgram_isAnswered();
    void commandOfTwoLines_isRefused_data();
    void commandOfTwoLines_isRefused();
    void longCommand_isRefused_data();
    void longCommand_isRefused();
    void tooManyClients_areCutOff();
    void stream_tellsWhatPassedAndWhatPasses();
    void stream_goesOnBehindTheLastEvent_data();
    void stream_goesOnBehindTheLastEvent();
    void stream_saysWhatIsNoLongerHeld();
    void stream_givesAFloodInParts();
    void state_isSentWhenItChangesAndWithoutTheKey();
    void savedTrace_holdsNoTagOfAnEvent();
    void scripts_endNoScriptElement();
    void open_saysWhatIsWrong();

private:
    std::unique_ptr<QTcpSocket> begin(const QByteArray &request) const;
    QByteArray ask(const QByteArray &request) const;
    QByteArray host() const { return "Host: " + server->host().toUtf8() + "\r\n"; }
    QByteArray get(const QByteArray &path, const QByteArray &headers = {}) const;
    QByteArray post(const QByteArray &line, const QByteArray &headers) const;

    PrivateBus bus;
    std::unique_ptr<DeviceSimulator> simulator;
    std::unique_ptr<CommandInterpreter> interpreter;
    std::unique_ptr<WebServer> server;
};

void TestWebServer::initTestCase()
{
    QVERIFY(bus.start());
}

void TestWebServer::init()
{
    simulator = std::make_unique<DeviceSimulator>(bus.address());
    interpreter = std::make_unique<CommandInterpreter>(*simulator);
    server = std::make_unique<WebServer>(*simulator, *interpreter);
    QCOMPARE(server->open(bus.address(), 0), QString());
}

void TestWebServer::cleanup()
{
    server.reset();
    interpreter.reset();
    simulator.reset();
}

std::unique_ptr<QTcpSocket> TestWebServer::begin(const QByteArray &request) const
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QStringLiteral("127.0.0.1"), server->port());
    socket->write(request);
    return socket;
}

// The whole answer, which says its length.
QByteArray TestWebServer::ask(const QByteArray &request) const
{
    const auto socket = begin(request);
    QByteArray answer;
    const auto isWhole = [&] {
        answer += socket->readAll();
        const auto length = answer.indexOf("Content-Length: ");
        const auto end = answer.indexOf("\r\n", length);
        return answer.contains("\r\n\r\n") &&
               bodyOf(answer).size() >= answer.mid(length + 16, end - length - 16).toInt();
    };
    [&] { QTRY_VERIFY(isWhole()); }();
    return answer;
}

QByteArray TestWebServer::get(const QByteArray &path, const QByteArray &headers) const
{
    return "GET " + path + " HTTP/1.1\r\n" + host() + headers + "\r\n";
}

QByteArray TestWebServer::post(const QByteArray &line, const QByteArray &headers) const
{
    return "POST /commands HTTP/1.1\r\n" + headers + "Content-Length: " + QByteArray::number(line.size()) +
           "\r\n\r\n" + line;
}

void TestWebServer::command_isObeyedOnlyWhenItComesFromThePage_data()
{
    QTest::addColumn<QByteArray>("headers");
    QTest::addColumn<bool>("isObeyed");
    // PORT stands for the server's port.
    const QByteArray own = "Host: 127.0.0.1:PORT\r\n";
    QTest::newRow("no browser") << own << true;
    QTest::newRow("page") << own + "Origin: http://127.0.0.1:PORT\r\nSec-Fetch-Site: same-origin\r\n" << true;
    QTest::newRow("by its other name")
        << QByteArray("Host: localhost:PORT\r\nOrigin: http://localhost:PORT\r\n") << true;
    QTest::newRow("typed address") << own + "Sec-Fetch-Site: none\r\n" << true;
    QTest::newRow("other host") << QByteArray("Host: attacker.example:PORT\r\n") << false;
    QTest::newRow("host that begins alike")
        << QByteArray("Host: 127.0.0.1:PORT.attacker.example\r\n") << false;
    QTest::newRow("other port") << QByteArray("Host: 127.0.0.1:1\r\n") << false;
    QTest::newRow("no port") << QByteArray("Host: 127.0.0.1\r\n") << false;
    QTest::newRow("no host") << QByteArray() << false;
    QTest::newRow("other origin") << own + "Origin: http://attacker.example\r\n" << false;
    QTest::newRow("origin of another port") << own + "Origin: http://127.0.0.1:1\r\n" << false;
    QTest::newRow("origin of another name") << own + "Origin: http://localhost:PORT\r\n" << false;
    QTest::newRow("origin with TLS") << own + "Origin: https://127.0.0.1:PORT\r\n" << false;
    QTest::newRow("hidden origin") << own + "Origin: null\r\n" << false;
    QTest::newRow("rebound name")
        << QByteArray("Host: attacker.example:PORT\r\nOrigin: http://attacker.example:PORT\r\n") << false;
    QTest::newRow("other site") << own + "Sec-Fetch-Site: cross-site\r\n" << false;
    QTest::newRow("other port of this machine") << own + "Sec-Fetch-Site: same-site\r\n" << false;
}

void TestWebServer::command_isObeyedOnlyWhenItComesFromThePage()
{
    QFETCH(QByteArray, headers);
    QFETCH(const bool, isObeyed);
    headers.replace("PORT", QByteArray::number(server->port()));
    QSignalSpy noted(simulator.get(), &DeviceSimulator::noted);

    const QByteArray answer = ask(post("note obeyed", headers));

    QCOMPARE(statusOf(answer), isObeyed ? 200 : 403);
    QCOMPARE(noted.count(), isObeyed ? 1 : 0);
}

void TestWebServer::portOfHttp_isLeftOutByABrowser_data()
{
    QTest::addColumn<QByteArray>("host");
    QTest::addColumn<QByteArray>("origin");
    QTest::addColumn<bool>("isServed");
    const QByteArray noOrigin;
    QTest::newRow("without the port") << QByteArray("127.0.0.1") << noOrigin << true;
    QTest::newRow("with the port") << QByteArray("127.0.0.1:80") << noOrigin << true;
    QTest::newRow("other name") << QByteArray("localhost") << noOrigin << true;
    QTest::newRow("page") << QByteArray("localhost") << QByteArray("http://localhost") << true;
    QTest::newRow("other host") << QByteArray("attacker.example") << noOrigin << false;
    QTest::newRow("other port") << QByteArray("127.0.0.1:8080") << noOrigin << false;
    QTest::newRow("page of another port")
        << QByteArray("localhost") << QByteArray("http://localhost:8080") << false;
    QTest::newRow("page of another host")
        << QByteArray("localhost") << QByteArray("http://attacker.example") << false;
}

void TestWebServer::portOfHttp_isLeftOutByABrowser()
{
    QFETCH(const QByteArray, host);
    QFETCH(const QByteArray, origin);
    QFETCH(const bool, isServed);
    HttpRequest request;
    request.headers = {{"Host", host}, {"Origin", origin}};

    const QString refusal = RequestGuard::refusal(request, 80);

    QCOMPARE(refusal.isEmpty(), isServed);
}

void TestWebServer::pageAndStream_areRefusedToOthersToo_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("page") << QByteArray("/");
    QTest::newRow("script") << QByteArray("/main.js");
    QTest::newRow("stream") << QByteArray("/events");
    QTest::newRow("saved trace") << QByteArray("/trace.html");
}

void TestWebServer::pageAndStream_areRefusedToOthersToo()
{
    QFETCH(const QByteArray, path);

    const QByteArray rebound = ask("GET " + path + " HTTP/1.1\r\nHost: attacker.example\r\n\r\n");
    const QByteArray foreign = ask(get(path, "Origin: http://attacker.example\r\n"));
    const QByteArray image = ask(get(path, "Sec-Fetch-Site: cross-site\r\n"));

    QCOMPARE(statusOf(rebound), 403);
    QCOMPARE(statusOf(foreign), 403);
    QCOMPARE(statusOf(image), 403);
}

void TestWebServer::file_isGivenWithItsTypeAndProtection_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("page") << QByteArray("/") << QByteArray("text/html");
    QTest::newRow("page with a query") << QByteArray("/?a=b") << QByteArray("text/html");
    QTest::newRow("script") << QByteArray("/main.js") << QByteArray("text/javascript");
    QTest::newRow("style") << QByteArray("/style.css") << QByteArray("text/css");
    QTest::newRow("saved trace") << QByteArray("/trace.html") << QByteArray("text/html");
}

void TestWebServer::file_isGivenWithItsTypeAndProtection()
{
    QFETCH(const QByteArray, path);
    QFETCH(const QByteArray, type);

    const QByteArray answer = ask(get(path));

    QCOMPARE(statusOf(answer), 200);
    QVERIFY(bodyOf(answer).size() > 100);
    QVERIFY(answer.contains("\r\nContent-Type: " + type + "; charset=utf-8\r\n"));
    QVERIFY(answer.contains("\r\nX-Content-Type-Options: nosniff\r\n"));
    QVERIFY(answer.contains("\r\nContent-Security-Policy: default-src 'none'; script-src 'self'; "));
    QVERIFY(answer.contains("frame-ancestors 'none'"));
    QVERIFY(!answer.left(answer.indexOf("\r\n\r\n")).contains("unsafe"));
}

void TestWebServer::whatIsNotThere_isRefused_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<int>("status");
    QTest::newRow("no such file") << QByteArray("GET") << QByteArray("/nothing.js") << 404;
    QTest::newRow("file of the machine") << QByteArray("GET") << QByteArray("/../../etc/passwd") << 404;
    QTest::newRow("absolute path") << QByteArray("GET") << QByteArray("//etc/passwd") << 404;
    QTest::newRow("other method") << QByteArray("DELETE") << QByteArray("/") << 405;
    QTest::newRow("posted page") << QByteArray("POST") << QByteArray("/main.js") << 405;
    QTest::newRow("command by GET") << QByteArray("GET") << QByteArray("/commands") << 405;
}

void TestWebServer::whatIsNotThere_isRefused()
{
    QFETCH(const QByteArray, method);
    QFETCH(const QByteArray, path);
    QFETCH(const int, status);

    const QByteArray answer = ask(method + ' ' + path + " HTTP/1.1\r\n" + host() + "\r\n");

    QCOMPARE(statusOf(answer), status);
}

void TestWebServer::command_isAnsweredAsAtThePrompt()
{
    const QByteArray answer = ask(post("add-app \"a \\\"b\\\"\" \xc3\xbc face", host()));

    QCOMPARE(bodyOf(answer), QByteArray("{\"answer\":\"ok: added as app-1\"}"));
    QCOMPARE(simulator->server().applications().at(0).identifier, textOf("a \"b\""));
    QCOMPARE(simulator->server().applications().at(0).name, textOf("\xc3\xbc"));
}

void TestWebServer::commandThatEndsTheProgram_isAnswered()
{
    const auto end = [this] { server.reset(); };
    connect(interpreter.get(), &CommandInterpreter::quitRequested, this, end, Qt::QueuedConnection);

    const auto client = begin(post("quit", host()));
    QTRY_VERIFY(server == nullptr);

    QTRY_COMPARE(client->state(), QAbstractSocket::UnconnectedState);
    const QByteArray answer = client->readAll();
    QCOMPARE(statusOf(answer), 200);
    QVERIFY(bodyOf(answer).startsWith("{\"answer\":"));
}

void TestWebServer::commandOfTwoLines_isRefused_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("line feed") << QByteArray("note one\nnote two");
    QTest::newRow("carriage return") << QByteArray("note one\rnote two");
}

void TestWebServer::commandOfTwoLines_isRefused()
{
    QFETCH(const QByteArray, line);
    QSignalSpy noted(simulator.get(), &DeviceSimulator::noted);

    const QByteArray answer = ask(post(line, host()));

    QCOMPARE(statusOf(answer), 400);
    QCOMPARE(noted.count(), 0);
}

void TestWebServer::longCommand_isRefused_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("status");
    QTest::newRow("longest") << largestCommand << 200;
    QTest::newRow("one byte more") << largestCommand + 1 << 400;
}

void TestWebServer::longCommand_isRefused()
{
    QFETCH(const int, size);
    QFETCH(const int, status);

    const QByteArray answer = ask(post(QByteArray(size, 'x'), host()));

    QCOMPARE(statusOf(answer), status);
}

void TestWebServer::tooManyClients_areCutOff()
{
    std::vector<std::unique_ptr<QTcpSocket>> clients;
    for (int i = 0; i < mostConnections; ++i) {
        clients.push_back(begin(get("/events")));
        QTRY_VERIFY(clients.back()->bytesAvailable() > 0);
    }

    const auto oneMore = begin(get("/"));
    QTRY_COMPARE(oneMore->state(), QAbstractSocket::UnconnectedState);
    const QByteArray refused = oneMore->readAll();
    clients.clear();

    QCOMPARE(refused, QByteArray());
    const auto isServed = [this] {
        const auto next = begin(get("/"));
        next->waitForConnected();
        return QTest::qWaitFor([&] { return next->bytesAvailable() > 0; }, 200);
    };
    QTRY_VERIFY(isServed());
}

void TestWebServer::stream_tellsWhatPassedAndWhatPasses()
{
    simulator->note(QStringLiteral("before"));
    const auto client = begin(get("/events"));
    QByteArray stream;
    const auto count = [&] {
        stream += client->readAll();
        return dataOf(stream).size();
    };
    QTRY_COMPARE(count(), 1);

    simulator->note(QStringLiteral("after\ndata: forged"));

    QTRY_COMPARE(count(), 2);
    QVERIFY(stream.contains("\r\nContent-Type: text/event-stream\r\n"));
    QCOMPARE(titleOf(dataOf(stream).at(0)), QStringLiteral("before"));
    QCOMPARE(titleOf(dataOf(stream).at(1)), QStringLiteral("after\ndata: forged"));
    QVERIFY(stream.contains("\nid: " + server->events().run() + "-2\n"));
}

void TestWebServer::stream_goesOnBehindTheLastEvent_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("first");
    // RUN stands for the id of this run.
    const QByteArray none;
    QTest::newRow("header") << QByteArray("/events") << QByteArray("Last-Event-ID: RUN-2\r\n") << 3;
    QTest::newRow("query") << QByteArray("/events?after=RUN-2") << none << 3;
    QTest::newRow("header before query")
        << QByteArray("/events?after=RUN-0") << QByteArray("Last-Event-ID: RUN-2\r\n") << 3;
    QTest::newRow("nothing") << QByteArray("/events?after=") << none << 1;
    QTest::newRow("other run") << QByteArray("/events?after=0badcafe-2") << none << 1;
    QTest::newRow("number to come") << QByteArray("/events?after=RUN-9") << none << 1;
    QTest::newRow("negative number") << QByteArray("/events?after=RUN--1") << none << 1;
    QTest::newRow("no number") << QByteArray("/events?after=RUN-x") << none << 1;
}

void TestWebServer::stream_goesOnBehindTheLastEvent()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, header);
    QFETCH(const int, first);
    const QByteArray run = server->events().run();
    for (const char *text : {"1", "2", "3"}) {
        simulator->note(textOf(text));
    }

    const auto client = begin(get(path.replace("RUN", run), header.replace("RUN", run)));

    QByteArray stream;
    const auto hasState = [&] {
        stream += client->readAll();
        return !dataOf(stream, "state").isEmpty();
    };
    QTRY_VERIFY(hasState());
    QCOMPARE(dataOf(stream, "run"), QList<QByteArray>{'"' + run + '"'});
    QCOMPARE(dataOf(stream).size(), 4 - first);
    QCOMPARE(titleOf(dataOf(stream).at(0)), QString::number(first));
}

void TestWebServer::stream_saysWhatIsNoLongerHeld()
{
    EventLog log(200);
    EventStream stream(
        log, [] { return QByteArray("{}"); }, log.run() + "-0");
    for (int i = 0; i < 20; ++i) {
        log.append({{QStringLiteral("title"), QStringLiteral("event of some length")}});
    }

    const QByteArray said = stream.next();

    QVERIFY(log.first() > 1);
    QCOMPARE(dataOf(said, "missing"), QList<QByteArray>{"[1," + QByteArray::number(log.first() - 1) + ']'});
    QCOMPARE(dataOf(said).size(), 20 - log.first() + 1);
    QCOMPARE(stream.next(), QByteArray());
}

void TestWebServer::stream_givesAFloodInParts()
{
    constexpr int flood = 2000;
    constexpr int largestPart = 300 * 1024;
    EventLog log;
    EventStream stream(log, [] { return QByteArray("{}"); }, {});
    for (int i = 0; i < flood; ++i) {
        log.append({{QStringLiteral("title"), QString(1000, QLatin1Char('x'))}});
    }

    qsizetype events = 0;
    qsizetype largest = 0;
    for (QByteArray part = stream.next(); !part.isEmpty(); part = stream.next()) {
        events += dataOf(part).size();
        largest = std::max<qsizetype>(largest, part.size());
    }

    QCOMPARE(events, flood);
    QVERIFY2(largest < largestPart, qPrintable(QString::number(largest)));
}

void TestWebServer::state_isSentWhenItChangesAndWithoutTheKey()
{
    const auto client = begin(get("/events"));
    QByteArray stream;
    const auto lastState = [&] {
        stream += client->readAll();
        return dataOf(stream, "state").value(dataOf(stream, "state").size() - 1);
    };
    QTRY_VERIFY(lastState().contains("\"hasKey\":false"));

    ask(post("set-key very-secret", host()));
    ask(post("fail 2 503", host()));
    ask(post("delay always 70", host()));

    QTRY_VERIFY(lastState().contains("\"faults\":[\"next 2: status 503\",\"then all: 70 ms late\"]"));
    QVERIFY(lastState().contains("\"hasKey\":true"));
    QVERIFY(!stream.contains("very-secret"));
}

void TestWebServer::savedTrace_holdsNoTagOfAnEvent()
{
    simulator->note(QStringLiteral("</script><script>alert(1)</script><!--"));

    const QByteArray file = bodyOf(ask(get("/trace.html")));

    QVERIFY(file.contains("\\u003c/script>\\u003cscript>alert(1)\\u003c/script>\\u003c!--"));
    QCOMPARE(file.count("</script>"), 2);
    QCOMPARE(file.count("<script"), 3); // the events, the script, and the script's own word for the events
    QVERIFY(file.contains("content=\"default-src 'none'; script-src 'sha256-"));
    QVERIFY(!file.contains("src=\"/") && !file.contains("href=\"/style"));
}

void TestWebServer::scripts_endNoScriptElement()
{
    const QByteArray script = TraceFile::script();

    QVERIFY(script.size() > 10000);
    QVERIFY(!script.contains("</script"));
    QVERIFY(!script.contains("\nimport ") && !script.contains("\nexport "));
}

void TestWebServer::open_saysWhatIsWrong()
{
    WebServer second(*simulator, *interpreter);

    const QString taken = second.open(bus.address(), server->port());
    const QString nowhere = second.open(QStringLiteral("unix:path=/nonexistent/bus"), 0);

    QCOMPARE(taken,
             QStringLiteral("cannot listen on %1: the port is taken or not allowed").arg(server->host()));
    QVERIFY2(nowhere.startsWith(textOf("cannot watch the bus at unix:path=/nonexistent/bus: ")),
             qPrintable(nowhere));
}

QTEST_GUILESS_MAIN(TestWebServer)

#include "tst_webserver.moc"
