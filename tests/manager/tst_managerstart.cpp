#include "buscalls.h"
#include "devicefixture.h"
#include "openmanager.h"
#include "platformcapture.h"

#include <QtTest>

namespace
{

const QByteArray noWidgetsLine = "QWixtApplicationManager: cant get widgets list ";

} // namespace

/// What the manager reads of the device, and what it makes of services that are absent or fail.
class TestManagerStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void daemonAbsentAtStart_readsNothingButTheKey();
    void daemonAbsentAtStart_waitsForItsSignal();
    void daemonAnswersAnotherError_staysWaitingButReadsOn();
    void daemonAnswersAnotherErrorLater_countsAsStarted();
    void start_readsEachServiceInThisOrder();
    void start_subscribesThenReadsInThisOrder();
    void widgetManagerAbsentAtStart_isWarnedAbout();
    void widgetManagerAbsentAtStart_isWaitedFor();
    void widgetListFailsLater_oldListStays();
    void widgetListFails_stateIsEvaluatedAllTheSame();
    void keyEmptyAtStart_waitsForSetUp_data();
    void keyEmptyAtStart_waitsForSetUp();
    void onlineAndSetUpAtStart_fetchesTheList();
    void daemonRestart_readsEverythingAgain();
    void daemonGoneWhenItsSignalComes_readsEmptyStrings();

private:
    PrivateBus bus;
    std::unique_ptr<DeviceSimulator> device;
};

void TestManagerStart::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestManagerStart::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
    device = makeDevice(bus);
}

void TestManagerStart::cleanup()
{
    CurlFake::release();
    device.reset();
}

void TestManagerStart::daemonAbsentAtStart_readsNothingButTheKey()
{
    QVERIFY(device->widgetManager().start());
    OpenManager manager;

    manager.start();

    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForDaemonsToStart);
    QVERIFY(!manager.knowledge().daemonStarted);
    QVERIFY(!manager.knowledge().internetAvailable);
    QVERIFY(manager.knowledge().serial.isEmpty());
    QVERIFY(manager.knowledge().remoteId.isEmpty());
}

void TestManagerStart::daemonAbsentAtStart_waitsForItsSignal()
{
    CurlFake::hold();
    QVERIFY(device->widgetManager().start());
    OpenManager manager;
    manager.start();

    QVERIFY(device->daemon().start());

    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::WaitForList);
    QCOMPARE(manager.knowledge().apiKey, text("key"));
    QCOMPARE(manager.knowledge().serial, text("s1"));
    QCOMPARE(manager.knowledge().remoteId, text("d9"));
    QVERIFY(manager.knowledge().internetAvailable);
    QCOMPARE(device->daemon().calls(),
             (QStringList{text("apiKey"), text("serial"), text("remoteId"), text("isInternetAvailable")}));
}

void TestManagerStart::daemonAnswersAnotherError_staysWaitingButReadsOn()
{
    QVERIFY(device->widgetManager().start());
    device->daemon().failCallsOf(text("apiKey"), text("org.freedesktop.DBus.Error.AccessDenied"), text("no"));
    QVERIFY(device->daemon().start());
    OpenManager manager;

    manager.start();

    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForDaemonsToStart);
    QVERIFY(!manager.knowledge().daemonStarted);
    QVERIFY(manager.knowledge().apiKey.isEmpty());
    QCOMPARE(manager.knowledge().serial, text("s1"));
    QCOMPARE(manager.knowledge().remoteId, text("d9"));
}

void TestManagerStart::daemonAnswersAnotherErrorLater_countsAsStarted()
{
    QVERIFY(device->daemon().start());
    OpenManager manager;
    manager.start();
    QVERIFY(manager.knowledge().daemonStarted);

    device->daemon().stop();
    device->daemon().failCallsOf(text("apiKey"), text("org.freedesktop.DBus.Error.AccessDenied"), text("no"));
    QVERIFY(device->daemon().start());
    QTRY_COMPARE(device->daemon().callCount(text("apiKey")), 2);
    QVERIFY(device->widgetManager().start());

    // The key that was not to be had is empty.
    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::NotSetuped);
    QVERIFY(manager.knowledge().daemonStarted);
}

void TestManagerStart::start_readsEachServiceInThisOrder()
{
    QVERIFY(startDevice(*device));
    OpenManager manager;

    manager.start();

    QCOMPARE(device->widgetManager().calls(), QStringList{text("listOfInstalledWidgets")});
    QCOMPARE(device->daemon().calls(),
             (QStringList{text("apiKey"), text("isInternetAvailable"), text("serial"), text("remoteId")}));
    QCOMPARE(manager.knowledge().installedWidgets, (QStringList{text("u1"), text("u2")}));
    QVERIFY(manager.knowledge().daemonStarted);
    QVERIFY(manager.knowledge().widgetsListReceived);
}

void TestManagerStart::start_subscribesThenReadsInThisOrder()
{
    QVERIFY(startDevice(*device));
    const BusCalls listener(bus.address());
    OpenManager manager;

    manager.start();

    QTRY_COMPARE(listener.calls(),
                 (QStringList{text("subscribe internetAvailabilityChanged"),
                              text("subscribe windowServerDidStarted"), text("subscribe widgetDeleted"),
                              text("subscribe newWidgetCreated"), text("subscribe daemonDidStart"),
                              text("subscribe apiKeyDidSet"), text("listOfInstalledWidgets"), text("apiKey"),
                              text("isInternetAvailable"), text("serial"), text("remoteId")}));
}

