#include "devicefixture.h"
#include "membersof.h"
#include "openmanager.h"
#include "platformcapture.h"

#include <QTimer>
#include <QtTest>

namespace
{

const QByteArray processLine = "QWixtApplicationManager: Start process requests";

/// The last step of a state change that the debug lines show.
QByteArray action(const QSignalSpy &ready)
{
    const QList<QByteArray> lines = PlatformCapture::texts(LogPriority::Debug);
    if (lines.contains("QWixtApplicationManager: Remove all tasks from worker")) {
        return "remove";
    }
    if (lines.contains("QWixtApplicationManager: added get list task")) {
        return "list";
    }
    if (lines.contains(processLine)) {
        return ready.isEmpty() ? "process" : "ready, process";
    }
    return ready.isEmpty() ? "" : "ready";
}

} // namespace

/// The manager's states, and what leads from one to the other.
class TestManagerStates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void state_hasItsNumber_data();
    void state_hasItsNumber();
    void refreshTimer_wouldFetchTheList();
    void metaObject_listsSignalsAndSlotsInOrder();
    void construction_isQuietAndSetsUpTheDormantTimer();
    void transition_data();
    void transition();
    void unknownState_isWarnedAbout_data();
    void unknownState_isWarnedAbout();

    void listArrives_isReadyAndSaysSo();
    void internetLostWhileWaitingForTheList_isWrittenAsIfReady();
    void internetRegainedAfterTheList_isReadyWithoutASignal();
    void widgetCreated_onlyGrowsTheList();
    void keyLostLater_hasNoEffect();

private:
    PrivateBus bus;
    std::unique_ptr<DeviceSimulator> device;
};

void TestManagerStates::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestManagerStates::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
    device = makeDevice(bus);
}

void TestManagerStates::cleanup()
{
    CurlFake::release();
    device.reset();
}

void TestManagerStates::state_hasItsNumber_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("number");
    QTest::newRow("WaitForDaemonsToStart") << int(QWixtApplicationManager::WaitForDaemonsToStart) << 0;
    QTest::newRow("NotSetuped") << int(QWixtApplicationManager::NotSetuped) << 1;
    QTest::newRow("NoInternet") << int(QWixtApplicationManager::NoInternet) << 2;
    QTest::newRow("WaitForList") << int(QWixtApplicationManager::WaitForList) << 3;
    QTest::newRow("Ready") << int(QWixtApplicationManager::Ready) << 4;
}

void TestManagerStates::state_hasItsNumber()
{
    QFETCH(int, state);

    QTEST(state, "number");
}

void TestManagerStates::refreshTimer_wouldFetchTheList()
{
    OpenManager manager;

    manager.listTimer()->start(0);

    QTRY_VERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::list()});
}

void TestManagerStates::metaObject_listsSignalsAndSlotsInOrder()
{
    const QStringList members = membersOf(QWixtApplicationManager::staticMetaObject);

    QCOMPARE(
        members,
        (QStringList{
            text("signal void applicationRegistered(QString uuid, QString qwixId, QString type)"),
            text("signal void applicationDeleted(QString uuid, QString qwixtid, QString type)"),
            text("signal void readyToWork()"), text("slot void getListOfRemoteApps()"),
            text("slot void workerFinishedWithSuccess(QByteArray& data, RemoteTaskDescription descr)"),
            text("slot void workerFinishedWithFail(int code, QByteArray& data, RemoteTaskDescription descr)"),
            text("slot void widgetDeleted(QString packageId, QString widgetId)"),
            text("slot void widgetCreated(QString packageId, QString widgteId)"),
            text("slot void setupFinished(QString apiKey)"), text("slot void vorletDaemonStarted()"),
            text("slot void windowManagerStarted()"),
            text("slot void internetAvailabilityStateChanged(bool isAvailable)"),
            text("slot void delayedTaskTimeout()")}));
}

