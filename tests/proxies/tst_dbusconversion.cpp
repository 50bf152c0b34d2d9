#include "dbusconversion.h"
#include "described.h"
#include "fakeservice.h"
#include "messagecapture.h"
#include "privatebus.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QtTest>

#include <memory>

namespace
{

using TextMap = QMap<QString, QString>;
using NumberMap = QMap<int, int>;
using PathMap = QMap<QDBusObjectPath, QString>;
using NestedNumbers = QList<QList<int>>;

// A D-Bus structure (si).
struct Pair {
    QString name;
    int number = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Pair &pair)
{
    argument.beginStructure();
    argument << pair.name << pair.number;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Pair &pair)
{
    argument.beginStructure();
    argument >> pair.name >> pair.number;
    argument.endStructure();
    return argument;
}

QVariant path(const char *text)
{
    return QVariant::fromValue(QDBusObjectPath(QLatin1String(text)));
}

template <typename T>
QVariant typed(const T &value)
{
    return QVariant::fromValue(value);
}

const QString unsupportedLine = QStringLiteral("DBusNotificationContext: unsupported dbus argument type");
const QString expectedMapLine =
    QStringLiteral("WindowManagerDbusGeneralProxy: expected map argument but passed non map");
const QString expectedListLine =
    QStringLiteral("WindowManagerDbusGeneralProxy: expected list argument but passed non map");

} // namespace

Q_DECLARE_METATYPE(Pair)
Q_DECLARE_METATYPE(TextMap)
Q_DECLARE_METATYPE(NumberMap)
Q_DECLARE_METATYPE(NestedNumbers)
Q_DECLARE_METATYPE(QList<Pair>)

/// Every value makes a real trip over a bus before it is read.
class TestDBusConversion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void value_isReadByBothFamilies_data();
    void value_isReadByBothFamilies();
    void structure_isKeptUndecodedInsideContainers();
    void structure_isRefusedByTheNestingReader();
    void emptyArgument_isRefusedByEveryReader();
    void argument_canBeReadTwice();
    void sameKeyTwice_laterEntryWins();
    void entriesReader_decodesNothing();
    void entriesReader_refusesOthersWithoutALine();
    void plainValue_isConvertedInside_data();
    void plainValue_isConvertedInside();
    void containers_areWrittenAsVariants_data();
    void containers_areWrittenAsVariants();

private:
    QVariant overTheBus(const QVariant &value);

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
    std::unique_ptr<QDBusConnection> connection;
};

void TestDBusConversion::initTestCase()
{
    qDBusRegisterMetaType<Pair>();
    qDBusRegisterMetaType<QList<Pair>>();
    qDBusRegisterMetaType<TextMap>();
    qDBusRegisterMetaType<NumberMap>();
    qDBusRegisterMetaType<PathMap>();
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<NestedNumbers>();
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(bus.address(), QStringList{QStringLiteral("test.values")});
    QVERIFY(fake->isRunning());
    connection = std::make_unique<QDBusConnection>(
        QDBusConnection::connectToBus(bus.address(), QStringLiteral("reader")));
    QVERIFY(connection->isConnected());
}

void TestDBusConversion::cleanupTestCase()
{
    fake.reset();
    connection.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("reader"));
}

