#include "daemon/devicestate.h"
#include "described.h"
#include "shapes/json.h"

#include <QBitArray>
#include <QCborArray>
#include <QCborMap>
#include <QCborValue>
#include <QDBusObjectPath>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QtTest>
#include <QUuid>

#include <cmath>
#include <limits>
#include <vector>

namespace Json = VorletProxiesPrivate::Json;

namespace
{

// The text of a state with every key, without the update.
const char stateText[] =
    R"({"device_name":"kitchen","serial_number":"s-1","hw_version":"rev 2","sw_version":"3.1","mode":"demo",)"
    R"("server_id":"17","model":"big","uboot_version":"u 1","kernel_version":"k 5","apps_auto_update_enabled":true)";

Daemon::DeviceState stateFrom(const QByteArray &text)
{
    return Daemon::DeviceState::fromMap(Json::parse(text).toMap());
}

template <typename T>
QVariant of(const T &value)
{
    return QVariant::fromValue(value);
}

QByteArray nestedArrays(int depth)
{
    return QByteArray(depth, '[') + QByteArray(depth, ']');
}

QVariant nestedMaps(int depth)
{
    QVariant value = 1;
    for (int i = 0; i < depth; ++i) {
        value = QVariantMap{{QStringLiteral("a"), value}};
    }
    return value;
}

} // namespace

/// JSON text and the records made from it.
class TestProxyValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void jsonText_isParsed_data();
    void jsonText_isParsed();
    void value_isWrittenAsCompactJson_data();
    void value_isWrittenAsCompactJson();
    void valueThatJsonCannotCarry_isRefused_data();
    void valueThatJsonCannotCarry_isRefused();
    void deeplyNestedText_isRefusedOrParsed();
    void asMuchNesting_isWrittenAsIsRead();

    void stateWithEveryKey_fillsTheRecord();
    void stateWithoutUpdate_hasNoPendingUpdate_data();
    void stateWithoutUpdate_hasNoPendingUpdate();
    void stateWithMissingKeys_leavesFieldsEmpty();
    void record_isWrittenBackWithTheSameKeys_data();
    void record_isWrittenBackWithTheSameKeys();
};

void TestProxyValues::jsonText_isParsed_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QVariant>("value");

    const auto row = [](const QByteArray &text, const QVariant &value) {
        QTest::newRow(text) << text << value;
    };
    row("{}", QVariantMap());
    row("[]", QVariant(QVariantList()));
    row(" { \"a\" : [ 1 , null ] }\n",
        QVariantMap{{QStringLiteral("a"), QVariantList{1LL, QVariant::fromValue(nullptr)}}});
    row("[[1]]", QVariant(QVariantList{QVariant(QVariantList{1LL})}));
    row("5", 5LL);
    row("-0.5", -0.5);
    row("9223372036854775807", std::numeric_limits<qlonglong>::max());
    row("true", true);
    row("null", QVariant::fromValue(nullptr));
    row("\"text\"", QStringLiteral("text"));
    row("\"\"", QStringLiteral(""));

    row("", QVariant());
    row(" ", QVariant());
    row("text", QVariant());
    row("{", QVariant());
    row("{\"a\":}", QVariant());
    row("1,2", QVariant());
    row("1],[2", QVariant());
    row("{}{}", QVariant());
    row("[1,]", QVariant());
    row("'a'", QVariant());
}

void TestProxyValues::jsonText_isParsed()
{
    QFETCH(QByteArray, text);
    QFETCH(QVariant, value);

    const QVariant parsed = Json::parse(text);

    QCOMPARE(described(parsed), described(value));
}