void TestManagerStates::construction_isQuietAndSetsUpTheDormantTimer()
{
    const OpenManager manager;

    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForDaemonsToStart);
    QCOMPARE(PlatformCapture::texts(LogPriority::Debug),
             QList<QByteArray>{"QWixtApplicationManager: state is WaitForDaemonsToStart"});
    QCOMPARE(manager.listTimer()->interval(), 3600000);
    QVERIFY(manager.listTimer()->isSingleShot());
    QVERIFY(!manager.listTimer()->isActive());
    QCOMPARE(manager.listTimer()->parent(), &manager);
    QVERIFY(device->daemon().calls().isEmpty());
}

void TestManagerStates::transition_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<bool>("daemonsUp");
    QTest::addColumn<bool>("setUp");
    QTest::addColumn<bool>("internet");
    QTest::addColumn<bool>("list");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("to");
    QTest::addColumn<QByteArray>("entryAction");
    const auto row = [](const char *name, int from, bool up, bool setUp, bool internet, bool list,
                        const char *line, int to, const char *entryAction) {
        QTest::newRow(name) << from << up << setUp << internet << list << QByteArray(line) << to
                            << QByteArray(entryAction);
    };
    // name, from, daemons up, set up, internet, list; line, to, action
    row("start: daemons down", 0, false, true, true, true, "", 0, "");
    row("start: not set up", 0, true, false, true, true,
        "State changed from WaitForDaemonsToStart to NotSetuped", 1, "");
    row("start: offline", 0, true, true, false, true,
        "State changed from WaitForDaemonsToStart to NoInternet", 2, "remove");
    row("start: offline, no list", 0, true, true, false, false,
        "State changed from WaitForDaemonsToStart to NoInternet", 2, "remove");
    row("start: no list", 0, true, true, true, false, "State changed from NotSetuped to WaitForList", 3,
        "list");
    row("start: all there", 0, true, true, true, true, "State changed from WaitForDaemonsToStart to Ready", 4,
        "process");
    row("not set up: stays", 1, true, false, true, true, "", 1, "");
    row("not set up: daemons are not watched", 1, false, true, false, false,
        "State changed from NotSetuped to NoInternet", 2, "remove");
    row("not set up: no list", 1, true, true, true, false, "State changed from NotSetuped to WaitForList", 3,
        "list");
    row("not set up: all there", 1, true, true, true, true, "State changed from NotSetuped to Ready", 4,
        "process");
    row("offline: stays", 2, true, true, false, true, "", 2, "");
    row("offline: no list", 2, true, true, true, false, "State changed from NotSetuped to WaitForList", 3,
        "list");
    row("offline: set-up is not watched", 2, false, false, true, true,
        "State changed from NoInternet to Ready", 4, "process");
    row("waiting for the list: offline", 3, true, true, false, false,
        "State changed from Ready to NoInternet", 2, "remove");
    row("waiting for the list: offline comes first", 3, true, true, false, true,
        "State changed from Ready to NoInternet", 2, "remove");
    row("waiting for the list: stays", 3, true, true, true, false, "", 3, "");
    row("waiting for the list: there", 3, true, false, true, true, "State changed from WaitForList to Ready",
        4, "ready, process");
    row("ready: stays", 4, false, false, true, false, "", 4, "");
    row("ready: offline", 4, true, true, false, true, "State changed from Ready to NoInternet", 2, "remove");
}

void TestManagerStates::transition()
{
    QFETCH(int, from);
    QFETCH(bool, daemonsUp);
    QFETCH(bool, setUp);
    QFETCH(bool, internet);
    QFETCH(bool, list);
    QFETCH(QByteArray, line);
    QFETCH(int, to);
    OpenManager manager;
    manager.setState(from);
    manager.setKnowledge(
        {daemonsUp, daemonsUp, internet, list, setUp ? text("key") : QString(), QString(), text("d9"), {}});
    const QSignalSpy ready(&manager, &QWixtApplicationManager::readyToWork);
    int stateWhenWritten = -1;
    const PlatformCapture::LineWatch watch("QWixtApplicationManager: " + line,
                                           [&] { stateWhenWritten = manager.currentState(); });
    int stateWhenAnnounced = to;
    bool processedWhenAnnounced = false;
    connect(&manager, &QWixtApplicationManager::readyToWork, &manager, [&] {
        stateWhenAnnounced = manager.currentState();
        processedWhenAnnounced = PlatformCapture::count(processLine) > 0;
    });
    PlatformCapture::clear();

    manager.evaluateState();

    QCOMPARE(static_cast<int>(manager.currentState()), to);
    QCOMPARE(stateWhenWritten, line.isEmpty() ? -1 : from);
    QCOMPARE(stateWhenAnnounced, to);
    QVERIFY(!processedWhenAnnounced);
    const QList<QByteArray> lines = PlatformCapture::texts(LogPriority::Debug);
    if (line.isEmpty()) {
        QVERIFY(lines.isEmpty());
    } else {
        QCOMPARE(lines.constFirst(), "QWixtApplicationManager: " + line);
    }
    QTEST(action(ready), "entryAction");
}

