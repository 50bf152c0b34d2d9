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

bool isAny(Shape /*shape*/)
{
    return true;
}

/// The class looks into the reply.
bool isRead(Shape shape)
{
    return shape != Shape::Asynchronous && shape != Shape::Command;
}

bool isUnread(Shape shape)
{
    return !isRead(shape);
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

struct MemberNames {
    std::vector<std::string> commands;
    std::vector<std::string> asynchronous;
    std::map<std::string, std::string> getters; ///< with their results
    std::vector<std::string> signalNames;
};

MemberNames namesOf(const ProxyTable &table)
{
    MemberNames names;
    for (const Member &member : table.members) {
        if (member.shape == Shape::Command) {
            names.commands.emplace_back(member.name);
        } else if (member.shape == Shape::Asynchronous) {
            names.asynchronous.emplace_back(member.name);
        } else {
            names.getters[member.name] =
                expectation(member.shape).result + (member.errorLine ? ", logging" : "");
        }
    }
    for (const Subscription &subscription : table.subscriptions) {
        names.signalNames.emplace_back(subscription.signal);
    }
    return names;
}

/// The getters of a row with their results; where the row names no result, that in @p found stands.
std::map<std::string, std::string> listedGetters(const CatalogueRow &row,
                                                 std::map<std::string, std::string> found)
{
    std::map<std::string, std::string> listed;
    for (const CatalogueRow::Getters &group : row.getters) {
        for (const std::string &name : group.names) {
            listed[name] = group.result.empty() ? found[name] : group.result;
        }
    }
    return listed;
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

    void call_arrivesAsTheTableSays_data() { addMembers(isAny); }
    void call_arrivesAsTheTableSays();
    void goodReply_isConverted_data() { addMembers(isAny); }
    void goodReply_isConverted();
    void errorReply_givesTheEmptyValue_data() { addMembers(isAny); }
    void errorReply_givesTheEmptyValue();
    void replyWithoutArguments_givesTheEmptyValue_data() { addMembers(isAny); }
    void replyWithoutArguments_givesTheEmptyValue();
    void replyOfMoreThanIsRead_isTakenAsItIs_data() { addMembers(isUnread); }
    void replyOfMoreThanIsRead_isTakenAsItIs();
    void number_isConvertedAsAVariant_data() { addMembers(isRead); }
    void number_isConvertedAsAVariant();
    void array_isConvertedAsAVariant_data() { addMembers(isRead); }
    void array_isConvertedAsAVariant();
    void invalidJson_givesTheEmptyValue_data() { addMembers(isJson); }
    void invalidJson_givesTheEmptyValue();

private:
    const Member &fetchMember() const;
    const ProxyTable &fetchTable() const;
    const ProxyTable *tableOf(const CatalogueRow &row) const;
    void addMembers(bool isWanted(Shape)) const;

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
    std::vector<ProxyTable> tables;
    std::unique_ptr<MessageCapture> capture;
};

void TestProxyMembers::initTestCase()
{
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(bus.address());
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

/// Null when there is none.
const ProxyTable *TestProxyMembers::tableOf(const CatalogueRow &row) const
{
    const auto table = std::find_if(tables.begin(), tables.end(), [&row](const ProxyTable &each) {
        return each.className == row.className;
    });
    return table == tables.end() ? nullptr : &*table;
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

    const ProxyTable *const table = tableOf(row);

    QVERIFY(table != nullptr);
    QCOMPARE(text(table->proxy->service()), row.service);
    QCOMPARE(text(table->proxy->path()), row.path);
    QCOMPARE(text(table->proxy->interface()), row.interface);
    QVERIFY(table->proxy->isValid());
}

void TestProxyMembers::class_hasTheCataloguesMembers()
{
    QFETCH(int, index);
    const CatalogueRow &row = catalogue().at(size_t(index));
    const ProxyTable *const table = tableOf(row);
    QVERIFY(table != nullptr);

    const MemberNames names = namesOf(*table);

    // Overloads are listed once.
    QCOMPARE(sortedOnce(names.commands), sorted(row.commands));
    QCOMPARE(sortedOnce(names.asynchronous), sorted(row.asynchronous));
    QCOMPARE(names.getters, listedGetters(row, names.getters));
    QCOMPARE(sortedOnce(names.signalNames), sorted(row.signalNames));
}

/// A row for each member whose shape is wanted.
void TestProxyMembers::addMembers(bool isWanted(Shape)) const
{
    QTest::addColumn<int>("tableIndex");
    QTest::addColumn<int>("memberIndex");
    for (size_t table = 0; table < tables.size(); ++table) {
        for (size_t member = 0; member < tables[table].members.size(); ++member) {
            const Member &each = tables[table].members[member];
            if (!isWanted(each.shape)) {
                continue;
            }
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

void TestProxyMembers::replyOfMoreThanIsRead_isTakenAsItIs()
{
    const Member &member = fetchMember();
    fake->answerWith({QStringLiteral("whatever"), 42});
    capture = std::make_unique<MessageCapture>();

    const QVariant result = member.invoke();

    QCOMPARE(result, member.shape == Shape::Command ? QVariant() : QVariant(QStringLiteral("whatever")));
    QCOMPARE(capture->debugTexts(), QStringList());
}

void TestProxyMembers::number_isConvertedAsAVariant()
{
    const Member &member = fetchMember();
    const Expectation expected = expectation(member.shape);
    fake->answerWith({42});
    capture = std::make_unique<MessageCapture>();

    const QVariant result = member.invoke();

    QCOMPARE(described(result), described(expected.fromNumber));
    QCOMPARE(capture->debugTexts(), expected.wrongTypeLines);
}

void TestProxyMembers::array_isConvertedAsAVariant()
{
    const Member &member = fetchMember();
    fake->answerWith({list({1})});
    capture = std::make_unique<MessageCapture>();

    const QVariant result = member.invoke();

    QCOMPARE(described(result), described(expectation(member.shape).fromArray));
}

void TestProxyMembers::invalidJson_givesTheEmptyValue()
{
    const Member &member = fetchMember();
    const QList<QByteArray> texts = {"{\"key\": ", "no json", "", "{},{}", "\xff\xfe", QByteArray(1, '\0')};

    QStringList results;
    for (const QByteArray &text : texts) {
        fake->answerWith({text});
        results.append(described(member.invoke()));
    }

    const QString empty = described(expectation(member.shape).empty);
    QCOMPARE(results, QStringList(QVector<QString>(texts.size(), empty).toList()));
}

QTEST_GUILESS_MAIN(TestProxyMembers)
#include "tst_proxymembers.moc"
