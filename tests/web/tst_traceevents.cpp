#include "busevents.h"
#include "busmonitor.h"
#include "devicesimulator.h"
#include "eventlog.h"
#include "httpevents.h"
#include "lane.h"
#include "privatebus.h"

#include <QtTest>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QJsonDocument>
#include <QTcpSocket>

#include <memory>

namespace
{
const auto daemonName = QStringLiteral("com.qwixtd");
const auto daemonInterface = QStringLiteral("com.vorlet.qwixtd");
const QByteArray path = "/api/v1/qwixt/apps";
constexpr int mostWaiting = 10000;
constexpr int largestShown = 64 * 1024;

/// Stands in for the daemon: answers every call with nothing, and those of one member with an error.
class Answerer : public QDBusVirtualObject
{
public:
    QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const bool isRefused = message.member() == QStringLiteral("deleteQwixtApplication");
        return connection.send(isRefused ? message.createErrorReply(QStringLiteral("com.example.No"),
                                                                    QStringLiteral("not today"))
                                         : message.createReply());
    }
};

// A connection to the bus that ends with this object.
class Peer
{
public:
    explicit Peer(const QString &address, const QString &name)
        : connectionName(name)
        , bus(QDBusConnection::connectToBus(address, name))
    {
    }
    ~Peer() { QDBusConnection::disconnectFromBus(connectionName); }
    Q_DISABLE_COPY(Peer)

private:
    const QString connectionName;

public:
    QDBusConnection bus;
};

QString textOf(const QJsonObject &event, const char *key)
{
    return event.value(QLatin1String(key)).toString();
}

BusMessage callMessage(const QString &sender, quint32 serial)
{
    BusMessage message;
    message.type = BusMessage::Type::Call;
    message.sender = sender;
    message.destination = daemonName;
    message.interface = daemonInterface;
    message.member = QStringLiteral("anything");
    message.serial = serial;
    return message;
}

BusMessage answerMessage(const QString &caller, quint32 serial)
{
    BusMessage message;
    message.type = BusMessage::Type::Answer;
    message.sender = daemonName;
    message.destination = caller;
    message.replySerial = serial;
    return message;
}

HttpRequest requestOf(const QByteArray &head, const QByteArray &body = {}, const QByteArray &behind = {})
{
    HttpRequest request;
    request.bytes = head + "\r\n\r\n" + body + behind;
    request.body = body;
    return request;
}
} // namespace

Q_DECLARE_METATYPE(HttpAnswer)

/// What becomes an event of the page, and what of it.
class TestTraceEvents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void log_numbersAndHoldsTheNewest();
    void callOfAnyProgram_isSeenWithItsAnswer_data();
    void callOfAnyProgram_isSeenWithItsAnswer();
    void callWithoutDaemon_isAnsweredByTheBus();
    void unansweredCalls_pushTheOldestOut();
    void callWithoutAnswer_waitsForNone();
    void callOfTheBus_isReadWithItsWishForAnAnswer();
    void whatIsNoneOfTheDevices_isLeftOut();
    void signal_goesFromItsSenderToItsHearers();
    void name_comesAndGoes();
    void daemonWithAnotherName_isTheDaemon();
    void apiKey_isLeftOut_data();
    void apiKey_isLeftOut();
    void argument_isShownAsItIs_data();
    void argument_isShownAsItIs();
    void longArgument_isCut_data();
    void longArgument_isCut();
    void authorization_isLeftOutOfTheBytes_data();
    void authorization_isLeftOutOfTheBytes();
    void longRequest_isCut();
    void request_isSeenWithItsAnswer();
    void request_standsBehindWhatLedToIt();
    void answerThatFails_isMarked_data();
    void answerThatFails_isMarked();
    void requestThatFailed_isARetryTheNextTime();
    void requestsThatFailed_pushTheOldestOut();
    void widgetOfARequest_isFoundByItsApplication();

private:
    QDBusPendingCall call(const QDBusConnection &from, const QString &service, const QString &object,
                          const QString &interface, const QString &member,
                          const QVariantList &arguments = {});
    QJsonObject eventOf(const char *kind, const QString &title) const;
    void ask(const QByteArray &method, const QByteArray &body);
    QByteArray whole() const;

    PrivateBus bus;
    std::unique_ptr<DeviceSimulator> simulator;
    std::unique_ptr<EventLog> log;
    std::unique_ptr<BusMonitor> monitor;
    std::unique_ptr<BusEvents> busEvents;
    std::unique_ptr<HttpEvents> httpEvents;
    QList<QJsonObject> events;
};

