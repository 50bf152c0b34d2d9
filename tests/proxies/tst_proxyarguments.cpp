#include "awkwardvalues.h"
#include "described.h"
#include "fakeservice.h"
#include "mapsenders.h"
#include "privatebus.h"
#include "proxytable.h"
#include "shapes/argument.h"

#include <QProcess>
#include <QtTest>

#include <memory>
#include <set>
#include <string>

namespace
{

// For 26 calls and the end of the process, on a machine that is busy and under the sanitizers.
constexpr int senderTimeoutMs = 20000;
constexpr int callsOfEverySender = 26;
constexpr int timesInThisProgram = 20;

const char connectionName[] = "client";

const struct {
    const char *name;
    Position position;
    const char *filled;
    const char *empty;
} positions[] = {
    {"at the top", Position::Top, R"({"last": int("1"), "value": %1})", R"({"last": int("1")})"},
    {"in a map", Position::InMap, R"({"last": int("1"), "value": {"value": %1}})",
     R"({"last": int("1"), "value": {}})"},
    {"in a list", Position::InList, R"({"last": int("1"), "value": [%1]})",
     R"({"last": int("1"), "value": []})"},
};

QString repeated(const char *text, int times)
{
    return QString::fromLatin1(text).repeated(times);
}

QString described(const RecordedCall &call)
{
    return call.member + QLatin1Char(' ') + described(call.arguments.value(call.arguments.size() - 1));
}

} // namespace

/// What becomes of a map that holds more than D-Bus can carry. Each is sent by a program of its own, because
/// what is to be shown is that this program goes on.
class TestProxyArguments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void senders_areAllMembersThatSendAMap();
    void awkwardValue_isSentAsWhatItStandsForOrLeftOut_data();
    void awkwardValue_isSentAsWhatItStandsForOrLeftOut();
    void awkwardValue_leavesNoMemoryBehind_data();
    void awkwardValue_leavesNoMemoryBehind();
    void nestedValue_isCutWhereItIsTooDeep_data();
    void nestedValue_isCutWhereItIsTooDeep();
    void mapThatWasRead_canBeChangedAndWrittenBack_data();
    void mapThatWasRead_canBeChangedAndWrittenBack();

private:
    // Runs the sending program; its words of complaint, empty when it ended well.
    QString failureOf(const QStringList &words);
    QStringList mapsThatArrived();
    // What a call from this program is answered.
    QVariantList answered();

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
};

void TestProxyArguments::initTestCase()
{
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(bus.address(), QStringList{QStringLiteral("vorlet.daemon"),
                                                                    QStringLiteral("widget.manager"),
                                                                    QStringLiteral("com.btnotifications")});
    QVERIFY(fake->isRunning());
    QVERIFY(QDBusConnection::connectToBus(bus.address(), QLatin1String(connectionName)).isConnected());
}

void TestProxyArguments::cleanupTestCase()
{
    fake.reset();
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

void TestProxyArguments::init()
{
    fake->answerWith({receivedMap(), receivedNests()});
    fake->takeCalls();
}

QString TestProxyArguments::failureOf(const QStringList &words)
{
    // Its end comes amid events that the bus library's own thread still posts, and which are then never
    // freed: leaks are looked for in this program.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(MAP_SENDING_PROGRAM), QStringList{bus.address()} + words);
    if (program.waitForFinished(senderTimeoutMs) && program.exitStatus() == QProcess::NormalExit &&
        program.exitCode() == 0) {
        return {};
    }
    const QString last = QString::fromUtf8(program.readAllStandardError()).right(600);
    return QStringLiteral("%1, code %2: %3").arg(program.errorString()).arg(program.exitCode()).arg(last);
}

// Member and map of each call, without those by which the program looked whether it is answered.
QStringList TestProxyArguments::mapsThatArrived()
{
    QStringList maps;
    const QList<RecordedCall> calls = fake->takeCalls();
    for (const RecordedCall &call : calls) {
        if (call.signature.endsWith(QStringLiteral("a{sv}"))) {
            maps.append(described(call));
        }
    }
    return maps;
}

QVariantList TestProxyArguments::answered()
{
    const QDBusConnection connection{QLatin1String(connectionName)};
    return connection
        .call(QDBusMessage::createMethodCall(QStringLiteral("vorlet.daemon"), QStringLiteral("/"),
                                             QStringLiteral("test.device"), QStringLiteral("ask")))
        .arguments();
}

void TestProxyArguments::senders_areAllMembersThatSendAMap()
{
    const QDBusConnection connection{QLatin1String(connectionName)};
    std::set<std::string> listed;
    std::set<std::string> sending;

    for (const MapSender &sender : mapSenders(connection)) {
        listed.insert(sender.member);
    }
    for (const ProxyTable &table : everyProxyTable(connection)) {
        for (const Member &member : table.members) {
            // A list of variants would need the same care.
            if (QByteArray(member.signature).contains('v')) {
                sending.insert(member.name);
            }
        }
    }

    QCOMPARE(listed, sending);
    QCOMPARE(2 * int(sending.size()), callsOfEverySender);
}

void TestProxyArguments::awkwardValue_isSentAsWhatItStandsForOrLeftOut_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("map");

    for (const AwkwardValue &each : awkwardValues({})) {
        const QString arrives = QString::fromUtf8(each.arrives);
        for (const auto &place : positions) {
            QTest::addRow("%s %s", each.name, place.name)
                << QString::fromUtf8(each.name) << int(place.position)
                << (arrives.isEmpty() ? QString::fromLatin1(place.empty)
                                      : QString::fromLatin1(place.filled).arg(arrives));
        }
    }
}

