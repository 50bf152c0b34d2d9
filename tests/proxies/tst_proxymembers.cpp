#include "catalogue.h"
#include "described.h"
#include "fakeservice.h"
#include "messagecapture.h"
#include "privatebus.h"
#include "proxyexpectation.h"
#include "proxytable.h"

#include <QDBusConnection>
#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>

namespace
{

const char connectionName[] = "client";

QVariant list(const QVariantList &values)
{
    return QVariant(values);
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