void TestTraceEvents::initTestCase()
{
    QVERIFY(bus.start());
}

void TestTraceEvents::init()
{
    events.clear();
    simulator = std::make_unique<DeviceSimulator>(bus.address());
    log = std::make_unique<EventLog>();
    connect(log.get(), &EventLog::appended, this, [this](const QJsonObject &event) { events.append(event); });
    monitor = std::make_unique<BusMonitor>();
    QVERIFY2(monitor->start(bus.address()), qPrintable(monitor->errorText()));
    busEvents = std::make_unique<BusEvents>(*monitor, *log);
    httpEvents = std::make_unique<HttpEvents>(simulator->server(), *monitor, *log);
}

void TestTraceEvents::cleanup()
{
    simulator->server().stop();
    httpEvents.reset();
    busEvents.reset();
    monitor.reset();
    log.reset();
    simulator.reset();
}

QDBusPendingCall TestTraceEvents::call(const QDBusConnection &from, const QString &service,
                                       const QString &object, const QString &interface, const QString &member,
                                       const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, object, interface, member);
    message.setArguments(arguments);
    return from.asyncCall(message);
}

// The first event of a kind and a title; empty when there is none.
QJsonObject TestTraceEvents::eventOf(const char *kind, const QString &title) const
{
    for (const QJsonObject &event : events) {
        if (textOf(event, "kind") == QLatin1String(kind) && textOf(event, "title") == title) {
            return event;
        }
    }
    return {};
}

// A request to the developer server, without TLS, until it is answered or its connection is closed.
void TestTraceEvents::ask(const QByteArray &method, const QByteArray &body)
{
    QSignalSpy answered(&simulator->server(), &HttpServer::answered);
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), simulator->server().port());
    socket.write(method + ' ' + path + " HTTP/1.1\r\nAccept: application/json\r\nAuthorization: Basic " +
                 QByteArray(":topsecret").toBase64() +
                 "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    QVERIFY(answered.wait());
}

QByteArray TestTraceEvents::whole() const
{
    QByteArray all;
    for (qint64 number = log->first(); number <= log->last(); ++number) {
        all += log->at(number) + '\n';
    }
    return all;
}

void TestTraceEvents::log_numbersAndHoldsTheNewest()
{
    EventLog small(300);

    for (int i = 1; i <= 50; ++i) {
        QCOMPARE(small.append({{QStringLiteral("title"), QString::number(i)}}), i);
    }

    QCOMPARE(small.last(), 50);
    QVERIFY(small.first() > 40 && small.first() < 50);
    QCOMPARE(small.at(small.first() - 1), QByteArray());
    QCOMPARE(small.at(51), QByteArray());
    const QJsonObject newest = QJsonDocument::fromJson(small.at(50)).object();
    QCOMPARE(newest.value(QStringLiteral("n")).toInt(), 50);
    QVERIFY(qAbs(newest.value(QStringLiteral("t")).toDouble() -
                 static_cast<double>(QDateTime::currentMSecsSinceEpoch())) < 5000);
}

void TestTraceEvents::callOfAnyProgram_isSeenWithItsAnswer_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("failed");
    QTest::newRow("done") << QStringLiteral("updateQwixtApplication")
                          << QStringLiteral("updateQwixtApplication -> ()") << false;
    QTest::newRow("refused") << QStringLiteral("deleteQwixtApplication")
                             << QStringLiteral("error com.example.No: not today") << true;
}