void TestManagerStart::widgetManagerAbsentAtStart_isWarnedAbout()
{
    QVERIFY(device->daemon().start());
    OpenManager manager;

    manager.start();

    const QList<QByteArray> warnings = PlatformCapture::texts(LogPriority::Warning);
    QCOMPARE(warnings.size(), 1);
    QVERIFY(warnings.constFirst().startsWith(noWidgetsLine));
    QVERIFY(warnings.constFirst().size() > noWidgetsLine.size()); // the bus's own words follow
    QVERIFY(!manager.knowledge().widgetsListReceived);
    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForDaemonsToStart);
}

void TestManagerStart::widgetManagerAbsentAtStart_isWaitedFor()
{
    CurlFake::hold();
    QVERIFY(device->daemon().start());
    OpenManager manager;
    manager.start();

    QVERIFY(device->widgetManager().start());

    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::WaitForList);
    QCOMPARE(manager.knowledge().installedWidgets, (QStringList{text("u1"), text("u2")}));
}

void TestManagerStart::widgetListFailsLater_oldListStays()
{
    QVERIFY(device->widgetManager().start());
    OpenManager manager;
    manager.start();
    device->widgetManager().stop();
    device->widgetManager().failCallsOf(text("listOfInstalledWidgets"), text("com.example.Broken"),
                                        text("out of order"));

    QVERIFY(device->widgetManager().start());

    QTRY_COMPARE(PlatformCapture::count(noWidgetsLine + "out of order"), 1);
    QVERIFY(manager.knowledge().widgetsListReceived);
    QCOMPARE(manager.knowledge().installedWidgets, (QStringList{text("u1"), text("u2")}));
}

void TestManagerStart::widgetListFails_stateIsEvaluatedAllTheSame()
{
    CurlFake::hold();
    device->widgetManager().failCallsOf(text("listOfInstalledWidgets"), text("com.example.Broken"),
                                        text("out of order"));
    QVERIFY(device->daemon().start());
    OpenManager manager;
    manager.start();
    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForDaemonsToStart);
    OpenManager::Knowledge knowledge = manager.knowledge();
    knowledge.widgetsListReceived = true; // by an earlier start of the widget manager
    manager.setKnowledge(knowledge);

    QVERIFY(device->widgetManager().start());

    QTRY_COMPARE(manager.currentState(), QWixtApplicationManager::WaitForList);
    QCOMPARE(device->widgetManager().callCount(text("listOfInstalledWidgets")), 1);
}

void TestManagerStart::keyEmptyAtStart_waitsForSetUp_data()
{
    QTest::addColumn<bool>("online");
    QTest::addColumn<int>("state");
    QTest::newRow("online") << true << 3;
    QTest::newRow("offline") << false << 2;
}

void TestManagerStart::keyEmptyAtStart_waitsForSetUp()
{
    QFETCH(bool, online);
    QFETCH(int, state);
    CurlFake::hold();
    device->daemon().setApiKeyQuietly(QString());
    device->daemon().setInternetAvailable(online);
    QVERIFY(startDevice(*device));
    OpenManager manager;
    manager.start();
    QCOMPARE(manager.currentState(), QWixtApplicationManager::NotSetuped);

    device->daemon().setApiKey(text("new key"));

    QTRY_COMPARE(static_cast<int>(manager.currentState()), state);
    QCOMPARE(manager.knowledge().apiKey, text("new key"));
    QCOMPARE(device->daemon().callCount(text("remoteId")), 2);
    QCOMPARE(device->daemon().callCount(text("apiKey")), 1); // the signal brought it
}

void TestManagerStart::onlineAndSetUpAtStart_fetchesTheList()
{
    CurlFake::hold();
    QVERIFY(startDevice(*device));
    OpenManager manager;
    QSignalSpy ready(&manager, &QWixtApplicationManager::readyToWork);

    manager.start();

    QCOMPARE(manager.currentState(), QWixtApplicationManager::WaitForList);
    QCOMPARE(PlatformCapture::count("QWixtApplicationManager: State changed from NotSetuped to WaitForList"),
             1);
    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::list()});
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    QCOMPARE(ready.count(), 0);
}

void TestManagerStart::daemonRestart_readsEverythingAgain()
{
    QVERIFY(startDevice(*device));
    OpenManager manager;
    manager.start();
    device->daemon().stop();
    device->daemon().setSerial(text("s2"));
    device->daemon().clearCalls();

    QVERIFY(device->daemon().start());

    QTRY_COMPARE(manager.knowledge().serial, text("s2"));
    QCOMPARE(device->daemon().callCount(text("apiKey")), 1);
    QCOMPARE(device->daemon().callCount(text("remoteId")), 1);
    QCOMPARE(device->daemon().callCount(text("isInternetAvailable")), 1);
}

void TestManagerStart::daemonGoneWhenItsSignalComes_readsEmptyStrings()
{
    QVERIFY(startDevice(*device));
    OpenManager manager;
    manager.start();
    QVERIFY(manager.knowledge().daemonStarted);
    device->daemon().stop();

    QMetaObject::invokeMethod(&manager, "vorletDaemonStarted");

    QVERIFY(!manager.knowledge().daemonStarted);
    QVERIFY(manager.knowledge().apiKey.isEmpty());
    QVERIFY(manager.knowledge().serial.isEmpty());
    QVERIFY(manager.knowledge().remoteId.isEmpty());
    QVERIFY(!manager.knowledge().internetAvailable);
}

QTEST_GUILESS_MAIN(TestManagerStart)
#include "tst_managerstart.moc"
