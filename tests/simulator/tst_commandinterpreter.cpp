#include "certificates.h"
#include "commandinterpreter.h"
#include "commandwords.h"
#include "devicesimulator.h"
#include "httpsclient.h"
#include "privatebus.h"
#include "tracetext.h"

#include <QtTest>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QRegularExpression>

#include <memory>

namespace
{
const QByteArray secret = "topsecret";
const QList<QByteArray> usual{"Accept: application/json",
                              "Authorization: Basic " + (":" + secret).toBase64()};
} // namespace

class TestCommandInterpreter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void words_areSplit_data();
    void words_areSplit();
    void openQuote_isRefused();
    void help_listsEveryCommandThatIsAskedFor();
    void emptyLine_hasNoAnswer();
    void malformedLine_isAnsweredWithItsReason_data();
    void malformedLine_isAnsweredWithItsReason();
    void key_isGivenToDeviceAndServer();
    void keyThatIsNotNamed_isMadeUp();
    void clearedKey_isGoneFromTheDevice();
    void serverKey_isTheServersAlone();
    void remoteId_isSet();
    void remoteId_isCleared();
    void internet_goesAndComes_data();
    void internet_goesAndComes();
    void widget_isCreated();
    void widget_isDeleted();
    void service_isStopped_data();
    void service_isStopped();
    void service_isStarted_data();
    void service_isStarted();
    void note_standsInTheTrace();
    void applications_areAddedAndListed();
    void application_isRemoved();
    void faultCommand_changesTheNextAnswers_data();
    void faultCommand_changesTheNextAnswers();
    void delayCommand_holdsAnswersUntilHeal();
    void lastingFault_endsWithHeal();
    void widgetCommand_callsTheDaemon_data();
    void widgetCommand_callsTheDaemon();
    void quit_isAnnounced();
    void status_describesTheDevice();

    void trace_showsBusCalls();
    void trace_showsRequests();
    void trace_showsAFailedHandshake();
    void trace_staysOneLine_data();
    void trace_staysOneLine();
    void trace_neverShowsTheKey();

private:
    QString type(const QString &line);
    HttpsClient::Result send(const QByteArray &method, const QByteArray &body = {});
    QDBusMessage askDaemon(const QString &member);
    bool isRunning(bool daemon) const;

    PrivateBus bus;
    std::unique_ptr<DeviceSimulator> device;
    std::unique_ptr<CommandInterpreter> interpreter;
    QStringList trace;
};

void TestCommandInterpreter::initTestCase()
{
    QVERIFY(bus.start());
}

void TestCommandInterpreter::init()
{
    trace.clear();
    device = std::make_unique<DeviceSimulator>(bus.address());
    connect(device.get(), &DeviceSimulator::traced, [this](const QString &line) { trace.append(line); });
    QVERIFY(device->watcher().start());
    QVERIFY(device->server().start(Certificates::shared().serverCertificate(),
                                   Certificates::shared().serverKey()));
    QVERIFY(device->daemon().start());
    QVERIFY(device->widgetManager().start());
    interpreter = std::make_unique<CommandInterpreter>(*device);
}

void TestCommandInterpreter::cleanup()
{
    interpreter.reset();
    device.reset();
}

QString TestCommandInterpreter::type(const QString &line)
{
    return interpreter->execute(line);
}

HttpsClient::Result TestCommandInterpreter::send(const QByteArray &method, const QByteArray &body)
{
    const QByteArray url = "https://" + device->server().host().toUtf8() + "/api/v1/qwixt/apps";
    return HttpsClient(Certificates::shared().authority().toUtf8()).send(method, url, usual, body);
}

QDBusMessage TestCommandInterpreter::askDaemon(const QString &member)
{
    const QString name = QStringLiteral("asking");
    QDBusMessage reply =
        QDBusConnection::connectToBus(bus.address(), name)
            .call(QDBusMessage::createMethodCall(QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
                                                 QStringLiteral("com.vorlet.daemon.general"), member));
    QDBusConnection::disconnectFromBus(name);
    return reply;
}

bool TestCommandInterpreter::isRunning(bool daemon) const
{
    return daemon ? device->daemon().isRunning() : device->widgetManager().isRunning();
}