void TestTraceEvents::callOfAnyProgram_isSeenWithItsAnswer()
{
    QFETCH(const QString, member);
    QFETCH(const QString, answer);
    QFETCH(const bool, failed);
    Peer daemon(bus.address(), QStringLiteral("daemon"));
    Peer widget(bus.address(), QStringLiteral("widget"));
    Answerer answerer;
    QVERIFY(daemon.bus.registerVirtualObject(QStringLiteral("/"), &answerer));
    QVERIFY(daemon.bus.registerService(daemonName));

    call(widget.bus, daemonName, QStringLiteral("/"), daemonInterface, member,
         {QStringLiteral("app-1"), QStringLiteral("clock"), QStringLiteral("f\"ace")});

    const QString title = member + QStringLiteral("(\"app-1\", \"clock\", \"f\\\"ace\")");
    QTRY_VERIFY(!eventOf("answer", answer).isEmpty());
    const QJsonObject asked = eventOf("call", title);
    const QJsonObject answered = eventOf("answer", answer);
    QCOMPARE(textOf(asked, "from"), Lane::widgets);
    QCOMPARE(textOf(asked, "to"), Lane::qwixtd);
    QCOMPARE(textOf(asked, "widget"), QStringLiteral("clock"));
    QCOMPARE(textOf(answered, "from"), Lane::qwixtd);
    QCOMPARE(textOf(answered, "to"), Lane::widgets);
    QCOMPARE(textOf(answered, "widget"), QStringLiteral("clock"));
    QCOMPARE(answered.value(QStringLiteral("re")), asked.value(QStringLiteral("n")));
    QCOMPARE(answered.value(QStringLiteral("failed")).toBool(), failed);
}

void TestTraceEvents::callWithoutDaemon_isAnsweredByTheBus()
{
    Peer widget(bus.address(), QStringLiteral("widget"));

    call(widget.bus, daemonName, QStringLiteral("/"), daemonInterface,
         QStringLiteral("registerQwixtApplication"), {QStringLiteral("u")});

    QTRY_COMPARE(events.size(), 2);
    QCOMPARE(textOf(events[0], "to"), Lane::qwixtd);
    QCOMPARE(textOf(events[1], "from"), Lane::qwixtd);
    QVERIFY(events[1].value(QStringLiteral("failed")).toBool());
    QVERIFY(textOf(events[1], "title").startsWith(QStringLiteral("error org.freedesktop.DBus.Error.")));
}

void TestTraceEvents::unansweredCalls_pushTheOldestOut()
{
    Q_EMIT monitor->passed(callMessage(QStringLiteral(":1.9"), 1));
    for (quint32 serial = 2; serial <= mostWaiting + 1; ++serial) {
        Q_EMIT monitor->passed(callMessage(QStringLiteral(":1.1"), serial));
    }

    Q_EMIT monitor->passed(answerMessage(QStringLiteral(":1.9"), 1));
    Q_EMIT monitor->passed(answerMessage(QStringLiteral(":1.1"), 2));

    QCOMPARE(events.size(), mostWaiting + 2);
    QCOMPARE(textOf(events.last(), "kind"), QStringLiteral("answer"));
    QCOMPARE(events.last().value(QStringLiteral("re")).toInt(), 2);
}

void TestTraceEvents::callWithoutAnswer_waitsForNone()
{
    BusMessage lonely = callMessage(QStringLiteral(":1.9"), 2);
    lonely.isAnswerWanted = false;
    Q_EMIT monitor->passed(callMessage(QStringLiteral(":1.1"), 1));
    for (int i = 0; i < mostWaiting; ++i) {
        ++lonely.serial;
        Q_EMIT monitor->passed(lonely);
    }

    Q_EMIT monitor->passed(answerMessage(QStringLiteral(":1.1"), 1));

    QCOMPARE(events.size(), mostWaiting + 2);
    QCOMPARE(events.last().value(QStringLiteral("re")).toInt(), 1);
}

void TestTraceEvents::callOfTheBus_isReadWithItsWishForAnAnswer()
{
    Peer widget(bus.address(), QStringLiteral("widget"));
    const QString member = QStringLiteral("anything");
    QList<bool> wishes;
    connect(monitor.get(), &BusMonitor::passed, this, [&](const BusMessage &message) {
        if (message.type == BusMessage::Type::Call && message.member == member) {
            wishes.append(message.isAnswerWanted);
        }
    });

    widget.bus.send(QDBusMessage::createMethodCall(daemonName, QStringLiteral("/"), daemonInterface, member));
    call(widget.bus, daemonName, QStringLiteral("/"), daemonInterface, member);

    QTRY_COMPARE(wishes.size(), 2);
    QCOMPARE(wishes, (QList<bool>{false, true}));
    monitor->disconnect(this);
}

