#include "deviceundertest.h"

/// What the running daemon makes of the device's events: the internet, set-up and widgets.
class TestEvents : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void internetReturns_readinessIsNotAnnouncedAgain();
    void internetLostAndBackBeforeTheListArrived_isAnnouncedOnce();
    void listArrivesOffline_readinessIsNeverAnnounced();
    void keyChanges_nextRequestsCarryIt();
    void keyCleared_requestsGoOutWithoutOne();
    void remoteIdChangesWithTheKey_nextRegistrationCarriesIt();
    void widgetCreatedBeforeTheList_keepsItsApplication();
    void widgetListIsReadAgain_whenTheWidgetManagerStarts();
    void widgetManagerFailsLater_oldListStays();
    void sameEventTwice_changesNothing();
};

namespace
{
QByteArray authorization(const QByteArray &key)
{
    return "Basic " + (":" + key).toBase64();
}
} // namespace

void TestEvents::internetReturns_readinessIsNotAnnouncedAgain()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    for (int round = 0; round < 3; ++round) {
        QVERIFY(device.setInternetAvailable(false));
        QVERIFY(device.setInternetAvailable(true));
    }
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
}

void TestEvents::internetLostAndBackBeforeTheListArrived_isAnnouncedOnce()
{
    DeviceUnderTest device;
    device.server().failNext(1, ServerFault::withDelay(60000));
    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.server().requestCount(), 1);

    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.setInternetAvailable(true));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    device.server().clearFaults();

    // The list that is on its way is not asked for a second time.
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.requested(),
             QStringList({"GET"_text, "POST id=d9&identifier=u1&name=Clock&type=t"_text}));
}

void TestEvents::listArrivesOffline_readinessIsNeverAnnounced()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "gone"_text));
    device.server().failNext(1, ServerFault::withDelay(60000));
    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.server().requestCount(), 1);

    QVERIFY(device.setInternetAvailable(false));
    device.server().clearFaults();
    // The list has been read when the daemon knows the application that is on it.
    const auto isKnown = [&device] {
        return device.updateApplication("a1"_text, "gone"_text, "Clock"_text, "t"_text) &&
               device.hasLine("I/QWIXTD: QWixtApplicationManager: application is not changed");
    };
    EVENTUALLY(isKnown());
    QCOMPARE(device.server().requestCount(), 1);
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY(device.announced().contains("applicationDeleted(gone, a1, t)"_text));
    QVERIFY(!device.announced().contains(started));
    QCOMPARE(device.requested().count("GET"_text), 1);
}

void TestEvents::keyChanges_nextRequestsCarryIt()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.setApiKey("next-key"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    const QList<HttpRequest> requests = device.server().requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).header("Authorization"), authorization("k3y-0f/th3+dev1ce"));
    QCOMPARE(requests.at(1).header("Authorization"), authorization("next-key"));
}

void TestEvents::keyCleared_requestsGoOutWithoutOne()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.setApiKey(""_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.server().requestCount(), 2);
    QCOMPARE(device.server().requests().at(1).header("Authorization"), QByteArray("Basic Og=="));
}

void TestEvents::remoteIdChangesWithTheKey_nextRegistrationCarriesIt()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    device.daemon().setRemoteId("d77"_text);
    QVERIFY(device.setApiKey("next-key"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.requested(),
                     QStringList({"GET"_text, "POST id=d77&identifier=u1&name=Clock&type=t"_text}));
}

void TestEvents::widgetCreatedBeforeTheList_keepsItsApplication()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "fresh"_text));
    device.server().addApplication(listedApplication("a2"_text, "gone"_text));
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());

    QVERIFY(device.createWidget("fresh"_text));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(gone, a2, t)"_text}));
    QCOMPARE(device.requested(), QStringList({"GET"_text, "DELETE app_id=a2&type=t"_text}));
}

void TestEvents::widgetListIsReadAgain_whenTheWidgetManagerStarts()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    device.server().addApplication(listedApplication("a2"_text, "u4"_text));
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());

    device.widgetManager().stop();
    device.widgetManager().setWidgetsQuietly({"u4"_text});
    QVERIFY(device.widgetManager().start());
    EVENTUALLY_EQUAL(device.widgetManager().callCount("listOfInstalledWidgets"_text), 2);
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u1, a1, t)"_text}));
}

void TestEvents::widgetManagerFailsLater_oldListStays()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    device.server().addApplication(listedApplication("a2"_text, "u4"_text));
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());

    device.widgetManager().stop();
    device.widgetManager().failCallsOf("listOfInstalledWidgets"_text,
                                       "com.vorlet.widget_manager.Error.Busy"_text, "not yet"_text);
    QVERIFY(device.widgetManager().start());
    EVENTUALLY(device.hasLine("W/QWIXTD: QWixtApplicationManager: cant get widgets list not yet"));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u4, a2, t)"_text}));
}

void TestEvents::sameEventTwice_changesNothing()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.setApiKey(DeviceUnderTest::apiKey));
    QVERIFY(device.setApiKey(DeviceUnderTest::apiKey));
    device.widgetManager().stop();
    QVERIFY(device.widgetManager().start());
    EVENTUALLY_EQUAL(device.widgetManager().callCount("listOfInstalledWidgets"_text), 2);
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
}

QTEST_GUILESS_MAIN(TestEvents)
#include "tst_qwixtd_events.moc"
