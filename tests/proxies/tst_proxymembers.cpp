#include "catalogue.h"
#include "described.h"
#include "fakeservice.h"
#include "messagecapture.h"
#include "privatebus.h"
#include "proxytable.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>

namespace
{

const char connectionName[] = "client";

// What a shape makes of good, strange and missing answers.
struct Expectation {
    /// The catalogue's word for the result; commands and asynchronous calls have none.
    std::string result;
    QVariant goodReply;
    QVariant good;
    /// What comes back for an error, for a reply without arguments and, for JSON, for text that is none.
    QVariant empty;
    /// What QVariant's conversion makes of the number 42 and of an array in place of the expected type.
    QVariant fromNumber;
    QVariant fromArray;
    /// The readers of maps and lists complain of a value of another kind.
    QStringList wrongTypeLines;
};

QVariant list(const QVariantList &values)
{
    return QVariant(values);
}

QVariantMap emptyDeviceState()
{
    QVariantMap map;
    for (const char *key : {"device_name", "serial_number", "hw_version", "sw_version", "mode", "server_id",
                            "model", "uboot_version", "kernel_version"}) {
        map.insert(QLatin1String(key), QString());
    }
    map.insert(QStringLiteral("apps_auto_update_enabled"), false);
    map.insert(QStringLiteral("update_available"), QVariant::fromValue(nullptr));
    return map;
}

QVariantMap fullDeviceState()
{
    QVariantMap map = emptyDeviceState();
    map[QStringLiteral("device_name")] = QStringLiteral("kitchen");
    map[QStringLiteral("server_id")] = QStringLiteral("17");
    map[QStringLiteral("apps_auto_update_enabled")] = true;
    map[QStringLiteral("update_available")] =
        QVariantMap{{QStringLiteral("version"), QStringLiteral("2.0")},
                    {QStringLiteral("status"), QStringLiteral("ready")}};
    return map;
}

Expectation expectation(Shape shape)
{
    const QString key = QStringLiteral("key");
    const QString path = QStringLiteral("/some/path");
    const QVariant pathValue = QVariant::fromValue(QDBusObjectPath(path));
    const QStringList texts{QStringLiteral("one"), QStringLiteral("two")};
    const QStringList mapLine{
        QStringLiteral("WindowManagerDbusGeneralProxy: expected map argument but passed non map")};
    const QStringList listLine{
        QStringLiteral("WindowManagerDbusGeneralProxy: expected list argument but passed non map")};
    switch (shape) {
    case Shape::Command:
        return {{}, {}, {}, {}, {}, {}, {}};
    case Shape::Text:
        return {"QString", QStringLiteral("an answer"), QStringLiteral("an answer"),
                QString(), QStringLiteral("42"),        QString(),
                {}};
    case Shape::Flag:
        return {"bool", true, true, false, true, false, {}};
    case Shape::Number:
        return {"int", -7, -7, 0, 42, 0, {}};
    case Shape::LongNumber:
        return {"qlonglong", 5000000000LL, 5000000000LL, 0LL, 42LL, 0LL, {}};
    case Shape::Real:
        return {"double", 0.25, 0.25, 0.0, 42.0, 0.0, {}};
    case Shape::SmallReal:
        return {"float", 0.25, 0.25F, 0.0F, 42.0F, 0.0F, {}};
    case Shape::Texts:
        return {"QStringList", texts, texts, QStringList(), QStringList(), QStringList(), {}};
    case Shape::Json:
        // Any JSON value, so the text of a number is one.
        return {"JSON-parsed replies",
                QByteArray("\"an answer\""),
                QStringLiteral("an answer"),
                QVariant(),
                42LL,
                QVariant(),
                {}};
    case Shape::JsonMap:
        return {"JSON map",
                QByteArray(R"({"key": [5000000000, 2.5, "text", null, true, {}]})"),
                QVariantMap{{key, list({5000000000LL, 2.5, QStringLiteral("text"),
                                        QVariant::fromValue(nullptr), true, QVariantMap()})}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::JsonIntegers:
        return {"JSON map",
                QByteArray(R"({"a": 8589934592, "b": 2.75, "c": null})"),
                QVariantMap{{QStringLiteral("a"), 8589934592LL},
                            {QStringLiteral("b"), 3LL},
                            {QStringLiteral("c"), QVariant::fromValue(nullptr)}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::JsonList:
        return {"JSON list",
                QByteArray("[[1, 2], {\"key\": \"\xc3\xa9\"}]"),
                list({list({1LL, 2LL}), QVariantMap{{key, QStringLiteral("\u00e9")}}}),
                list({}),
                list({}),
                list({}),
                {}};
    case Shape::DeviceState:
        return {"device state",
                QByteArray(R"({"device_name":"kitchen","server_id":"17","apps_auto_update_enabled":true,)"
                           R"("update_available":{"version":"2.0","status":"ready"}})"),
                fullDeviceState(),
                emptyDeviceState(),
                emptyDeviceState(),
                emptyDeviceState(),
                {}};
    case Shape::Map:
        return {"parseDBusMap",
                QVariantMap{{key, list({list({1}), 2})}, {QStringLiteral("path"), pathValue}},
                QVariantMap{{key, list({1, 2})}, {QStringLiteral("path"), path}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                mapLine};
    case Shape::List:
        return {"parseDBusList",
                list({list({1, list({2})}), pathValue}),
                list({1, 2, path}),
                list({}),
                list({}),
                list({1}),
                listLine};
    case Shape::Entries:
        return {"one level",
                QVariantMap{{key, 1}, {QStringLiteral("other"), QStringLiteral("text")}},
                QVariantMap{{key, 1}, {QStringLiteral("other"), QStringLiteral("text")}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::ConvertedTexts:
        return {"convertDBusVariant, then QStringList", texts, texts, QStringList(), QStringList(),
                QStringList{QStringLiteral("1")},       {}};
    case Shape::ConvertedList:
        return {"convertDBusVariant, then list",
                list({list({1}), pathValue}),
                list({list({1}), path}),
                list({}),
                list({}),
                list({1}),
                {}};
    case Shape::ConvertedMap:
        return {"structured",
                QVariantMap{{key, list({list({1})})}},
                QVariantMap{{key, list({list({1})})}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::Asynchronous:
        return {{}, 42, 42, QVariant(), 42, QVariant(), {}};
    }
    return {};
}

bool isJson(Shape shape)
{
    return shape == Shape::Json || shape == Shape::JsonMap || shape == Shape::JsonIntegers ||
           shape == Shape::JsonList || shape == Shape::DeviceState;
}

std::vector<std::string> sorted(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> sortedOnce(std::vector<std::string> names)
{
    names = sorted(std::move(names));
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::string text(const QString &value)
{
    return value.toStdString();
}

} // namespace

/// Drives every member of every class against a service that records what reaches it.
class TestProxyMembers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();

    void catalogue_addsUp();
    void class_addressesItsService_data();
    void class_addressesItsService();
    void class_hasTheCataloguesMembers_data() { class_addressesItsService_data(); }
    void class_hasTheCataloguesMembers();

    void call_arrivesAsTheTableSays_data();
    void call_arrivesAsTheTableSays();
    void goodReply_isConverted_data() { call_arrivesAsTheTableSays_data(); }
    void goodReply_isConverted();
    void errorReply_givesTheEmptyValue_data() { call_arrivesAsTheTableSays_data(); }
    void errorReply_givesTheEmptyValue();
    void replyWithoutArguments_givesTheEmptyValue_data() { call_arrivesAsTheTableSays_data(); }
    void replyWithoutArguments_givesTheEmptyValue();
    void replyOfAnotherType_isConvertedAsAVariant_data() { call_arrivesAsTheTableSays_data(); }
    void replyOfAnotherType_isConvertedAsAVariant();
    void invalidJson_givesTheEmptyValue_data();
    void invalidJson_givesTheEmptyValue();

private:
    const Member &fetchMember() const;
    const ProxyTable &fetchTable() const;

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
    std::vector<ProxyTable> tables;
    std::unique_ptr<MessageCapture> capture;
};

void TestProxyMembers::initTestCase()
{
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(
        bus.address(), QStringList{QStringLiteral("vorlet.daemon"), QStringLiteral("widget.manager"),
                                   QStringLiteral("vorlet.mqtt.client"),
                                   QStringLiteral("com.btnotifications"), QStringLiteral("spotify.server")});
    QVERIFY(fake->isRunning());
    const auto connection = QDBusConnection::connectToBus(bus.address(), QLatin1String(connectionName));
    QVERIFY(connection.isConnected());
    tables = everyProxyTable(connection);
    QCOMPARE(tables.size(), catalogue().size());
}

void TestProxyMembers::cleanupTestCase()
{
    tables.clear();
    fake.reset();
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

void TestProxyMembers::cleanup()
{
    capture.reset();
    fake->takeCalls();
}

void TestProxyMembers::catalogue_addsUp()
{
    size_t commands = 0;
    size_t getters = 0;
    size_t asynchronous = 0;
    size_t signalNames = 0;
    for (const CatalogueRow &row : catalogue()) {
        commands += row.commands.size();
        asynchronous += row.asynchronous.size();
        signalNames += row.signalNames.size();
        for (const CatalogueRow::Getters &group : row.getters) {
            getters += group.names.size();
        }
    }
    QCOMPARE(catalogue().size(), size_t(24));
    QCOMPARE(commands, size_t(116));
    QCOMPARE(getters, size_t(132));
    QCOMPARE(asynchronous, size_t(15));
    QCOMPARE(signalNames, size_t(55));
}

void TestProxyMembers::class_addressesItsService_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const CatalogueRow &row : catalogue()) {
        QTest::newRow(row.className.c_str()) << index++;
    }
}

void TestProxyMembers::class_addressesItsService()
{
    QFETCH(int, index);
    const CatalogueRow &row = catalogue().at(size_t(index));
    const auto table = std::find_if(tables.begin(), tables.end(), [&row](const ProxyTable &each) {
        return each.className == row.className;
    });
    QVERIFY(table != tables.end());

    QCOMPARE(text(table->proxy->service()), row.service);
    QCOMPARE(text(table->proxy->path()), row.path);
    QCOMPARE(text(table->proxy->interface()), row.interface);
    QVERIFY(table->proxy->isValid());
}

void TestProxyMembers::class_hasTheCataloguesMembers()
{
    QFETCH(int, index);
    const CatalogueRow &row = catalogue().at(size_t(index));
    const auto table = std::find_if(tables.begin(), tables.end(), [&row](const ProxyTable &each) {
        return each.className == row.className;
    });
    QVERIFY(table != tables.end());

    std::vector<std::string> commands;
    std::vector<std::string> asynchronous;
    std::map<std::string, std::string> getters;
    for (const Member &member : table->members) {
        if (member.shape == Shape::Command) {
            commands.emplace_back(member.name);
        } else if (member.shape == Shape::Asynchronous) {
            asynchronous.emplace_back(member.name);
        } else {
            getters[member.name] = expectation(member.shape).result + (member.errorLine ? ", logging" : "");
        }
    }
    std::map<std::string, std::string> listed;
    for (const CatalogueRow::Getters &group : row.getters) {
        for (const std::string &name : group.names) {
            // Where the list is silent, the member's own choice stands.
            listed[name] = group.result.empty() ? getters[name] : group.result;
        }
    }
    std::vector<std::string> signalNames;
    for (const Subscription &subscription : table->subscriptions) {
        signalNames.emplace_back(subscription.signal);
    }
    // Overloads are listed once.
    QCOMPARE(sortedOnce(commands), sorted(row.commands));
    QCOMPARE(sortedOnce(asynchronous), sorted(row.asynchronous));
    QCOMPARE(getters, listed);
    QCOMPARE(sortedOnce(signalNames), sorted(row.signalNames));
}

void TestProxyMembers::call_arrivesAsTheTableSays_data()
{
    QTest::addColumn<int>("tableIndex");
    QTest::addColumn<int>("memberIndex");
    for (size_t table = 0; table < tables.size(); ++table) {
        for (size_t member = 0; member < tables[table].members.size(); ++member) {
            const Member &each = tables[table].members[member];
            const QByteArray kind = each.shape == Shape::Asynchronous ? " asynchronous" : "";
            QTest::newRow(QByteArray(tables[table].className) + "::" + each.name + "(" + each.signature +
                          ")" + kind)
                << int(table) << int(member);
        }
    }
}

const ProxyTable &TestProxyMembers::fetchTable() const
{
    return tables.at(size_t(*static_cast<int *>(QTest::qData("tableIndex", qMetaTypeId<int>()))));
}

const Member &TestProxyMembers::fetchMember() const
{
    return fetchTable().members.at(
        size_t(*static_cast<int *>(QTest::qData("memberIndex", qMetaTypeId<int>()))));
}

void TestProxyMembers::call_arrivesAsTheTableSays()
{
    const ProxyTable &table = fetchTable();
    const Member &member = fetchMember();
    const auto row = std::find_if(catalogue().begin(), catalogue().end(), [&table](const CatalogueRow &each) {
        return each.className == table.className;
    });
    QVERIFY(row != catalogue().end());
    fake->answerWith({});

    member.invoke();

    const QList<RecordedCall> calls = fake->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(text(calls.first().service), row->service);
    QCOMPARE(text(calls.first().path), row->path);
    QCOMPARE(text(calls.first().interface), row->interface);
    QCOMPARE(text(calls.first().member), std::string(member.name));
    QCOMPARE(text(calls.first().signature), std::string(member.signature));
    QCOMPARE(described(calls.first().arguments), described(member.arguments));
    QCOMPARE(table.proxy->lastError().type(), QDBusError::NoError);
}

void TestProxyMembers::goodReply_isConverted()
{
    const Member &member = fetchMember();
    const Expectation expected = expectation(member.shape);
    fake->answerWith({expected.goodReply.isValid() ? expected.goodReply : QVariant(1)});
    capture = std::make_unique<MessageCapture>();

    const QVariant result = member.invoke();

    QCOMPARE(described(result), described(expected.good));
    QCOMPARE(capture->debugTexts(), QStringList());
}

void TestProxyMembers::errorReply_givesTheEmptyValue()
{
    const Member &member = fetchMember();
    const Expectation expected = expectation(member.shape);
    fake->answerWithError(QStringLiteral("com.vorlet.Failed"), QStringLiteral("the disk is full"));
    capture = std::make_unique<MessageCapture>();

    const QVariant result = member.invoke();

    QCOMPARE(described(result), described(expected.empty));
    if (member.shape == Shape::Text) {
        QVERIFY(result.toString().isNull());
    }
    QStringList lines;
    if (member.errorLine) {
        lines.append(QLatin1String(member.errorLine) + QStringLiteral(" \"the disk is full\""));
    }
    QCOMPARE(capture->debugTexts(), lines);
    QCOMPARE(fake->takeCalls().size(), 1);
}

void TestProxyMembers::replyWithoutArguments_givesTheEmptyValue()
{
    const Member &member = fetchMember();
    const Expectation expected = expectation(member.shape);
    fake->answerWith({});
    capture = std::make_unique<MessageCapture>();

    const QVariant result = member.invoke();

    QCOMPARE(described(result), described(expected.empty));
    QCOMPARE(capture->debugTexts(), QStringList());
}

void TestProxyMembers::replyOfAnotherType_isConvertedAsAVariant()
{
    const Member &member = fetchMember();
    const Expectation expected = expectation(member.shape);
    if (member.shape == Shape::Asynchronous || member.shape == Shape::Command) {
        fake->answerWith({QStringLiteral("whatever"), 42});
        capture = std::make_unique<MessageCapture>();
        QCOMPARE(member.invoke(),
                 member.shape == Shape::Command ? QVariant() : QVariant(QStringLiteral("whatever")));
        QCOMPARE(capture->debugTexts(), QStringList());
        return;
    }

    fake->answerWith({42});
    capture = std::make_unique<MessageCapture>();
    const QVariant fromNumber = member.invoke();
    QCOMPARE(described(fromNumber), described(expected.fromNumber));
    QCOMPARE(capture->debugTexts(), expected.wrongTypeLines);

    fake->answerWith({list({1})});
    const QVariant fromArray = member.invoke();
    QCOMPARE(described(fromArray), described(expected.fromArray));
}

void TestProxyMembers::invalidJson_givesTheEmptyValue_data()
{
    QTest::addColumn<int>("tableIndex");
    QTest::addColumn<int>("memberIndex");
    for (size_t table = 0; table < tables.size(); ++table) {
        for (size_t member = 0; member < tables[table].members.size(); ++member) {
            const Member &each = tables[table].members[member];
            if (isJson(each.shape)) {
                QTest::newRow(QByteArray(tables[table].className) + "::" + each.name)
                    << int(table) << int(member);
            }
        }
    }
}

void TestProxyMembers::invalidJson_givesTheEmptyValue()
{
    const Member &member = fetchMember();
    for (const QByteArray &text : {QByteArray("{\"key\": "), QByteArray("no json"), QByteArray(""),
                                   QByteArray("{},{}"), QByteArray("\xff\xfe"), QByteArray(1, '\0')}) {
        fake->answerWith({text});
        QCOMPARE(described(member.invoke()), described(expectation(member.shape).empty));
    }
}

QTEST_GUILESS_MAIN(TestProxyMembers)
#include "tst_proxymembers.moc"