void TestProxyArguments::awkwardValue_isSentAsWhatItStandsForOrLeftOut()
{
    QFETCH(QString, name);
    QFETCH(int, position);
    QFETCH(QString, map);

    QCOMPARE(failureOf({name, QStringLiteral("0"), QString::number(position)}), QString());

    const QStringList maps = mapsThatArrived();
    QCOMPARE(maps.size(), callsOfEverySender);
    for (const QString &each : maps) {
        QCOMPARE(each.section(QLatin1Char(' '), 1), map);
    }
}

void TestProxyArguments::awkwardValue_leavesNoMemoryBehind_data()
{
    QTest::addColumn<int>("position");

    for (const auto &place : positions) {
        QTest::newRow(place.name) << int(place.position);
    }
}

// In this program, which the leak sanitizer looks at when it ends, and again and again, so that no stale
// pointer hides every leak.
void TestProxyArguments::awkwardValue_leavesNoMemoryBehind()
{
    QFETCH(int, position);
    const QString key = QStringLiteral("value");
    const QVariantList received = answered();
    const auto nests = qdbus_cast<QVariantMap>(received.value(1));
    std::vector<AwkwardValue> values = awkwardValues(qdbus_cast<QVariantMap>(received.value(0)));
    for (const QVariant &nest : nests) {
        values.push_back({"nest", nest, "itself"});
    }
    QCOMPARE(nests.size(), 4);

    for (const AwkwardValue &each : values) {
        QVariantMap sent;
        for (int i = 0; i < timesInThisProgram; ++i) {
            sent = VorletProxiesPrivate::Argument::map(placed(each.value, Position(position)));
        }

        QCOMPARE(sent.value(QStringLiteral("last")), QVariant(1));
        const bool isSent = Position(position) != Position::Top || !each.arrives.isEmpty();
        QVERIFY2(sent.contains(key) == isSent, each.name);
    }
}