void TestTraceEvents::whatIsNoneOfTheDevices_isLeftOut()
{
    Peer one(bus.address(), QStringLiteral("one"));
    Peer other(bus.address(), QStringLiteral("other"));
    Answerer answerer;
    QVERIFY(other.bus.registerVirtualObject(QStringLiteral("/"), &answerer));
    QVERIFY(other.bus.registerService(QStringLiteral("com.example.other")));
    QVERIFY(simulator->daemon().start());
    QTRY_VERIFY(!events.isEmpty());
    const auto before = events.size();

    call(one.bus, QStringLiteral("com.example.other"), QStringLiteral("/"),
         QStringLiteral("com.example.Other"), QStringLiteral("talk"));
    call(one.bus, QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
         QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
    one.bus.send(QDBusMessage::createSignal(QStringLiteral("/"), QStringLiteral("com.example.Other"),
                                            QStringLiteral("said")));
    simulator->daemon().setInternetAvailable(false);

    const QString last = QStringLiteral("vorlet.daemon says internetAvailabilityChanged(false)");
    QTRY_VERIFY(!eventOf("signal", last).isEmpty());
    for (auto i = before; i < events.size(); ++i) {
        QVERIFY2(textOf(events[i], "title").contains(QStringLiteral("vorlet.daemon says")),
                 qPrintable(textOf(events[i], "title")));
    }
}

void TestTraceEvents::signal_goesFromItsSenderToItsHearers()
{
    Peer daemon(bus.address(), QStringLiteral("daemon"));
    QVERIFY(daemon.bus.registerService(daemonName));
    QVERIFY(simulator->widgetManager().start());
    QDBusMessage registered = QDBusMessage::createSignal(QStringLiteral("/"), daemonInterface,
                                                         QStringLiteral("applicationRegistered"));
    registered << QStringLiteral("clock") << QStringLiteral("app-1") << QStringLiteral("face");

    daemon.bus.send(registered);
    simulator->widgetManager().createWidget(QStringLiteral("clock"));

    const QString announced = QStringLiteral("applicationRegistered(\"clock\", \"app-1\", \"face\")");
    const QString created =
        QStringLiteral("widget.manager says newWidgetCreated(\"simulated.package\", \"clock\")");
    QTRY_VERIFY(!eventOf("signal", announced).isEmpty() && !eventOf("signal", created).isEmpty());
    QCOMPARE(textOf(eventOf("signal", announced), "from"), Lane::qwixtd);
    QCOMPARE(textOf(eventOf("signal", announced), "to"), Lane::widgets);
    QCOMPARE(textOf(eventOf("signal", announced), "widget"), QStringLiteral("clock"));
    QCOMPARE(textOf(eventOf("signal", created), "from"), Lane::device);
    QCOMPARE(textOf(eventOf("signal", created), "to"), Lane::qwixtd);
    QCOMPARE(textOf(eventOf("signal", created), "widget"), QStringLiteral("clock"));
}

void TestTraceEvents::name_comesAndGoes()
{
    auto daemon = std::make_unique<Peer>(bus.address(), QStringLiteral("daemon"));

    QVERIFY(daemon->bus.registerService(daemonName));
    QTRY_VERIFY(monitor->isOwned(daemonName));
    daemon.reset();
    QTRY_VERIFY(!monitor->isOwned(daemonName));

    QCOMPARE(events.size(), 2);
    QCOMPARE(textOf(events[0], "title"), QStringLiteral("com.qwixtd is on the bus"));
    QCOMPARE(textOf(events[1], "title"), QStringLiteral("com.qwixtd is gone from the bus"));
    QCOMPARE(textOf(events[1], "from"), Lane::qwixtd);
}

void TestTraceEvents::daemonWithAnotherName_isTheDaemon()
{
    Peer daemon(bus.address(), QStringLiteral("daemon"));
    QVERIFY(daemon.bus.registerService(QStringLiteral("com.another")));
    QVERIFY(daemon.bus.registerService(daemonName));
    QTRY_VERIFY(monitor->isOwned(daemonName));

    daemon.bus.send(
        QDBusMessage::createSignal(QStringLiteral("/"), daemonInterface, QStringLiteral("daemonDidStart")));

    QTRY_VERIFY(!eventOf("signal", QStringLiteral("daemonDidStart()")).isEmpty());
    const QJsonObject event = eventOf("signal", QStringLiteral("daemonDidStart()"));
    QCOMPARE(textOf(event, "from"), Lane::qwixtd);
    QCOMPARE(textOf(event, "service"), daemonName);
}

void TestTraceEvents::apiKey_isLeftOut_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("shown");
    QTest::newRow("key") << QStringLiteral("topsecret") << QStringLiteral("(\"***\")");
    QTest::newRow("no key") << QString::fromLatin1("") << QStringLiteral("(\"\")");
}