void TestManagerStates::unknownState_isWarnedAbout_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("above") << 5;
    QTest::newRow("below") << -1;
}

void TestManagerStates::unknownState_isWarnedAbout()
{
    QFETCH(int, number);
    OpenManager manager;
    manager.setState(number);
    PlatformCapture::clear();

    manager.evaluateState();

    QCOMPARE(static_cast<int>(manager.currentState()), number);
    QCOMPARE(PlatformCapture::texts(), QList<QByteArray>{"QWixtApplicationManager: Not handled state"});
    QCOMPARE(PlatformCapture::lines().constFirst().priority, static_cast<int>(LogPriority::Warning));
}

void TestManagerStates::listArrives_isReadyAndSaysSo()
{
    CurlFake::hold();
    QVERIFY(startDevice(*device));
    OpenManager manager;
    QSignalSpy ready(&manager, &QWixtApplicationManager::readyToWork);
    manager.start();

    CurlFake::release();

    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::Ready);
    QCOMPARE(ready.count(), 1);
    QVERIFY(manager.queue().isEmpty());
}

void TestManagerStates::internetLostWhileWaitingForTheList_isWrittenAsIfReady()
{
    CurlFake::hold();
    QVERIFY(startDevice(*device));
    OpenManager manager;
    manager.start();
    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForList);
    QTRY_COMPARE(CurlFake::requestCount(), 1); // the fetch thread has had its say
    PlatformCapture::clear();

    device->daemon().setInternetAvailable(false);

    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::NoInternet);
    QCOMPARE(managerLines(LogPriority::Debug).mid(0, 2),
             (QList<QByteArray>{"QWixtApplicationManager: State changed from Ready to NoInternet",
                                "QWixtApplicationManager: Remove all tasks from worker"}));
}

void TestManagerStates::internetRegainedAfterTheList_isReadyWithoutASignal()
{
    QVERIFY(startDevice(*device));
    OpenManager manager;
    QSignalSpy ready(&manager, &QWixtApplicationManager::readyToWork);
    manager.start();
    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::Ready);
    device->daemon().setInternetAvailable(false);
    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::NoInternet);

    device->daemon().setInternetAvailable(true);

    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::Ready);
    QCOMPARE(ready.count(), 1); // the first time only
    QCOMPARE(CurlFake::requestCount(), 1);
}

void TestManagerStates::widgetCreated_onlyGrowsTheList()
{
    QVERIFY(startDevice(*device));
    OpenManager manager;
    manager.start();
    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::Ready);
    QTest::qWait(50); // grace time: the fetcher's last lines
    PlatformCapture::clear();

    device->widgetManager().createWidget(text("u3"));
    device->widgetManager().createWidget(text("u1")); // known already

    QTRY_COMPARE(manager.knowledge().installedWidgets,
                 (QStringList{text("u1"), text("u2"), text("u3"), text("u1")}));
    QVERIFY(PlatformCapture::lines().isEmpty());
    QVERIFY(manager.queue().isEmpty());
}

void TestManagerStates::keyLostLater_hasNoEffect()
{
    QVERIFY(startDevice(*device));
    OpenManager manager;
    manager.start();
    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::Ready);

    device->daemon().setApiKey(QString());

    QTRY_VERIFY(manager.knowledge().apiKey.isEmpty());
    QCOMPARE(manager.currentState(), QWixtApplicationManager::Ready);
}

QTEST_GUILESS_MAIN(TestManagerStates)
#include "tst_managerstates.moc"
