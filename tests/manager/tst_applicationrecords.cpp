#include "descriptions.h"
#include "messagecapture.h"
#include "openmanager.h"
#include "platformcapture.h"
#include "remotetaskwithdescription.h"

#include <QtTest>

class TestApplicationRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void register_outsideReadyOnlyQueues();
    void register_inReadyIsSentAndTold();
    void register_inReadyPrintsItsDataBeforeItsLine();
    void register_ofARegisteredWidgetIsSentAgain();
    void register_thirdCallAfterTheReplyIsSent();

    void update_ofAnUnknownApplicationRegisters();
    void update_ofAnIdWithoutARecordRegisters();
    void update_ofAnUnchangedApplicationSendsNothing();
    void update_isSentWhenAFieldDiffers_data();
    void update_isSentWhenAFieldDiffers();
    void update_twiceIsQueuedOnce();
    void update_keepsTheLastWish();

    void delete_queuesAgainOnPurpose();
    void delete_refusedByADataLessOne();
    void delete_inReadyHasItsLines();

    void widgetDeleted_deletesEveryMatchWithAnEmptyType();
    void widgetDeleted_leavesTheInstalledWidgetsAlone();
    void widgetDeleted_withoutAnyRecordHasItsLine();
    void widgetDeleted_withoutAMatchHasNoLine();

    void registerReply_makesARecord();
    void registerReply_withoutAppId();
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

    void lookUps_findRecordsWithoutAWord();
    void lookUps_warnAboutUnknownIds();

private:
    PrivateBus bus;
};

void TestApplicationRecords::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestApplicationRecords::init()
{
    CurlFake::reset();
    CurlFake::hold(); // replies come from the tests
    PlatformCapture::clear();
}

void TestApplicationRecords::register_outsideReadyOnlyQueues()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.registerApplication(text("u1"), text("Clock"), text("t"));

    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::registration("u1")});
    QCOMPARE(manager.taskCount(), 0);
    QVERIFY(PlatformCapture::lines().isEmpty());
}

void TestApplicationRecords::register_inReadyIsSentAndTold()
{
    OpenManager manager;
    manager.beReady();
    const MessageCapture messages;

    manager.registerApplication(text("u1"), text("Clock"), text("t"));

    QVERIFY(manager.taskOf(Descr::registration("u1")) != nullptr);
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: added register app task"});
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    // The request's parameters, then the description's data.
    QVERIFY(messages.debugTexts().contains(
        text("QMap((\"name\", QVariant(QString, \"Clock\"))(\"type\", QVariant(QString, \"t\")))")));
}

void TestApplicationRecords::register_inReadyPrintsItsDataBeforeItsLine()
{
    OpenManager manager;
    manager.beReady();
    const MessageCapture messages;
    QStringList printedBefore;
    const PlatformCapture::LineWatch watch("QWixtApplicationManager: added register app task",
                                           [&] { printedBefore = messages.debugTexts(); });

    manager.registerApplication(text("u1"), text("Clock"), text("t"));

    QVERIFY(!printedBefore.isEmpty());
    QCOMPARE(printedBefore.constLast(),
             text("QMap((\"name\", QVariant(QString, \"Clock\"))(\"type\", QVariant(QString, \"t\")))"));
}

void TestApplicationRecords::register_ofARegisteredWidgetIsSentAgain()
{
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a1"), text("u1"), text("Clock"), text("t")});

    const bool isQueued = manager.registerApplication(text("u1"), text("Clock"), text("t"));

    QVERIFY(isQueued);
    QCOMPARE(manager.queue().size(), 1);
}

void TestApplicationRecords::register_thirdCallAfterTheReplyIsSent()
{
    OpenManager manager;
    manager.beReady();
    QVERIFY(manager.registerApplication(text("u1"), text("Clock"), text("t")));
    QVERIFY(!manager.registerApplication(text("u1"), text("Clock"), text("t")));
    manager.succeed(Descr::registration("u1"), R"({"app_id":"a1"})");
    QVERIFY(manager.queue().isEmpty());
    QCOMPARE(manager.taskCount(), 0);

    const bool isQueued = manager.registerApplication(text("u1"), text("Clock"), text("t"));

    QVERIFY(isQueued);
    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::registration("u1")});
    QVERIFY(manager.taskOf(Descr::registration("u1")) != nullptr);
}

void TestApplicationRecords::update_ofAnUnknownApplicationRegisters()
{
    OpenManager manager;
    manager.beReady();

    manager.updateApplication(text("a9"), text("u1"), text("Clock"), text("t"));

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"No remote info about application a9 register one more time"});
    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::registration("u1")});
    QCOMPARE(manager.localRecords(), QStringList{text("a9: a9 u1 Clock t")});
}

void TestApplicationRecords::update_ofAnIdWithoutARecordRegisters()
{
    OpenManager manager;
    manager.beReady();
    manager.addRemoteId(text("a9"));

    manager.updateApplication(text("a9"), text("u1"), text("Clock"), text("t"));

    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::registration("u1")});
}