QVariant TestDBusConversion::overTheBus(const QVariant &value)
{
    fake->answerWith({value});
    const QDBusMessage reply = connection->call(
        QDBusMessage::createMethodCall(QStringLiteral("test.values"), QStringLiteral("/"),
                                       QStringLiteral("test.values"), QStringLiteral("get")));
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

void TestDBusConversion::value_isReadByBothFamilies_data()
{
    QTest::addColumn<QVariant>("sent");
    QTest::addColumn<QVariant>("nested");
    QTest::addColumn<QVariant>("flattened");

    const auto row = [](const char *name, const QVariant &sent, const QVariant &nested,
                        const QVariant &flattened) { QTest::newRow(name) << sent << nested << flattened; };
    const auto same = [row](const char *name, const QVariant &sent, const QVariant &read) {
        row(name, sent, read, read);
    };
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    const QString c = QStringLiteral("c");

    same("empty map", QVariantMap(), QVariantMap());
    same("empty array", list({}), list({}));
    same("map of basic values", QVariantMap{{a, 1}, {b, QStringLiteral("text")}, {c, 0.5}},
         QVariantMap{{a, 1}, {b, QStringLiteral("text")}, {c, 0.5}});
    same("every basic type",
         list({true, QVariant::fromValue(uchar(7)), QVariant::fromValue(short(-7)),
               QVariant::fromValue(ushort(7)), -7, 7U, -7LL, 7ULL, 0.5, QString()}),
         list({true, QVariant::fromValue(uchar(7)), QVariant::fromValue(short(-7)),
               QVariant::fromValue(ushort(7)), -7, 7U, -7LL, 7ULL, 0.5, QStringLiteral("")}));
    same("map in map", QVariantMap{{a, QVariantMap{{b, QVariantMap{{c, 1}}}}}},
         QVariantMap{{a, QVariantMap{{b, QVariantMap{{c, 1}}}}}});
    same("empty map in map", QVariantMap{{a, QVariantMap()}}, QVariantMap{{a, QVariantMap()}});
    same("array in map", QVariantMap{{a, list({1, 2})}}, QVariantMap{{a, list({1, 2})}});
    same("map in array", list({QVariantMap{{a, 1}}, 2}), list({QVariantMap{{a, 1}}, 2}));
    row("array in array", list({list({1, 2})}), list({list({1, 2})}), list({1, 2}));
    row("arrays among others", list({0, list({1, list({2, list({3})})}), 4}),
        list({0, list({1, list({2, list({3})})}), 4}), list({0, 1, 2, 3, 4}));
    row("empty array in array", list({list({}), 1}), list({list({}), 1}), list({1}));
    row("arrays in array in map", QVariantMap{{a, list({list({1}), list({2})})}},
        QVariantMap{{a, list({list({1}), list({2})})}}, QVariantMap{{a, list({1, 2})}});
    row("map in array in array", list({list({QVariantMap{{a, list({list({1})})}}})}),
        list({list({QVariantMap{{a, list({list({1})})}}})}), list({QVariantMap{{a, list({1})}}}));
    same("object path in map", QVariantMap{{a, path("/one")}}, QVariantMap{{a, QStringLiteral("/one")}});
    same("object path in array", list({path("/one"), path("/two")}),
         list({QStringLiteral("/one"), QStringLiteral("/two")}));
    same("string list in map", QVariantMap{{a, QStringList{b, c}}}, QVariantMap{{a, QStringList{b, c}}});
    same("string list in array", list({QStringList{b, c}}), list({QStringList{b, c}}));
    same("empty string list", list({QStringList()}), list({QStringList()}));
    same("byte array", QVariantMap{{a, QByteArray("\x00\xff", 2)}},
         QVariantMap{{a, QByteArray("\x00\xff", 2)}});
    same("empty byte array in array", list({QByteArray("")}), list({QByteArray("")}));

    // Containers of other element types: read as what they hold, and above all read to their end.
    same("map of texts", typed(TextMap{{a, b}, {c, c}}), QVariantMap{{a, b}, {c, c}});
    same("map of texts in map", QVariantMap{{a, typed(TextMap{{b, c}})}},
         QVariantMap{{a, QVariantMap{{b, c}}}});
    same("map with number keys", QVariantMap{{a, typed(NumberMap{{1, 2}, {3, 4}})}},
         QVariantMap{{a, QVariantMap{{QStringLiteral("1"), 2}, {QStringLiteral("3"), 4}}}});
    same("map with path keys",
         QVariantMap{{a, typed(PathMap{{QDBusObjectPath(QStringLiteral("/one")), b},
                                       {QDBusObjectPath(QStringLiteral("/two")), c}})}},
         QVariantMap{{a, QVariantMap{{QStringLiteral("/one"), b}, {QStringLiteral("/two"), c}}}});
    same("array of numbers", typed(QList<int>{1, 2, 3}), list({1, 2, 3}));
    row("array of numbers in array", list({typed(QList<int>{1, 2}), 3}), list({list({1, 2}), 3}),
        list({1, 2, 3}));
    row("array of arrays of numbers", typed(NestedNumbers{{1, 2}, {3}}), list({list({1, 2}), list({3})}),
        list({1, 2, 3}));
    row("object paths in map",
        QVariantMap{{a, typed(QList<QDBusObjectPath>{QDBusObjectPath(QStringLiteral("/one"))})}},
        QVariantMap{{a, list({QStringLiteral("/one")})}}, QVariantMap{{a, list({QStringLiteral("/one")})}});
}

void TestDBusConversion::value_isReadByBothFamilies()
{
    QFETCH(QVariant, sent);
    QFETCH(QVariant, nested);
    QFETCH(QVariant, flattened);
    const bool isMap = flattened.userType() == QMetaType::QVariantMap;
    const QVariant received = overTheBus(sent);
    QCOMPARE(received.userType(), qMetaTypeId<QDBusArgument>());
    const auto argument = received.value<QDBusArgument>();
    const MessageCapture capture;

    const QVariant fromArgument = convertDBusArgument(argument);
    const QVariant fromVariant = convertDBusVariant(received);
    const QVariant own = isMap ? QVariant(parseDBusMap(argument)) : QVariant(parseDBusList(argument));
    const QStringList linesOfGood = capture.debugTexts();
    const QVariant other = isMap ? QVariant(parseDBusList(argument)) : QVariant(parseDBusMap(argument));

    QCOMPARE(described(fromArgument), described(nested));
    QCOMPARE(described(fromVariant), described(nested));
    QCOMPARE(described(own), described(flattened));
    QCOMPARE(linesOfGood, QStringList());
    QCOMPARE(described(other), described(isMap ? QVariant(QVariantList()) : QVariant(QVariantMap())));
    QCOMPARE(capture.debugTexts(), QStringList{isMap ? expectedListLine : expectedMapLine});
}

void TestDBusConversion::structure_isKeptUndecodedInsideContainers()
{
    const QString key = QStringLiteral("pair");
    const Pair pair{QStringLiteral("name"), 7};
    const auto number = [](const QVariant &undecoded) { return qdbus_cast<Pair>(undecoded).number; };
    const auto isUndecoded = [](const QVariant &value) {
        return value.userType() == qMetaTypeId<QDBusArgument>();
    };
    const auto map = overTheBus(QVariantMap{{key, typed(pair)}}).value<QDBusArgument>();
    const auto array = overTheBus(list({typed(pair), 1})).value<QDBusArgument>();
    const auto plainArray = overTheBus(typed(QList<Pair>{pair, pair})).value<QDBusArgument>();
    const MessageCapture capture;

    const QVariant inMap = parseDBusMap(map).value(key);
    const QVariantList inArray = parseDBusList(array);
    const QVariantList inPlainArray = parseDBusList(plainArray);

    QVERIFY(isUndecoded(inMap));
    QCOMPARE(number(inMap), 7);
    QCOMPARE(inArray.size(), 2);
    QVERIFY(isUndecoded(inArray.first()));
    QCOMPARE(number(inArray.first()), 7);
    QCOMPARE(inArray.last(), QVariant(1));
    QCOMPARE(inPlainArray.size(), 2);
    QCOMPARE(capture.debugTexts(), QStringList());
}

void TestDBusConversion::structure_isRefusedByTheNestingReader()
{
    const Pair pair{QStringLiteral("name"), 7};
    const QVariant structure = overTheBus(typed(pair));
    const auto array = overTheBus(list({typed(pair), 1})).value<QDBusArgument>();
    const MessageCapture capture;

    const QVariant fromArgument = convertDBusArgument(structure.value<QDBusArgument>());
    const QStringList linesOfArgument = capture.debugTexts();
    const QVariant fromVariant = convertDBusVariant(structure);
    const QStringList linesOfBoth = capture.debugTexts();
    const QVariant fromArray = convertDBusArgument(array);

    QVERIFY(!fromArgument.isValid());
    QCOMPARE(linesOfArgument, QStringList{unsupportedLine});
    QVERIFY(!fromVariant.isValid());
    QCOMPARE(linesOfBoth.size(), 2);
    QCOMPARE(described(fromArray), described(list({QVariant(), 1})));
    QCOMPARE(capture.debugTexts().mid(2), QStringList{unsupportedLine});
}

void TestDBusConversion::emptyArgument_isRefusedByEveryReader()
{
    const QDBusArgument empty;
    const MessageCapture capture;

    const QVariantMap entries = readDBusEntries(empty);
    const QStringList linesOfEntries = capture.debugTexts();
    const QVariant converted = convertDBusArgument(empty);
    const QVariantMap map = parseDBusMap(empty);
    const QVariantList array = parseDBusList(empty);

    QCOMPARE(entries, QVariantMap());
    QCOMPARE(linesOfEntries, QStringList());
    QVERIFY(!converted.isValid());
    QCOMPARE(map, QVariantMap());
    QCOMPARE(array, QVariantList());
    QCOMPARE(capture.debugTexts(), (QStringList{unsupportedLine, expectedMapLine, expectedListLine}));
}

void TestDBusConversion::argument_canBeReadTwice()
{
    const QVariantMap map{{QStringLiteral("a"), list({list({1})})}};
    const auto argument = overTheBus(map).value<QDBusArgument>();
    QCOMPARE(convertDBusArgument(argument), QVariant(map));

    const QVariant again = convertDBusArgument(argument);
    const QVariantMap parsed = parseDBusMap(argument);
    const QVariantMap parsedAgain = parseDBusMap(argument);
    const QVariantMap entries = readDBusEntries(argument);

    QCOMPARE(again, QVariant(map));
    QCOMPARE(parsed.size(), 1);
    QCOMPARE(parsedAgain.size(), 1);
    QCOMPARE(entries.size(), 1);
}

void TestDBusConversion::sameKeyTwice_laterEntryWins()
{
    const QString key = QStringLiteral("key");
    QDBusArgument doubled;
    doubled.beginMap(qMetaTypeId<QString>(), qMetaTypeId<QDBusVariant>());
    for (const int value : {1, 2}) {
        doubled.beginMapEntry();
        doubled << key << QDBusVariant(value);
        doubled.endMapEntry();
    }
    doubled.endMap();
    const auto argument = overTheBus(QVariant::fromValue(doubled)).value<QDBusArgument>();

    const QVariant converted = convertDBusArgument(argument);
    const QVariantMap parsed = parseDBusMap(argument);
    const QVariantMap entries = readDBusEntries(argument);

    const QVariantMap later{{key, 2}};
    QCOMPARE(converted, QVariant(later));
    QCOMPARE(parsed, later);
    QCOMPARE(entries, later);
}

void TestDBusConversion::entriesReader_decodesNothing()
{
    const QString basic = QStringLiteral("basic");
    const QString inner = QStringLiteral("inner");
    const QString objectPath = QStringLiteral("path");
    const auto argument =
        overTheBus(QVariantMap{{basic, 1}, {inner, QVariantMap{{basic, 2}}}, {objectPath, path("/one")}})
            .value<QDBusArgument>();

    const QVariantMap entries = readDBusEntries(argument);

    QCOMPARE(entries.keys(), (QStringList{basic, inner, objectPath}));
    QCOMPARE(entries.value(basic), QVariant(1));
    QCOMPARE(entries.value(objectPath).value<QDBusObjectPath>().path(), QStringLiteral("/one"));
    QCOMPARE(entries.value(inner).userType(), qMetaTypeId<QDBusArgument>());
    QCOMPARE(qdbus_cast<QVariantMap>(entries.value(inner)), (QVariantMap{{basic, 2}}));
}

void TestDBusConversion::entriesReader_refusesOthersWithoutALine()
{
    const auto array = overTheBus(list({1})).value<QDBusArgument>();
    const MessageCapture capture;

    const QVariantMap entries = readDBusEntries(array);

    QCOMPARE(entries, QVariantMap());
    QCOMPARE(capture.debugTexts(), QStringList());
}

void TestDBusConversion::plainValue_isConvertedInside_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("converted");

    const QString a = QStringLiteral("a");
    QTest::newRow("invalid") << QVariant() << QVariant();
    QTest::newRow("text") << QVariant(a) << QVariant(a);
    QTest::newRow("bytes") << QVariant(QByteArray("a")) << QVariant(QByteArray("a"));
    QTest::newRow("string list") << QVariant(QStringList{a}) << QVariant(QStringList{a});
    QTest::newRow("path") << path("/one") << QVariant(QStringLiteral("/one"));
    QTest::newRow("map") << QVariant(QVariantMap{{a, path("/one")}})
                         << QVariant(QVariantMap{{a, QStringLiteral("/one")}});
    QTest::newRow("list of one type") << QVariant::fromValue(QList<int>{1, 2}) << list({1, 2});
    QTest::newRow("map of one type") << QVariant::fromValue(TextMap{{a, QStringLiteral("b")}})
                                     << QVariant(QVariantMap{{a, QStringLiteral("b")}});
    QTest::newRow("list") << list({list({path("/one"), a}), 1})
                          << list({list({QStringLiteral("/one"), a}), 1});
}