void TestTraceEvents::apiKey_isLeftOut()
{
    QFETCH(const QString, key);
    QFETCH(const QString, shown);
    Peer reader(bus.address(), QStringLiteral("reader"));
    QVERIFY(simulator->daemon().start());

    simulator->setApiKey(key);
    call(reader.bus, QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
         QStringLiteral("com.vorlet.daemon.general"), QStringLiteral("apiKey"));
    call(reader.bus, QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
         QStringLiteral("com.vorlet.daemon.general"), QStringLiteral("setApiKey"), {key});

    QTRY_VERIFY(!eventOf("answer", QStringLiteral("apiKey -> ") + shown).isEmpty());
    QTRY_VERIFY(!eventOf("signal", QStringLiteral("vorlet.daemon says apiKeyDidSet") + shown).isEmpty());
    QTRY_VERIFY(!eventOf("call", QStringLiteral("vorlet.daemon setApiKey") + shown).isEmpty());
    QVERIFY(key.isEmpty() || !whole().contains(key.toUtf8()));
}

void TestTraceEvents::argument_isShownAsItIs_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("text") << QVariant(QStringLiteral("<b>\n\u00fc")) << QByteArray("[\"<b>\\n\xc3\xbc\"]");
    QTest::newRow("truth") << QVariant(true) << QByteArray("[true]");
    QTest::newRow("number") << QVariant(-7) << QByteArray("[-7]");
    QTest::newRow("unsigned number") << QVariant(4294967295U) << QByteArray("[4294967295]");
    QTest::newRow("large number") << QVariant(static_cast<qlonglong>(9007199254740993))
                                  << QByteArray("[\"9007199254740993\"]");
    QTest::newRow("largest number") << QVariant(static_cast<qulonglong>(18446744073709551615ULL))
                                    << QByteArray("[\"18446744073709551615\"]");
    QTest::newRow("fraction") << QVariant(0.5) << QByteArray("[0.5]");
    QTest::newRow("bytes") << QVariant(QByteArray("\x00\xff\x41", 3)) << QByteArray("[\"00ff41\"]");
    QTest::newRow("texts") << QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b")})
                           << QByteArray("[[\"a\",\"b\"]]");
    QTest::newRow("no texts") << QVariant(QStringList()) << QByteArray("[[]]");
    QTest::newRow("map") << QVariant(QVariantMap{{QStringLiteral("k"), QVariantList{1, QStringLiteral("x")}}})
                         << QByteArray("[{\"k\":[1,\"x\"]}]");
}

void TestTraceEvents::argument_isShownAsItIs()
{
    QFETCH(const QVariant, value);
    QFETCH(const QByteArray, json);
    Peer widget(bus.address(), QStringLiteral("widget"));

    call(widget.bus, daemonName, QStringLiteral("/"), daemonInterface, QStringLiteral("anything"), {value});

    QTRY_VERIFY(!events.isEmpty());
    QCOMPARE(QJsonDocument(events[0].value(QStringLiteral("args")).toArray()).toJson(QJsonDocument::Compact),
             json);
}

void TestTraceEvents::longArgument_isCut_data()
{
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("remark");
    const QString whole(largestShown, QLatin1Char('x'));
    const QString half = whole.left(largestShown / 2);
    QStringList list;
    for (int i = 0; i < largestShown; ++i) {
        list.append(QStringLiteral("ab"));
    }
    QTest::newRow("string") << QVariantList{whole + whole} << QStringLiteral("x... (131072 characters)");
    QTest::newRow("second string") << QVariantList{half, whole} << QStringLiteral("x... (65536 characters)");
    QTest::newRow("string behind one that fills it")
        << QVariantList{whole, half} << QStringLiteral("... (32768 characters)");
    QTest::newRow("list") << QVariantList{list} << QStringLiteral("... (327681 bytes)");
}

