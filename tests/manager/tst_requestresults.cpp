#include "descriptions.h"
#include "messagecapture.h"
#include "openmanager.h"
#include "platformcapture.h"

#include <QtTest>

/// What the success of a request changes, and what is announced.
class TestRequestResults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void registerReply_makesARecord();
    void registerReply_withoutAppIdIsARecordAllTheSame();
    void registerReply_replacesTheRecordUnderItsKey();
    void announcement_comesWhenQueueAndRecordsAreChanged_data();
    void announcement_comesWhenQueueAndRecordsAreChanged();
    void deleteReply_removesTheRecord();
    void deleteReply_withoutARecordIsAnnounced();
    void updateReply_changesTheNameOnly();
    void updateReply_ofAnUnknownApplicationWarns();
    void replyOfUnknownKind_warns();
    void listReply_replacesTheRecords();
    void listReply_firstOfEqualIdsWins();
    void listReply_otherDevicesAreIgnored();
    void listReply_applicationsWithoutWidgetAreDeleted();
    void listReply_unreadableGivesNoRecords_data();
    void listReply_unreadableGivesNoRecords();
    void replyBody_isPrintedInDebug();

private:
    PrivateBus bus;
};

void TestRequestResults::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestRequestResults::init()
{
    CurlFake::reset();
    CurlFake::hold(); // replies come from the tests
    PlatformCapture::clear();
}

void TestRequestResults::registerReply_makesARecord()
{
    OpenManager manager;
    const QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    PlatformCapture::clear();

    manager.succeed(Descr::registration("u1"), R"({"app_id":"a1","status":"fine"})");

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 Clock t")});
    QCOMPARE(registered.count(), 1);
    QCOMPARE(registered.at(0), (QVariantList{text("u1"), text("a1"), text("t")}));
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: Application registered with status fine"});
}

void TestRequestResults::registerReply_withoutAppIdIsARecordAllTheSame()
{
    OpenManager manager;
    const QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    PlatformCapture::clear();

    manager.succeed(Descr::registration("u1"), "not JSON");

    QCOMPARE(manager.remoteRecords(), QStringList{text(":  u1 Clock t")});
    QCOMPARE(registered.at(0), (QVariantList{text("u1"), text(""), text("t")}));
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: Application registered with status "});
}

void TestRequestResults::registerReply_replacesTheRecordUnderItsKey()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("old"), text("old"), text("old")});

    manager.succeed(Descr::registration("u1"), R"({"app_id":"a1"})");

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 Clock t")});
}

void TestRequestResults::announcement_comesWhenQueueAndRecordsAreChanged_data()
{
    QTest::addColumn<RemoteTaskDescription>("descr");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("records");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("registered") << Descr::registration("u1") << 200
                                << QStringList{text("a1: a1 u1 Clock t"), text("a2: a2 u2 n t")}
                                << QByteArray(
                                       "QWixtApplicationManager: Application registered with status fine");
    QTest::newRow("deleted") << Descr::deletion("a2", "u2") << 200 << QStringList()
                             << QByteArray("QWixtApplicationManager: Application deleted");
    QTest::newRow("gone already") << Descr::deletion("a2", "u2") << 404 << QStringList{text("a2: a2 u2 n t")}
                                  << QByteArray();
}

void TestRequestResults::announcement_comesWhenQueueAndRecordsAreChanged()
{
    QFETCH(RemoteTaskDescription, descr);
    QFETCH(int, status);
    QFETCH(QStringList, records);
    QFETCH(QByteArray, line);
    CurlFake::setAnswer({CURLE_OK, status, R"({"app_id":"a1","status":"fine"})", ""});
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a2"), text("u2"), text("n"), text("t")});
    manager.setQueue({descr});
    int announcements = 0;
    bool isQueued = true;
    QStringList recordsThen;
    QList<QByteArray> linesThen;
    const auto look = [&] {
        ++announcements;
        isQueued = !manager.holdsNothing();
        recordsThen = manager.remoteRecords();
        linesThen = PlatformCapture::texts(LogPriority::Info);
    };
    connect(&manager, &QWixtApplicationManager::applicationRegistered, &manager, look);
    connect(&manager, &QWixtApplicationManager::applicationDeleted, &manager, look);

    manager.processRequests();
    CurlFake::release();

    QTRY_COMPARE(announcements, 1);
    QVERIFY(!isQueued);
    QCOMPARE(recordsThen, records);
    QCOMPARE(linesThen, line.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{line});
}

void TestRequestResults::deleteReply_removesTheRecord()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});
    const QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    PlatformCapture::clear();

    manager.succeed(Descr::deletion("a1", "u1"), "whatever");

    QVERIFY(manager.remoteRecords().isEmpty());
    QCOMPARE(deleted.count(), 1);
    QCOMPARE(deleted.at(0), (QVariantList{text("u1"), text("a1"), text("t")}));
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: Application deleted"});
}

void TestRequestResults::deleteReply_withoutARecordIsAnnounced()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});
    const QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);

    manager.succeed(Descr::deletion("a2", "u2"));

    QCOMPARE(deleted.count(), 1);
    QCOMPARE(deleted.at(0), (QVariantList{text("u2"), text("a2"), text("t")}));
    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 n t")});
}