void TestDBusConversion::plainValue_isConvertedInside()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant, converted);
    const MessageCapture capture;

    const QVariant result = convertDBusVariant(value);

    QCOMPARE(described(result), described(converted));
    QCOMPARE(capture.debugTexts(), QStringList());
}

void TestDBusConversion::containers_areWrittenAsVariants_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("signature");

    const QVariantMap map{{QStringLiteral("b"), 1}, {QStringLiteral("a"), list({QVariantMap(), 2})}};
    QTest::newRow("map") << QVariant(map) << QStringLiteral("a{sv}");
    QTest::newRow("list") << list({map, list({1}), QStringLiteral("text")}) << QStringLiteral("av");
    QTest::newRow("empty map") << QVariant(QVariantMap()) << QStringLiteral("a{sv}");
    QTest::newRow("empty list") << list({}) << QStringLiteral("av");
}

void TestDBusConversion::containers_areWrittenAsVariants()
{
    QFETCH(QVariant, value);
    QFETCH(QString, signature);
    registerDBusContainers();
    registerDBusContainers();

    const auto argument = overTheBus(value).value<QDBusArgument>();

    QCOMPARE(argument.currentSignature(), signature);
    QCOMPARE(described(convertDBusArgument(argument)), described(value));
}

QTEST_GUILESS_MAIN(TestDBusConversion)
#include "tst_dbusconversion.moc"