void TestProxyValues::value_isWrittenAsCompactJson_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QByteArray>("text");

    const QString a = QStringLiteral("a");
    const auto row = [](const char *name, const QVariant &value, const QByteArray &text) {
        QTest::newRow(name) << value << text;
    };
    row("map", QVariantMap{{QStringLiteral("b"), 1}, {a, QVariantList{true, a}}},
        "{\"a\":[true,\"a\"],\"b\":1}");
    row("empty map", QVariantMap(), "{}");
    row("hash", QVariantHash{{a, 1}}, "{\"a\":1}");
    row("list", QVariant(QVariantList{1, QVariant(QVariantList{2})}), "[1,[2]]");
    row("empty list", QVariant(QVariantList()), "[]");
    row("string list", QStringList{a, a}, "[\"a\",\"a\"]");
    row("string", QStringLiteral("\u00e9\"\n"), "\"\xc3\xa9\\\"\\n\"");
    row("null string", QString(), "\"\"");
    row("bytes", QByteArray("\xc3\xa9"), "\"\xc3\xa9\"");
    row("nothing", QVariant(), "null");
    row("null", QVariant::fromValue(nullptr), "null");
    row("true", true, "true");
    row("int", -7, "-7");
    row("unsigned", 4000000000U, "4000000000");
    row("byte", QVariant::fromValue(uchar(200)), "200");
    row("short", QVariant::fromValue(short(-5)), "-5");
    row("long", std::numeric_limits<qlonglong>::max(), "9223372036854775807");
    row("beyond a double's integers", 9007199254740993LL, "9007199254740993");
    row("unsigned long", 18446744073709551615ULL, "18446744073709551615");
    row("double", 0.25, "0.25");
    row("whole double", 3.0, "3");
    row("float", 0.5F, "0.5");
    row("zero byte", QByteArray("a\0b", 3), "\"a\\u0000b\"");
    row("zero character", QString(QChar(0)), "\"\\u0000\"");
    row("signed char", of(static_cast<signed char>(-3)), "-3");
    row("char", of('c'), "\"c\"");
    row("character", of(QChar(u'c')), "\"c\"");
    row("enumerator", of(Qt::Vertical), "2");
    row("uuid", QUuid(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11), "\"{00000001-0002-0003-0405-060708090a0b}\"");
    row("JSON object", QJsonObject{{a, QJsonArray{1, 0.5, QJsonValue()}}}, "{\"a\":[1,0.5,null]}");
    row("JSON array", QJsonArray{true, QJsonObject()}, "[true,{}]");
    row("JSON value", of(QJsonValue(a)), "\"a\"");
    row("JSON number", of(QJsonValue(5)), "5");
    row("JSON null", of(QJsonValue()), "null");
    row("JSON undefined", of(QJsonValue(QJsonValue::Undefined)), "null");
    row("JSON document", of(QJsonDocument(QJsonArray{1})), "[1]");
    row("CBOR map", of(QCborMap{{a, nullptr}}), "{\"a\":null}");
    row("CBOR value", of(QCborValue(QCborArray{1, a})), "[1,\"a\"]");
    row("list of numbers", of(QList<int>{1, 2}), "[1,2]");
    row("list of floats", of(QList<float>{0.5F}), "[0.5]");
    row("list of bytes", of(QByteArrayList{"a", QByteArray()}), "[\"a\",\"\"]");
    row("standard vector", of(std::vector<bool>{true, false}), "[true,false]");
    row("list of maps", of(QList<QVariantMap>{{{a, 1}}, {}}), "[{\"a\":1},{}]");
    row("map of strings", of(QMap<QString, QString>{{a, a}}), "{\"a\":\"a\"}");
    row("map of lists", of(QMap<QString, QVariantList>{{a, {1, QVariant()}}}), "{\"a\":[1,null]}");
    row("map by number", of(QMap<int, double>{{1, 0.5}}), "{\"1\":0.5}");
    row("hash of maps", of(QHash<QString, QVariantMap>{{a, {{a, 1}}}}), "{\"a\":{\"a\":1}}");
    row("mix",
        QVariantMap{{a, QVariantList{QJsonObject{{a, 1}}, of(QList<QVariantMap>{{{a, of(QList<int>{1})}}}),
                                     of(QMap<QString, QString>{{a, a}}), of(QJsonValue(0.5))}}},
        "{\"a\":[{\"a\":1},[{\"a\":[1]}],{\"a\":\"a\"},0.5]}");
    row("url", QUrl(QStringLiteral("http://example.com/")), "\"http://example.com/\"");
}

void TestProxyValues::value_isWrittenAsCompactJson()
{
    QFETCH(QVariant, value);
    QFETCH(QByteArray, text);
    bool ok = false;

    const QByteArray written = Json::write(value, &ok);
    const QByteArray writtenUnasked = Json::write(value);

    QCOMPARE(written, text);
    QVERIFY(ok);
    QCOMPARE(writtenUnasked, text);
}

void TestProxyValues::valueThatJsonCannotCarry_isRefused_data()
{
    QTest::addColumn<QVariant>("value");

    const QString a = QStringLiteral("a");
    const QVariant path = QVariant::fromValue(QDBusObjectPath(QStringLiteral("/one")));
    QTest::newRow("not a number") << QVariant(std::numeric_limits<double>::quiet_NaN());
    QTest::newRow("infinite") << QVariant(std::numeric_limits<double>::infinity());
    QTest::newRow("infinite float") << QVariant(std::numeric_limits<float>::infinity());
    QTest::newRow("object path") << path;
    QTest::newRow("bit array") << QVariant(QBitArray(1));
    QTest::newRow("JSON object with no number")
        << QVariant(QJsonObject{{a, std::numeric_limits<double>::infinity()}});
    QTest::newRow("list of doubles with no number")
        << of(QList<double>{std::numeric_limits<double>::quiet_NaN()});
    QTest::newRow("in a map") << QVariant(QVariantMap{{a, 1}, {QStringLiteral("b"), path}});
    QTest::newRow("in a list in a map") << QVariant(QVariantMap{{a, QVariantList{1, path}}});
}