void TestApplicationRecords::update_ofAnUnchangedApplicationSendsNothing()
{
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a1"), text("u1"), text("Clock"), text("t")});

    manager.updateApplication(text("a1"), text("u1"), text("Clock"), text("t"));

    QVERIFY(manager.queue().isEmpty());
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: application is not changed"});
}

void TestApplicationRecords::update_isSentWhenAFieldDiffers_data()
{
    QTest::addColumn<QString>("uuid");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("type");
    QTest::newRow("identifier") << text("u2") << text("Clock") << text("t");
    QTest::newRow("name") << text("u1") << text("Watch") << text("t");
    QTest::newRow("type") << text("u1") << text("Clock") << text("t2");
    QTest::newRow("case") << text("u1") << text("clock") << text("t");
}

void TestApplicationRecords::update_isSentWhenAFieldDiffers()
{
    QFETCH(QString, uuid);
    QFETCH(QString, name);
    QFETCH(QString, type);
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a1"), text("u1"), text("Clock"), text("t")});

    manager.updateApplication(text("a1"), uuid, name, type);

    const RemoteTaskDescription descr = Descriptions::update(text("a1"), uuid, name, type);
    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{descr});
    QVERIFY(manager.taskOf(descr) != nullptr);
    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: added update app task"});
}

void TestApplicationRecords::update_twiceIsQueuedOnce()
{
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a1"), text("u1"), text("Clock"), text("t")});

    manager.updateApplication(text("a1"), text("u1"), text("Watch"), text("t"));
    manager.updateApplication(text("a1"), text("u1"), text("Watch"), text("t"));
    manager.updateApplication(text("a1"), text("u1"), text("Wrist"), text("t"));

    QVERIFY(manager.queue() == (QList<RemoteTaskDescription>{Descr::update("a1", "u1", "Watch"),
                                                             Descr::update("a1", "u1", "Wrist")}));
    QCOMPARE(PlatformCapture::count("QWixtApplicationManager: update task already exists"), 1);
}

void TestApplicationRecords::update_keepsTheLastWish()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("Clock"), text("t")});

    manager.updateApplication(text("a1"), text("u1"), text("Watch"), text("t"));
    manager.updateApplication(text("a1"), text("u1"), text("Wrist"), text("t"));
    manager.updateApplication(text("a2"), text("u2"), text("x"), text("y"));

    QCOMPARE(manager.localRecords(), (QStringList{text("a1: a1 u1 Wrist t"), text("a2: a2 u2 x y")}));
}

void TestApplicationRecords::delete_queuesAgainOnPurpose()
{
    OpenManager manager;

    manager.deleteApplication(text("a1"), text("u1"), text("t"));
    manager.deleteApplication(text("a1"), text("u1"), text("t"));

    QVERIFY(manager.queue() ==
            (QList<RemoteTaskDescription>{Descr::deletion("a1", "u1"), Descr::deletion("a1", "u1")}));
}

void TestApplicationRecords::delete_refusedByADataLessOne()
{
    OpenManager manager;
    manager.setQueue({{2, text("u1"), {}}});
    PlatformCapture::clear();

    manager.deleteApplication(text("a1"), text("u1"), text("t"));

    QCOMPARE(manager.queue().size(), 1);
    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"QWixtApplicationManager: delete task already exists"});
}

void TestApplicationRecords::delete_inReadyHasItsLines()
{
    OpenManager manager;
    manager.beReady();
    PlatformCapture::clear();

    manager.deleteApplication(text("a1"), text("u1"), text("t"));

    QCOMPARE(PlatformCapture::texts(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: added delete app task"});
    QCOMPARE(managerLines(), (QList<QByteArray>{"QWixtApplicationManager: added delete app task",
                                                "QWixtApplicationManager: added delete app a1 t task"}));
}

void TestApplicationRecords::widgetDeleted_deletesEveryMatchWithAnEmptyType()
{
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a2"), text("u1"), text("n"), text("t")});
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});
    manager.addRemote({text("a3"), text("u3"), text("n"), text("t")});

    manager.widgetDeleted(text("package"), text("u1"));

    QVERIFY(manager.queue() ==
            (QList<RemoteTaskDescription>{Descr::deletion("a1", "u1", ""), Descr::deletion("a2", "u1", "")}));
    CurlFake::release();
    QTRY_COMPARE(CurlFake::requestCount(), 2);
    QCOMPARE(CurlFake::requests().at(0).body(), QByteArray("app_id=a1&type="));
    QCOMPARE(CurlFake::requests().at(1).body(), QByteArray("app_id=a2&type="));
}

void TestApplicationRecords::widgetDeleted_leavesTheInstalledWidgetsAlone()
{
    OpenManager manager;
    manager.setWidgets({text("u1"), text("u2")});
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});

    manager.widgetDeleted(text("package"), text("u1"));

    QCOMPARE(manager.knowledge().installedWidgets, (QStringList{text("u1"), text("u2")}));
}

void TestApplicationRecords::widgetDeleted_withoutAnyRecordHasItsLine()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.widgetDeleted(text("package"), text("u1"));

    QVERIFY(manager.queue().isEmpty());
    QCOMPARE(PlatformCapture::texts(LogPriority::Debug),
             QList<QByteArray>{"QWixtApplicationManager: no widget registered to delete"});
}