void TestRequestResults::updateReply_changesTheNameOnly()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});
    PlatformCapture::clear();

    manager.succeed(Descr::update("a1", "u2", "new", "t2"));

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 new t")});
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: Application updated"});
    QVERIFY(PlatformCapture::texts(LogPriority::Warning).isEmpty());
}

void TestRequestResults::updateReply_ofAnUnknownApplicationWarns()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.succeed(Descr::update("a1", "u1"));

    QVERIFY(manager.remoteRecords().isEmpty());
    QCOMPARE(PlatformCapture::texts(),
             (QList<QByteArray>{"QWixtApplicationManager: Application updated",
                                "QWixtApplicationManager: Updated unknown application"}));
}

void TestRequestResults::replyOfUnknownKind_warns()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.succeed({7, text("u"), {}});

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"QWixtApplicationManager: unknown type"});
}

void TestRequestResults::listReply_replacesTheRecords()
{
    OpenManager manager;
    manager.setRemoteId(text("d9"));
    manager.setWidgets({text("u1")});
    manager.addRemote({text("old"), text("u1"), text("n"), text("t")});
    manager.setQueue({Descr::list()});

    manager.succeed(Descr::list(), R"({"apps":[
        {"device_id":"d9","app_id":"a1","identifier":"u1","name":"n1","type":"t1"}]})");

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 n1 t1")});
    QVERIFY(manager.knowledge().remoteListReceived);
    QVERIFY(manager.queue().isEmpty());
}

void TestRequestResults::listReply_firstOfEqualIdsWins()
{
    OpenManager manager;
    manager.setRemoteId(text("d9"));
    manager.setWidgets({text("u1"), text("u2")});

    manager.succeed(Descr::list(), R"({"apps":[
        {"device_id":"d9","app_id":"a1","identifier":"u1","name":"first","type":"t"},
        {"device_id":"d9","app_id":"a1","identifier":"u2","name":"second","type":"t"}]})");

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 first t")});
}

void TestRequestResults::listReply_otherDevicesAreIgnored()
{
    OpenManager manager;
    manager.setRemoteId(text("d9"));
    manager.setWidgets({text("u1")});

    manager.succeed(Descr::list(), R"({"apps":[
        {"device_id":"d8","app_id":"a1","identifier":"u1","name":"n","type":"t"},
        {"app_id":"a2","identifier":"u1","name":"n","type":"t"}]})");

    QVERIFY(manager.remoteRecords().isEmpty());
    QVERIFY(manager.queue().isEmpty());
}

void TestRequestResults::listReply_applicationsWithoutWidgetAreDeleted()
{
    OpenManager manager;
    manager.beWaitingForList();
    manager.setWidgets({text("u1"), text("u2")});
    const MessageCapture messages;
    const QSignalSpy ready(&manager, &QWixtApplicationManager::readyToWork);
    PlatformCapture::clear();

    manager.succeed(Descr::list(), R"({"apps":[
        {"device_id":"d9","app_id":"b","identifier":"gone","name":"n","type":"t2"},
        {"device_id":"d9","app_id":"a","identifier":"U1","name":"n","type":"t1"},
        {"device_id":"d9","app_id":"c","identifier":"u1","name":"n","type":"t3"}]})");

    // In the order of the ids, with the types listed; the case of an identifier counts.
    QVERIFY(manager.queue() == (QList<RemoteTaskDescription>{Descr::deletion("a", "U1", "t1"),
                                                             Descr::deletion("b", "gone", "t2")}));
    QCOMPARE(ready.count(), 1);
    QCOMPARE(manager.currentState(), QWixtApplicationManager::Ready);
    QVERIFY(messages.debugTexts().contains(text("u1, u2")));
    QCOMPARE(managerLines(LogPriority::Debug).mid(0, 2),
             (QList<QByteArray>{"QWixtApplicationManager: There are no widget with id U1",
                                "QWixtApplicationManager: There are no widget with id gone"}));
    CurlFake::release();
    QTRY_COMPARE(CurlFake::requestCount(), 2);
    QCOMPARE(CurlFake::requests().at(0).body(), QByteArray("app_id=a&type=t1"));
    QCOMPARE(CurlFake::requests().at(1).body(), QByteArray("app_id=b&type=t2"));
}

void TestRequestResults::listReply_unreadableGivesNoRecords_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not JSON") << QByteArray("<html>busy</html>");
    QTest::newRow("no apps") << QByteArray("{}");
    QTest::newRow("elements that are no objects") << QByteArray(R"({"apps":["d9",1,null]})");
}

void TestRequestResults::listReply_unreadableGivesNoRecords()
{
    QFETCH(QByteArray, reply);
    OpenManager manager;
    manager.setRemoteId(text("d9"));
    manager.addRemote({text("old"), text("u1"), text("n"), text("t")});

    manager.succeed(Descr::list(), reply);

    QVERIFY(manager.remoteRecords().isEmpty());
    QVERIFY(manager.knowledge().remoteListReceived);
}

void TestRequestResults::replyBody_isPrintedInDebug()
{
    OpenManager manager;
    const MessageCapture messages;

    manager.succeed(Descr::deletion("a", "u"), "the body");

    QCOMPARE(messages.debugTexts(), QStringList{text("\"the body\"")});
}

QTEST_GUILESS_MAIN(TestRequestResults)
#include "tst_requestresults.moc"