void TestProxyArguments::nestedValue_isCutWhereItIsTooDeep_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("levels");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("arrives");

    const auto maps = [](int levels, const char *innermost) {
        return repeated("{\"a\": ", levels) + QLatin1String(innermost) + repeated("}", levels);
    };
    const auto lists = [](int levels, const char *innermost) {
        return repeated("[", levels) + QLatin1String(innermost) + repeated("]", levels);
    };
    const auto row = [](const char *name, const char *kind, int levels, Position position,
                        const QString &arrives) {
        QTest::newRow(name) << QString::fromLatin1(kind) << levels << int(position) << arrives;
    };
    const char *const seven = "int(\"7\")";
    // Of 60 containers the argument takes 3, a map in it 3 more, a list in it 2.
    row("maps that just fit", "maps", 19, Position::Top, maps(19, seven));
    row("one map too many", "maps", 20, Position::Top, maps(18, "{}"));
    row("a hundred maps", "maps", 100, Position::Top, maps(18, "{}"));
    row("maps in a map that just fit", "maps", 18, Position::InMap, maps(18, seven));
    row("a hundred maps in a map", "maps", 100, Position::InMap, maps(17, "{}"));
    row("maps in a list that just fit", "maps", 18, Position::InList, maps(18, seven));
    row("a hundred maps in a list", "maps", 100, Position::InList, maps(18, "{}"));
    row("lists that just fit", "lists", 28, Position::Top, lists(28, seven));
    row("a hundred lists", "lists", 100, Position::Top, lists(28, "[]"));
    row("a hundred lists in a map", "lists", 100, Position::InMap, lists(26, "[]"));
    row("a hundred lists in a list", "lists", 100, Position::InList, lists(27, "[]"));
    row("variants that just fit", "variants", 57, Position::Top, QString::fromLatin1(seven));
    row("one variant too many", "variants", 58, Position::Top, QString());
    row("a hundred variants in a map", "variants", 100, Position::InMap, QString());
    row("a hundred variants in a list", "variants", 100, Position::InList, QString());
    // As many as arrived at the top, and no more.
    row("received maps", "nest of maps", 0, Position::Top, maps(19, seven));
    row("received maps in a map", "nest of maps", 0, Position::InMap, QString());
    row("received maps in a list", "nest of maps", 0, Position::InList, QString());
    row("received lists", "nest of lists", 0, Position::Top, lists(28, seven));
    row("received lists in a map", "nest of lists", 0, Position::InMap, QString());
    row("received lists in a list", "nest of lists", 0, Position::InList, QString());
    row("received lists around an empty map", "nest around an empty map", 0, Position::Top, lists(28, "{}"));
    row("received structures", "nest of structures", 0, Position::Top,
        repeated("(", 28) + QLatin1String(seven) + repeated(")", 28));
    row("received structures in a map", "nest of structures", 0, Position::InMap, QString());
    row("received structures in a list", "nest of structures", 0, Position::InList, QString());
    row("a thousand maps", "maps", 1000, Position::Top, maps(18, "{}"));
}

void TestProxyArguments::nestedValue_isCutWhereItIsTooDeep()
{
    QFETCH(QString, kind);
    QFETCH(int, levels);
    QFETCH(int, position);
    QFETCH(QString, arrives);
    const auto &place = positions[position];

    QCOMPARE(failureOf({kind, QString::number(levels), QString::number(position)}), QString());

    const QString map =
        arrives.isEmpty() ? QString::fromLatin1(place.empty) : QString::fromLatin1(place.filled).arg(arrives);
    const QStringList maps = mapsThatArrived();
    QCOMPARE(maps.size(), callsOfEverySender);
    for (const QString &each : maps) {
        QCOMPARE(each.section(QLatin1Char(' '), 1), map);
    }
}

void TestProxyArguments::mapThatWasRead_canBeChangedAndWrittenBack_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<int>("source");

    for (const MapSender &sender : mapSenders(QDBusConnection{QLatin1String(connectionName)})) {
        QTest::newRow(sender.member) << QString::fromLatin1(sender.member) << int(sender.source);
    }
}

void TestProxyArguments::mapThatWasRead_canBeChangedAndWrittenBack()
{
    QFETCH(QString, member);
    QFETCH(int, source);
    const struct {
        QVariant answer;
        const char *arrives;
    } sources[] = {
        {receivedMap(),
         R"({"changed": bool("true"), "map": {"a": int("1")}, "structure": (int("1"), QString("a")), "variants": [int("7")]})"},
        // A structure has no generic form there.
        {receivedMap(),
         R"({"changed": bool("true"), "map": {"a": int("1")}, "variants": [[[[[int("7")]]]]]})"},
        {QByteArray(R"({"null": null, "list": [1, null, {"deep": null}], "real": 0.5})"),
         R"({"changed": bool("true"), "list": [qlonglong("1"), {}], "real": double("0.5")})"},
    };
    fake->answerWith({sources[source].answer});

    QCOMPARE(failureOf({QStringLiteral("write-back"), member}), QString());

    QCOMPARE(mapsThatArrived(),
             QStringList{member + QLatin1Char(' ') + QString::fromLatin1(sources[source].arrives)});
}

QTEST_GUILESS_MAIN(TestProxyArguments)
#include "tst_proxyarguments.moc"