void TestCommandInterpreter::words_areSplit_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");
    QTest::newRow("spaces and tabs") << QStringLiteral("  a \t b  ")
                                     << QStringList{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("nothing") << QStringLiteral("   ") << QStringList();
    QTest::newRow("quoted") << QStringLiteral("a \"b c\"")
                            << QStringList{QStringLiteral("a"), QStringLiteral("b c")};
    QTest::newRow("empty word") << QStringLiteral("a \"\" b")
                                << QStringList{QStringLiteral("a"), QString(), QStringLiteral("b")};
    QTest::newRow("glued") << QStringLiteral("a\"b c\"d") << QStringList{QStringLiteral("ab cd")};
    QTest::newRow("escapes") << QStringLiteral("\"a\\\"b\\nc\\\\\"")
                             << QStringList{QStringLiteral("a\"b\nc\\")};
    QTest::newRow("trailing backslash") << QStringLiteral("a\\") << QStringList{QStringLiteral("a\\")};
}

void TestCommandInterpreter::words_areSplit()
{
    QFETCH(const QString, line);
    QFETCH(const QStringList, words);
    QStringList found;

    const bool isSplit = splitCommandWords(line, found);

    QVERIFY(isSplit);
    QCOMPARE(found, words);
}

void TestCommandInterpreter::openQuote_isRefused()
{
    QStringList words;

    const bool isSplit = splitCommandWords(QStringLiteral("a \"b"), words);

    QVERIFY(!isSplit);
}

void TestCommandInterpreter::help_listsEveryCommandThatIsAskedFor()
{
    const QStringList names{
        QStringLiteral("set-key"),       QStringLiteral("clear-key"),     QStringLiteral("server-key"),
        QStringLiteral("set-remote-id"), QStringLiteral("internet"),      QStringLiteral("clear-remote-id"),
        QStringLiteral("create-widget"), QStringLiteral("delete-widget"), QStringLiteral("start-service"),
        QStringLiteral("stop-service"),  QStringLiteral("list"),          QStringLiteral("add-app"),
        QStringLiteral("remove-app"),    QStringLiteral("fail"),          QStringLiteral("delay"),
        QStringLiteral("close"),         QStringLiteral("no-json"),       QStringLiteral("heal"),
        QStringLiteral("register"),      QStringLiteral("update"),        QStringLiteral("delete"),
        QStringLiteral("status"),        QStringLiteral("quit"),          QStringLiteral("help")};

    const QString help = type(QStringLiteral("help"));

    for (const QString &name : names) {
        QVERIFY2(help.contains(QStringLiteral("  %1 ").arg(name)), qPrintable(name));
    }
}

void TestCommandInterpreter::emptyLine_hasNoAnswer()
{
    const auto spaces = QStringLiteral("  ");

    const QString answer = type(spaces);

    QCOMPARE(answer, QString());
}

void TestCommandInterpreter::malformedLine_isAnsweredWithItsReason_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("answer");
    QTest::newRow("unknown") << QStringLiteral("frob 1")
                             << QStringLiteral("error: no such command: \"frob\" (try help)");
    QTest::newRow("open quote") << QStringLiteral("register u \"n")
                                << QStringLiteral("error: a quote is left open");
    QTest::newRow("too few") << QStringLiteral("register u n")
                             << QStringLiteral("error: usage: register UUID NAME TYPE");
    QTest::newRow("too many") << QStringLiteral("list all") << QStringLiteral("error: usage: list");
    QTest::newRow("empty key") << QStringLiteral("set-key \"\"")
                               << QStringLiteral("error: an empty key is cleared with clear-key");
    QTest::newRow("internet") << QStringLiteral("internet maybe")
                              << QStringLiteral("error: \"maybe\" is not on or off");
    QTest::newRow("service") << QStringLiteral("stop-service bus")
                             << QStringLiteral("error: \"bus\" is not daemon, widget-manager or qwixtd");
    QTest::newRow("start service") << QStringLiteral("start-service bus")
                                   << QStringLiteral(
                                          "error: \"bus\" is not daemon, widget-manager or qwixtd");
    QTest::newRow("no daemon to start")
        << QStringLiteral("start-service qwixtd")
        << QStringLiteral("error: this simulator was given no program to start (--qwixtd)");
    QTest::newRow("no daemon to stop") << QStringLiteral("stop-service qwixtd")
                                       << QStringLiteral("error: this simulator did not start it (--qwixtd)");
    QTest::newRow("count") << QStringLiteral("fail some 503")
                           << QStringLiteral("error: \"some\" is not a number of answers or \"always\"");
    QTest::newRow("count zero") << QStringLiteral("close 0")
                                << QStringLiteral("error: \"0\" is not a number of answers or \"always\"");
    QTest::newRow("status") << QStringLiteral("fail 1 100")
                            << QStringLiteral("error: \"100\" is not a status from 200 to 599");
    QTest::newRow("delay") << QStringLiteral("delay 1 -5")
                           << QStringLiteral("error: \"-5\" is not a number of milliseconds up to 3600000");
    QTest::newRow("widget") << QStringLiteral("delete-widget w9")
                            << QStringLiteral("error: no such widget: \"w9\"");
    QTest::newRow("application") << QStringLiteral("remove-app a9")
                                 << QStringLiteral("error: no such application: \"a9\"");
}