void TestApplicationRecords::widgetDeleted_withoutAMatchHasNoLine()
{
    OpenManager manager;
    manager.addRemote({text("a3"), text("u3"), text("n"), text("t")});
    PlatformCapture::clear();

    manager.widgetDeleted(text("package"), text("U3")); // the case counts

    QVERIFY(manager.queue().isEmpty());
    QVERIFY(PlatformCapture::lines().isEmpty());
}

void TestApplicationRecords::registerReply_makesARecord()
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

void TestApplicationRecords::registerReply_withoutAppId()
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

void TestApplicationRecords::registerReply_replacesTheRecordUnderItsKey()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("old"), text("old"), text("old")});

    manager.succeed(Descr::registration("u1"), R"({"app_id":"a1"})");

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 Clock t")});
}

void TestApplicationRecords::announcement_comesWhenQueueAndRecordsAreChanged_data()
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

void TestApplicationRecords::announcement_comesWhenQueueAndRecordsAreChanged()
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

void TestApplicationRecords::deleteReply_removesTheRecord()
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

void TestApplicationRecords::deleteReply_withoutARecordIsAnnounced()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});
    const QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);

    manager.succeed(Descr::deletion("a2", "u2"));

    QCOMPARE(deleted.count(), 1);
    QCOMPARE(deleted.at(0), (QVariantList{text("u2"), text("a2"), text("t")}));
    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 n t")});
}

void TestApplicationRecords::updateReply_changesTheNameOnly()
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

void TestApplicationRecords::updateReply_ofAnUnknownApplicationWarns()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.succeed(Descr::update("a1", "u1"));

    QVERIFY(manager.remoteRecords().isEmpty());
    QCOMPARE(PlatformCapture::texts(),
             (QList<QByteArray>{"QWixtApplicationManager: Application updated",
                                "QWixtApplicationManager: Updated unknown application"}));
}

void TestApplicationRecords::replyOfUnknownKind_warns()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.succeed({7, text("u"), {}});

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"QWixtApplicationManager: unknown type"});
}

void TestApplicationRecords::listReply_replacesTheRecords()
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

void TestApplicationRecords::listReply_firstOfEqualIdsWins()
{
    OpenManager manager;
    manager.setRemoteId(text("d9"));
    manager.setWidgets({text("u1"), text("u2")});

    manager.succeed(Descr::list(), R"({"apps":[
        {"device_id":"d9","app_id":"a1","identifier":"u1","name":"first","type":"t"},
        {"device_id":"d9","app_id":"a1","identifier":"u2","name":"second","type":"t"}]})");

    QCOMPARE(manager.remoteRecords(), QStringList{text("a1: a1 u1 first t")});
}

void TestApplicationRecords::listReply_otherDevicesAreIgnored()
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

void TestApplicationRecords::listReply_applicationsWithoutWidgetAreDeleted()
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

void TestApplicationRecords::listReply_unreadableGivesNoRecords_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not JSON") << QByteArray("<html>busy</html>");
    QTest::newRow("no apps") << QByteArray("{}");
    QTest::newRow("elements that are no objects") << QByteArray(R"({"apps":["d9",1,null]})");
}

void TestApplicationRecords::listReply_unreadableGivesNoRecords()
{
    QFETCH(QByteArray, reply);
    OpenManager manager;
    manager.setRemoteId(text("d9"));
    manager.addRemote({text("old"), text("u1"), text("n"), text("t")});

    manager.succeed(Descr::list(), reply);

    QVERIFY(manager.remoteRecords().isEmpty());
    QVERIFY(manager.knowledge().remoteListReceived);
}

void TestApplicationRecords::replyBody_isPrintedInDebug()
{
    OpenManager manager;
    const MessageCapture messages;

    manager.succeed(Descr::deletion("a", "u"), "the body");

    QCOMPARE(messages.debugTexts(), QStringList{text("\"the body\"")});
}

void TestApplicationRecords::lookUps_findRecordsWithoutAWord()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});
    manager.updateApplication(text("a1"), text("u1"), text("n"), text("t"));
    PlatformCapture::clear();

    const RemoteApplication *const local = manager.localApplication(text("a1"));
    const RemoteApplication *const remote = manager.remoteApplication(text("a1"));

    QCOMPARE(local->identifier, text("u1"));
    QCOMPARE(remote->identifier, text("u1"));
    QVERIFY(PlatformCapture::lines().isEmpty());
}

void TestApplicationRecords::lookUps_warnAboutUnknownIds()
{
    OpenManager manager;
    manager.addRemote({text("a1"), text("u1"), text("n"), text("t")});

    const RemoteApplication *const local = manager.localApplication(text("x"));
    const RemoteApplication *const remote = manager.remoteApplication(text("y"));

    QVERIFY(local == nullptr);
    QVERIFY(remote == nullptr);
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             (QList<QByteArray>{"QWixtApplicationManager: No local application with id x",
                                "QWixtApplicationManager: No remote application with id y"}));
}

QTEST_GUILESS_MAIN(TestApplicationRecords)
#include "tst_applicationrecords.moc"