void TestTraceEvents::longArgument_isCut()
{
    QFETCH(const QVariantList, arguments);
    QFETCH(const QString, remark);
    Peer widget(bus.address(), QStringLiteral("widget"));

    call(widget.bus, daemonName, QStringLiteral("/"), daemonInterface,
         QStringLiteral("registerQwixtApplication"), arguments);

    QTRY_VERIFY(!events.isEmpty());
    const QJsonArray shown = events[0].value(QStringLiteral("args")).toArray();
    QCOMPARE(shown.size(), arguments.size());
    QVERIFY2(shown.last().toString().endsWith(remark), qPrintable(shown.last().toString().right(100)));
    constexpr int room = largestShown + 1024;
    QVERIFY(QJsonDocument(shown).toJson(QJsonDocument::Compact).size() < room);
    QVERIFY(textOf(events[0], "title").size() < room && textOf(events[0], "widget").size() < room);
}

void TestTraceEvents::authorization_isLeftOutOfTheBytes_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("shown");
    QTest::newRow("usual") << QByteArray("Authorization: Basic c2VjcmV0") << QByteArray("Authorization: ***");
    QTest::newRow("small letters") << QByteArray("authorization: c2VjcmV0")
                                   << QByteArray("authorization: ***");
    QTest::newRow("no space") << QByteArray("AUTHORIZATION:c2VjcmV0") << QByteArray("AUTHORIZATION: ***");
    QTest::newRow("twice") << QByteArray("Authorization: c2VjcmV0\r\nAuthorization: c2VjcmV0")
                           << QByteArray("Authorization: ***\r\nAuthorization: ***");
    QTest::newRow("behind a bare line feed")
        << QByteArray("A: b\nAuthorization: c2VjcmV0") << QByteArray("A: b\nAuthorization: ***");
    QTest::newRow("other header") << QByteArray("X-Authorization-Note: kept")
                                  << QByteArray("X-Authorization-Note: kept");
}

void TestTraceEvents::authorization_isLeftOutOfTheBytes()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QByteArray, shown);
    const QByteArray next = "GET / HTTP/1.1\r\nAuthorization: c2VjcmV0\r\n\r\n";

    const QByteArray bytes =
        HttpEvents::withoutSecrets(requestOf("PUT /x HTTP/1.1\r\n" + line + "\r\nB: c", "name=a", next));

    QCOMPARE(bytes, "PUT /x HTTP/1.1\r\n" + shown + "\r\nB: c\r\n\r\nname=a");
}

void TestTraceEvents::longRequest_isCut()
{
    const QByteArray bytes =
        HttpEvents::withoutSecrets(requestOf("POST / HTTP/1.1\r\nA: b", QByteArray(1024 * 1024, 'x')));

    QCOMPARE(bytes.size(), 64 * 1024);
}

void TestTraceEvents::request_isSeenWithItsAnswer()
{
    QVERIFY(simulator->server().start(0));
    simulator->setApiKeyQuietly(QStringLiteral("topsecret"));

    ask("POST", "id=d&identifier=clock&name=Wall clock&type=face");

    QCOMPARE(events.size(), 2);
    QCOMPARE(textOf(events[0], "title"),
             QStringLiteral("POST /api/v1/qwixt/apps id=d&identifier=clock&name=Wall clock&type=face"));
    QCOMPARE(textOf(events[0], "from"), Lane::qwixtd);
    QCOMPARE(textOf(events[0], "to"), Lane::server);
    QCOMPARE(textOf(events[0], "widget"), QStringLiteral("clock"));
    QCOMPARE(textOf(events[1], "title"),
             QStringLiteral("200 {\"app_id\":\"app-1\",\"status\":\"registered\"}"));
    QCOMPARE(textOf(events[1], "bytes"),
             QStringLiteral("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 40\r\n\r\n"
                            "{\"app_id\":\"app-1\",\"status\":\"registered\"}"));
    QCOMPARE(events[1].value(QStringLiteral("re")), events[0].value(QStringLiteral("n")));
    QVERIFY(!events[1].value(QStringLiteral("failed")).toBool());
    QVERIFY(!whole().contains("topsecret") && !whole().contains(QByteArray(":topsecret").toBase64()));
}

// Both wait to be read at the same time; the bus was first.
void TestTraceEvents::request_standsBehindWhatLedToIt()
{
    Peer daemon(bus.address(), QStringLiteral("daemon"));
    QVERIFY(daemon.bus.registerService(daemonName));
    QTRY_VERIFY(monitor->isOwned(daemonName));
    events.clear();
    daemon.bus.send(
        QDBusMessage::createSignal(QStringLiteral("/"), daemonInterface, QStringLiteral("daemonDidStarted")));
    // Once the bus has answered a call, it has passed the signal on.
    daemon.bus.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));

    Q_EMIT simulator->server().received(requestOf("GET / HTTP/1.1\r\nA: b"));

    QCOMPARE(events.size(), 2);
    QCOMPARE(textOf(events[0], "kind"), QStringLiteral("signal"));
    QCOMPARE(textOf(events[1], "kind"), QStringLiteral("request"));
}