void TestCommandInterpreter::malformedLine_isAnsweredWithItsReason()
{
    QFETCH(const QString, line);
    QFETCH(const QString, answer);

    const QString answered = type(line);

    QCOMPARE(answered, answer);
}

void TestCommandInterpreter::key_isGivenToDeviceAndServer()
{
    QCOMPARE(send("GET").status, 401);

    const QString answer = type(QStringLiteral("set-key topsecret"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(send("GET").status, 200);
    QCOMPARE(askDaemon(QStringLiteral("apiKey")).arguments(), QVariantList{QStringLiteral("topsecret")});
}

void TestCommandInterpreter::keyThatIsNotNamed_isMadeUp()
{
    const QString first = type(QStringLiteral("set-key"));
    const QString firstKey = device->daemon().apiKey();
    type(QStringLiteral("set-key"));

    QCOMPARE(first, QStringLiteral("ok"));
    QVERIFY(firstKey.size() >= 32);
    QVERIFY(device->daemon().apiKey() != firstKey);
    QVERIFY(!trace.join(QLatin1Char('\n')).contains(firstKey));
}

void TestCommandInterpreter::clearedKey_isGoneFromTheDevice()
{
    type(QStringLiteral("set-key topsecret"));

    const QString answer = type(QStringLiteral("clear-key"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(askDaemon(QStringLiteral("apiKey")).arguments(), QVariantList{QString::fromLatin1("")});
}

void TestCommandInterpreter::serverKey_isTheServersAlone()
{
    type(QStringLiteral("set-key topsecret"));

    const QString answer = type(QStringLiteral("server-key other"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(send("GET").status, 401);
    QCOMPARE(device->daemon().apiKey(), QStringLiteral("topsecret"));
}

void TestCommandInterpreter::remoteId_isSet()
{
    QCOMPARE(device->daemon().remoteId(), QString());

    const QString answer = type(QStringLiteral("set-remote-id d9"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(askDaemon(QStringLiteral("remoteId")).arguments(), QVariantList{QStringLiteral("d9")});
}

void TestCommandInterpreter::remoteId_isCleared()
{
    type(QStringLiteral("set-remote-id d9"));

    const QString answer = type(QStringLiteral("clear-remote-id"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(device->daemon().remoteId(), QString());
}

void TestCommandInterpreter::internet_goesAndComes_data()
{
    QTest::addColumn<bool>("isAvailable");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("isAvailableThen");
    const auto off = QStringLiteral("internet off");
    const auto on = QStringLiteral("internet on");
    QTest::newRow("goes") << true << off << QStringLiteral("ok") << false;
    QTest::newRow("is gone already") << false << off << QStringLiteral("ok: it was off already") << false;
    QTest::newRow("comes") << false << on << QStringLiteral("ok") << true;
}

void TestCommandInterpreter::internet_goesAndComes()
{
    QFETCH(const bool, isAvailable);
    QFETCH(const QString, line);
    QFETCH(const QString, answer);
    QFETCH(const bool, isAvailableThen);
    device->daemon().setInternetAvailable(isAvailable);

    const QString answered = type(line);

    QCOMPARE(answered, answer);
    QCOMPARE(device->daemon().isInternetAvailable(), isAvailableThen);
}

void TestCommandInterpreter::widget_isCreated()
{
    QCOMPARE(device->widgetManager().widgets(), QStringList());

    const QString answer = type(QStringLiteral("create-widget w1"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(device->widgetManager().widgets(), QStringList{QStringLiteral("w1")});
}

void TestCommandInterpreter::widget_isDeleted()
{
    type(QStringLiteral("create-widget w1"));

    const QString answer = type(QStringLiteral("delete-widget w1"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(device->widgetManager().widgets(), QStringList());
}

void TestCommandInterpreter::service_isStopped_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<bool>("isDaemon");
    QTest::newRow("daemon") << QStringLiteral("daemon") << true;
    QTest::newRow("widget manager") << QStringLiteral("widget-manager") << false;
}

void TestCommandInterpreter::service_isStopped()
{
    QFETCH(const QString, word);
    QFETCH(const bool, isDaemon);
    const auto line = QStringLiteral("stop-service %1").arg(word);

    const QString first = type(line);
    const QString second = type(line);

    QCOMPARE(first, QStringLiteral("ok"));
    QCOMPARE(second, QStringLiteral("ok: it was stopped already"));
    QVERIFY(!isRunning(isDaemon));
    QVERIFY(isRunning(!isDaemon));
}

void TestCommandInterpreter::service_isStarted_data()
{
    service_isStopped_data();
}

void TestCommandInterpreter::service_isStarted()
{
    QFETCH(const QString, word);
    QFETCH(const bool, isDaemon);
    const auto line = QStringLiteral("start-service %1").arg(word);
    type(QStringLiteral("stop-service %1").arg(word));
    QVERIFY(!isRunning(isDaemon));

    const QString first = type(line);
    const QString second = type(line);

    QCOMPARE(first, QStringLiteral("ok"));
    QCOMPARE(second, QStringLiteral("ok: it was running already"));
    QVERIFY(isRunning(isDaemon));
}

void TestCommandInterpreter::note_standsInTheTrace()
{
    const QString answer = type(QStringLiteral("note \"two\\nlines\""));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(trace.last().mid(13), QStringLiteral("note   two\\nlines"));
}

void TestCommandInterpreter::applications_areAddedAndListed()
{
    type(QStringLiteral("set-remote-id d9"));

    const QString first = type(QStringLiteral("add-app u1 \"My clock\" t"));
    const QString second = type(QStringLiteral("add-app u2 Rain t other"));
    const QString list = type(QStringLiteral("list"));

    QCOMPARE(first, QStringLiteral("ok: added as app-1"));
    QCOMPARE(second, QStringLiteral("ok: added as app-2"));
    QCOMPARE(list, QStringLiteral("the server holds 2 application(s)\n"
                                  "  app-1 device \"d9\" identifier \"u1\" name \"My clock\" type \"t\"\n"
                                  "  app-2 device \"other\" identifier \"u2\" name \"Rain\" type \"t\""));
}

void TestCommandInterpreter::application_isRemoved()
{
    type(QStringLiteral("add-app u1 \"My clock\" t"));
    type(QStringLiteral("add-app u2 Rain t other"));

    const QString answer = type(QStringLiteral("remove-app app-1"));

    QCOMPARE(answer, QStringLiteral("ok"));
    QCOMPARE(device->server().applications().size(), 1);
    QCOMPARE(device->server().applications().at(0).appId, QStringLiteral("app-2"));
}

void TestCommandInterpreter::faultCommand_changesTheNextAnswers_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("status") << QStringLiteral("fail 2 503") << 503
                            << QByteArray("{\"error\":\"simulated failure\"}");
    QTest::newRow("closed") << QStringLiteral("close 2") << 0 << QByteArray();
    QTest::newRow("no json") << QStringLiteral("no-json 2") << 200
                             << QByteArray("<html>this is no JSON</html>");
}

void TestCommandInterpreter::faultCommand_changesTheNextAnswers()
{
    QFETCH(const QString, line);
    QFETCH(const int, status);
    QFETCH(const QByteArray, body);
    type(QStringLiteral("set-key topsecret"));

    const QString answer = type(line);

    QVERIFY(answer.startsWith(QStringLiteral("ok: next 2 answer(s): ")));
    for (int number = 0; number < 2; ++number) {
        const HttpsClient::Result result = send("GET");
        QCOMPARE(result.status, status);
        QCOMPARE(result.body, body);
    }
    QCOMPARE(send("GET").body, QByteArray("{\"apps\":[]}"));
}

void TestCommandInterpreter::delayCommand_holdsAnswersUntilHeal()
{
    type(QStringLiteral("set-key topsecret"));
    QString answerToHeal;
    connect(device.get(), &DeviceSimulator::traced, device.get(), [&](const QString &line) {
        if (line.contains(QStringLiteral("-> held back for 60000 ms"))) {
            answerToHeal = type(QStringLiteral("heal"));
        }
    });

    const QString answerToDelay = type(QStringLiteral("delay 1 60000"));
    const HttpsClient::Result result = send("GET");

    QCOMPARE(answerToDelay, QStringLiteral("ok: next 1 answer(s): 60000 ms late"));
    QCOMPARE(result.status, 200);
    QCOMPARE(answerToHeal, QStringLiteral("ok"));
}

void TestCommandInterpreter::lastingFault_endsWithHeal()
{
    type(QStringLiteral("set-key topsecret"));
    QCOMPARE(type(QStringLiteral("fail always 500")),
             QStringLiteral("ok: all answers until heal: status 500"));
    QCOMPARE(send("GET").status, 500);
    QCOMPARE(send("GET").status, 500);

    type(QStringLiteral("heal"));

    QCOMPARE(send("GET").status, 200);
}

void TestCommandInterpreter::widgetCommand_callsTheDaemon_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("call");
    QTest::newRow("register") << QStringLiteral("register u1 \"My clock\" t")
                              << QStringLiteral("registerQwixtApplication(\"u1\", \"My clock\", \"t\")");
    QTest::newRow("update") << QStringLiteral("update a1 u1 n \"\"")
                            << QStringLiteral("updateQwixtApplication(\"a1\", \"u1\", \"n\", \"\")");
    QTest::newRow("delete") << QStringLiteral("delete a1 u1 t")
                            << QStringLiteral("deleteQwixtApplication(\"a1\", \"u1\", \"t\")");
}

void TestCommandInterpreter::widgetCommand_callsTheDaemon()
{
    QFETCH(const QString, line);
    QFETCH(const QString, call);
    // Nobody owns the daemon's name on this bus; the trace shows the call and the bus's answer.
    const QString expected =
        QStringLiteral(" widget %1 -> error org.freedesktop.DBus.Error.ServiceUnknown").arg(call);

    const QString answer = type(line);

    QCOMPARE(answer, QStringLiteral("ok"));
    QTRY_VERIFY2(!trace.filter(expected).isEmpty(), qPrintable(trace.join(QLatin1Char('\n'))));
}

void TestCommandInterpreter::quit_isAnnounced()
{
    const QSignalSpy quit(interpreter.get(), &CommandInterpreter::quitRequested);

    const QString answer = type(QStringLiteral("quit"));

    QCOMPARE(answer, QStringLiteral("bye"));
    QCOMPARE(quit.count(), 1);
}

void TestCommandInterpreter::status_describesTheDevice()
{
    type(QStringLiteral("set-key topsecret"));
    type(QStringLiteral("set-remote-id d9"));
    type(QStringLiteral("create-widget w1"));
    type(QStringLiteral("stop-service widget-manager"));

    const QString status = type(QStringLiteral("status"));

    QVERIFY(status.startsWith(QStringLiteral("daemon: running, widget-manager: stopped, com.qwixtd: absent\n"
                                             "API key: ***, remote id: \"d9\"")));
    QVERIFY(status.contains(QStringLiteral("widgets: [\"w1\"]")));
    QVERIFY(status.contains(device->server().host()));
}

void TestCommandInterpreter::trace_showsBusCalls()
{
    type(QStringLiteral("set-remote-id d9"));
    device->daemon().failCallsOf(QStringLiteral("serial"), QStringLiteral("com.example.Broken"),
                                 QStringLiteral("no"));

    askDaemon(QStringLiteral("remoteId"));
    askDaemon(QStringLiteral("serial"));

    const QRegularExpression expected(QStringLiteral(
        "^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d bus    vorlet\\.daemon remoteId\\(\\) -> \\(\"d9\"\\)$"));
    QTRY_COMPARE(trace.filter(expected).size(), 1);
    QTRY_COMPARE(
        trace.filter(QStringLiteral("bus    vorlet.daemon serial() -> error com.example.Broken: no")).size(),
        1);
}

void TestCommandInterpreter::trace_showsRequests()
{
    type(QStringLiteral("set-key topsecret"));

    send("POST", "id=d&identifier=u&name=n&type=t");
    type(QStringLiteral("close 1"));
    send("GET");

    QTRY_COMPARE(
        trace
            .filter(QStringLiteral(" http   POST /api/v1/qwixt/apps id=d&identifier=u&name=n&type=t -> 200 "
                                   "{\"app_id\":\"app-1\",\"status\":\"registered\"}"))
            .size(),
        1);
    QTRY_COMPARE(trace.filter(QStringLiteral(" http   GET /api/v1/qwixt/apps -> connection closed")).size(),
                 1);
}

void TestCommandInterpreter::trace_showsAFailedHandshake()
{
    const QByteArray withoutTls = "http://" + device->server().host().toUtf8() + '/';

    HttpsClient(Certificates::shared().authority().toUtf8()).send("GET", withoutTls, {});

    QTRY_COMPARE(
        trace.filter(QRegularExpression(QStringLiteral("^[0-9:.]+ http   TLS handshake failed: .+$"))).size(),
        1);
}

void TestCommandInterpreter::trace_staysOneLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("line feed") << QStringLiteral("a\nb") << QStringLiteral("a\\nb");
    QTest::newRow("carriage return") << QStringLiteral("a\rb") << QStringLiteral("a\\rb");
    QTest::newRow("tab") << QStringLiteral("a\tb") << QStringLiteral("a\\tb");
    QTest::newRow("escape") << QStringLiteral("a\x1b[31m") << QStringLiteral("a\\u{1b}[31m");
    QTest::newRow("line separator") << QString(QChar(0x2028)) << QStringLiteral("\\u{2028}");
    QTest::newRow("next line") << QString(QChar(0x85)) << QStringLiteral("\\u{85}");
    QTest::newRow("umlaut") << QString(QChar(0xfc)) << QString(QChar(0xfc));
    QTest::newRow("long") << QString(1000, QLatin1Char('x'))
                          << QString(400, QLatin1Char('x')) + QStringLiteral("... (1000 characters)");
}

void TestCommandInterpreter::trace_staysOneLine()
{
    QFETCH(const QString, text);
    QFETCH(const QString, shown);

    const QString printable = TraceText::printable(text);
    device->watcher().registerApplication(text, QString(), QString());

    QCOMPARE(printable, shown);
    QTRY_COMPARE(trace.filter(QStringLiteral("registerQwixtApplication(\"%1\"").arg(shown)).size(), 1);
    for (const QString &line : trace) {
        QVERIFY(!line.contains(QLatin1Char('\n')));
    }
}

void TestCommandInterpreter::trace_neverShowsTheKey()
{
    type(QStringLiteral("set-key topsecret"));

    askDaemon(QStringLiteral("apiKey"));
    send("GET");
    type(QStringLiteral("server-key other"));
    send("GET");

    QTRY_COMPARE(trace.filter(QStringLiteral("GET /api")).size(), 2);
    QTRY_COMPARE(trace.filter(QStringLiteral("apiKey() -> (\"***\")")).size(), 1);
    QTRY_COMPARE(trace.filter(QStringLiteral("says apiKeyDidSet(\"***\")")).size(), 1);
    const QString all = trace.join(QLatin1Char('\n')) + type(QStringLiteral("status"));
    QVERIFY(!all.contains(QString::fromLatin1(secret)));
    QVERIFY(!all.contains(QString::fromLatin1((":" + secret).toBase64())));
}

QTEST_GUILESS_MAIN(TestCommandInterpreter)
#include "tst_commandinterpreter.moc"
