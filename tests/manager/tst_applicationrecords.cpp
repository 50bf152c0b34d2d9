#include "descriptions.h"
#include "messagecapture.h"
#include "openmanager.h"
#include "platformcapture.h"
#include "remotetaskwithdescription.h"

#include <QtTest>

/// What is asked for, and the records that it is checked against.
class TestApplicationRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void register_outsideReadyOnlyQueues();
    void register_inReadyIsSentAndLogged();
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

void TestApplicationRecords::register_inReadyIsSentAndLogged()
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