void TestTraceEvents::answerThatFails_isMarked_data()
{
    QTest::addColumn<HttpAnswer>("answer");
    QTest::addColumn<QString>("failure");
    HttpAnswer refused;
    refused.status = 404;
    refused.body = "{}";
    HttpAnswer page;
    page.body = "<html>";
    HttpAnswer created;
    created.status = 201;
    created.body = "{}";
    QTest::newRow("refused") << refused << QStringLiteral("status 404");
    QTest::newRow("no JSON") << page << QStringLiteral("the body is no JSON");
    QTest::newRow("closed") << HttpAnswer::nothing(HttpAnswer::Ending::CutOff)
                            << QStringLiteral("connection closed");
    QTest::newRow("other success") << created << QString();
}

void TestTraceEvents::answerThatFails_isMarked()
{
    QFETCH(const HttpAnswer, answer);
    QFETCH(const QString, failure);
    QVERIFY(simulator->server().start(0));
    simulator->server().queueAnswer(answer);

    ask("GET", {});

    QCOMPARE(events.size(), 2);
    QCOMPARE(textOf(events[1], "failure"), failure);
    QCOMPARE(events[1].value(QStringLiteral("failed")).toBool(), !failure.isEmpty());
    QCOMPARE(events[1].value(QStringLiteral("status")).toInt(), answer.status);
}

void TestTraceEvents::requestThatFailed_isARetryTheNextTime()
{
    QVERIFY(simulator->server().start(0));
    simulator->setApiKeyQuietly(QStringLiteral("topsecret"));
    simulator->server().failNext(1, ServerFault::withStatus(503));

    ask("POST", "id=d&identifier=a&name=a&type=t");
    ask("POST", "id=d&identifier=b&name=b&type=t");
    ask("POST", "id=d&identifier=a&name=a&type=t");
    ask("POST", "id=d&identifier=a&name=a&type=t");

    const auto retryOf = QStringLiteral("retryOf");
    QCOMPARE(events.size(), 8);
    QVERIFY(!events[0].contains(retryOf));
    QVERIFY(!events[2].contains(retryOf));
    QCOMPARE(events[4].value(retryOf), events[1].value(QStringLiteral("n")));
    QVERIFY(events[4].value(QStringLiteral("retryAfterMs")).toInt() >= 0);
    QVERIFY2(!events[6].contains(retryOf), "the one before it has succeeded");
}

void TestTraceEvents::requestsThatFailed_pushTheOldestOut()
{
    const auto request = [](int number) {
        HttpRequest failed = requestOf("PUT / HTTP/1.1", QByteArray::number(number));
        failed.number = number;
        return failed;
    };
    for (int number = 1; number <= mostWaiting + 1; ++number) {
        Q_EMIT simulator->server().answered(request(number));
    }

    for (const int number : {1, 2, mostWaiting + 1}) {
        Q_EMIT simulator->server().received(request(number));
    }

    const auto retryOf = QStringLiteral("retryOf");
    QCOMPARE(events.size(), mostWaiting + 4);
    QVERIFY(!events.at(mostWaiting + 1).contains(retryOf));
    QCOMPARE(events.at(mostWaiting + 2).value(retryOf).toInt(), 2);
    QCOMPARE(events.at(mostWaiting + 3).value(retryOf).toInt(), mostWaiting + 1);
}

void TestTraceEvents::widgetOfARequest_isFoundByItsApplication()
{
    QVERIFY(simulator->server().start(0));
    simulator->setApiKeyQuietly(QStringLiteral("topsecret"));
    ask("POST", "id=d&identifier=clock&name=n&type=t");

    ask("DELETE", "app_id=app-1&type=t");

    QCOMPARE(textOf(events[2], "widget"), QStringLiteral("clock"));
    QCOMPARE(textOf(events[3], "widget"), QStringLiteral("clock"));
}

QTEST_GUILESS_MAIN(TestTraceEvents)

#include "tst_traceevents.moc"