void TestProxyValues::valueThatJsonCannotCarry_isRefused()
{
    QFETCH(QVariant, value);
    bool ok = true;

    const QByteArray written = Json::write(value, &ok);
    const QByteArray writtenUnasked = Json::write(value);

    QCOMPARE(written, QByteArray());
    QVERIFY(!ok);
    QCOMPARE(writtenUnasked, QByteArray());
}

void TestProxyValues::deeplyNestedText_isRefusedOrParsed()
{
    const QVariant deep = Json::parse(nestedArrays(1000));
    const QVariant tooDeep = Json::parse(nestedArrays(100000));

    QVERIFY(deep.isValid());
    QVERIFY(!tooDeep.isValid());
}

void TestProxyValues::asMuchNesting_isWrittenAsIsRead()
{
    const QVariant deepest = Json::parse(nestedArrays(Json::deepestNesting));
    bool arraysOk = false;
    bool mapsOk = true;

    const QByteArray text = Json::write(deepest, &arraysOk);
    const QByteArray tooDeep = Json::write(nestedMaps(Json::deepestNesting + 1), &mapsOk);

    QVERIFY(!Json::parse(nestedArrays(Json::deepestNesting + 1)).isValid());
    QCOMPARE(text, nestedArrays(Json::deepestNesting));
    QVERIFY(arraysOk);
    QCOMPARE(tooDeep, QByteArray());
    QVERIFY(!mapsOk);
    QVERIFY(Json::parse(Json::write(nestedMaps(Json::deepestNesting))).isValid());
}

void TestProxyValues::stateWithEveryKey_fillsTheRecord()
{
    const QByteArray text =
        QByteArray(stateText) + R"(,"update_available":{"version":"3.2","status":"loaded"}})";

    const Daemon::DeviceState state = stateFrom(text);

    QCOMPARE(state.deviceName, QStringLiteral("kitchen"));
    QCOMPARE(state.serialNumber, QStringLiteral("s-1"));
    QCOMPARE(state.hardwareVersion, QStringLiteral("rev 2"));
    QCOMPARE(state.softwareVersion, QStringLiteral("3.1"));
    QCOMPARE(state.mode, QStringLiteral("demo"));
    QCOMPARE(state.serverId, QStringLiteral("17"));
    QCOMPARE(state.model, QStringLiteral("big"));
    QCOMPARE(state.ubootVersion, QStringLiteral("u 1"));
    QCOMPARE(state.kernelVersion, QStringLiteral("k 5"));
    QVERIFY(state.appsAutoUpdateEnabled);
    QVERIFY(state.pendingUpdate.has_value());
    QCOMPARE(state.pendingUpdate->version, QStringLiteral("3.2"));
    QCOMPARE(state.pendingUpdate->status, QStringLiteral("loaded"));
}

void TestProxyValues::stateWithoutUpdate_hasNoPendingUpdate_data()
{
    QTest::addColumn<QByteArray>("ending");
    QTest::newRow("no key") << QByteArray("}");
    QTest::newRow("null") << QByteArray(",\"update_available\":null}");
    QTest::newRow("no object") << QByteArray(",\"update_available\":\"3.2\"}");
}

void TestProxyValues::stateWithoutUpdate_hasNoPendingUpdate()
{
    QFETCH(QByteArray, ending);

    const Daemon::DeviceState state = stateFrom(stateText + ending);

    QCOMPARE(state.deviceName, QStringLiteral("kitchen"));
    QVERIFY(!state.pendingUpdate.has_value());
    QVERIFY(state.toMap().contains(QStringLiteral("update_available")));
    QVERIFY(state.toMap().value(QStringLiteral("update_available")).isNull());
}

void TestProxyValues::stateWithMissingKeys_leavesFieldsEmpty()
{
    const QByteArray text = R"({"model":"big","update_available":{"version":"3.2"}})";

    const Daemon::DeviceState state = stateFrom(text);

    QCOMPARE(state.model, QStringLiteral("big"));
    QVERIFY(state.deviceName.isEmpty());
    QVERIFY(state.kernelVersion.isEmpty());
    QVERIFY(!state.appsAutoUpdateEnabled);
    QVERIFY(state.pendingUpdate.has_value());
    QVERIFY(state.pendingUpdate->status.isEmpty());
}

void TestProxyValues::record_isWrittenBackWithTheSameKeys_data()
{
    QTest::addColumn<QByteArray>("ending");
    QTest::newRow("update") << QByteArray(R"(,"update_available":{"version":"3.2","status":"loaded"}})");
    QTest::newRow("no update") << QByteArray(R"(,"update_available":null})");
}

void TestProxyValues::record_isWrittenBackWithTheSameKeys()
{
    QFETCH(QByteArray, ending);
    const QVariantMap map = Json::parse(stateText + ending).toMap();
    QCOMPARE(map.size(), 11);

    const QVariantMap written = Daemon::DeviceState::fromMap(map).toMap();

    QCOMPARE(written, map);
}

QTEST_GUILESS_MAIN(TestProxyValues)
#include "tst_proxyvalues.moc"
