#include "deviceundertest.h"

/// The daemon's start on devices in every condition: what it waits for, and what it then does once.
class TestStart : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void setUpAndOnline_fetchesTheListOnceAndAnnouncesItself();
    void listIsOnItsWay_nothingIsAnnouncedYet();
    void deviceIsRead_inTheOrderOfTheStart();
    void daemonAbsent_startsWithIt();
    void daemonUnknown_isAskedForNothingButTheKey();
    void daemonStarts_isReadWhole();
    void daemonRefusesTheKey_isWaitedFor();
    void widgetManagerAbsent_isComplainedOfAndWaitedFor();
    void widgetManagerRefusesTheList_isWaitedFor();
    void keyEmptyAndOnline_keySetFetchesTheList();
    void keyEmptyAndOffline_nothingIsSentBeforeTheInternet();
    void remoteIdEmpty_keySetReadsItAgain();
    void offline_listIsFetchedWithTheInternet();
    void everythingLate_startsOnceWithTheLast();
    void requestsBeforeReady_areSentAfterTheListInOrder();
    void daemonRestarts_listIsNotFetchedAgain();
};

namespace
{
// Whether the request was built after the device was given this key, and so not before.
bool carriesKey(const HttpRequest &request, const QByteArray &key)
{
    return request.header("Authorization") == "Basic " + (":" + key).toBase64();
}
} // namespace

void TestStart::setUpAndOnline_fetchesTheListOnceAndAnnouncesItself()
{
    DeviceUnderTest device;

    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.requested(),
             QStringList({"GET"_text, "POST id=d9&identifier=u1&name=Clock&type=t"_text}));
}

void TestStart::listIsOnItsWay_nothingIsAnnouncedYet()
{
    DeviceUnderTest device;
    device.server().failNext(1, ServerFault::withDelay(60000));

    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.server().requestCount(), 1);
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    QCOMPARE(device.announced(), QStringList());
    device.server().clearFaults();
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
}

void TestStart::deviceIsRead_inTheOrderOfTheStart()
{
    DeviceUnderTest device;

    QVERIFY(device.startAll());

    QCOMPARE(device.widgetManager().calls(), QStringList({"listOfInstalledWidgets"_text}));
    QCOMPARE(device.daemon().calls(),
             QStringList({"apiKey"_text, "isInternetAvailable"_text, "serial"_text, "remoteId"_text}));
}

void TestStart::daemonAbsent_startsWithIt()
{
    DeviceUnderTest device;
    QVERIFY(device.widgetManager().start() && device.startProgram());
    QCOMPARE(device.server().requestCount(), 0);

    QVERIFY(device.daemon().start());

    EVENTUALLY_EQUAL(device.announced(), QStringList(started));
    QCOMPARE(device.requested(), QStringList("GET"_text));
}

void TestStart::daemonUnknown_isAskedForNothingButTheKey()
{
    DeviceUnderTest device;
    device.daemon().failCallsOf("apiKey"_text, "org.freedesktop.DBus.Error.ServiceUnknown"_text, "gone"_text);

    QVERIFY(device.startServices() && device.startProgram());

    QCOMPARE(device.daemon().calls(), QStringList("apiKey"_text));
}

void TestStart::daemonStarts_isReadWhole()
{
    DeviceUnderTest device;
    QVERIFY(device.widgetManager().start() && device.startProgram());

    QVERIFY(device.daemon().start());

    EVENTUALLY_EQUAL(device.daemon().calls().size(), 4);
    QCOMPARE(device.daemon().calls(),
             QStringList({"apiKey"_text, "serial"_text, "remoteId"_text, "isInternetAvailable"_text}));
}

void TestStart::daemonRefusesTheKey_isWaitedFor()
{
    DeviceUnderTest device;
    device.daemon().failCallsOf("apiKey"_text, "org.freedesktop.DBus.Error.AccessDenied"_text, "no"_text);
    QVERIFY(device.startServices() && device.startProgram());
    QCOMPARE(device.daemon().calls(),
             QStringList({"apiKey"_text, "isInternetAvailable"_text, "serial"_text, "remoteId"_text}));

    // A key alone does not make up for a daemon that is not known to run.
    QVERIFY(device.setApiKey("early-key"_text));
    device.daemon().stop();
    device.daemon().answerCallsOf("apiKey"_text);
    device.daemon().setApiKeyQuietly("last-key"_text);
    device.server().setApiKey("last-key"_text);
    QVERIFY(device.daemon().start());

    EVENTUALLY_EQUAL(device.announced(), QStringList(started));
    QCOMPARE(device.server().requestCount(), 1);
    QVERIFY(carriesKey(device.server().requests().at(0), "last-key"));
}

void TestStart::widgetManagerAbsent_isComplainedOfAndWaitedFor()
{
    DeviceUnderTest device;
    QVERIFY(device.daemon().start() && device.startProgram());
    const QList<QByteArray> complaint = {
        "W/QWIXTD: QWixtApplicationManager: cant get widgets list The name widget.manager was not provided "
        "by any .service files"};
    EVENTUALLY_EQUAL(device.lines(), complaint);
    QCOMPARE(device.daemon().callCount("remoteId"_text), 1);

    QVERIFY(device.widgetManager().start());

    EVENTUALLY_EQUAL(device.announced(), QStringList(started));
    QCOMPARE(device.requested(), QStringList("GET"_text));
    QCOMPARE(device.lines(), complaint);
}

void TestStart::widgetManagerRefusesTheList_isWaitedFor()
{
    DeviceUnderTest device;
    device.widgetManager().failCallsOf("listOfInstalledWidgets"_text,
                                       "com.vorlet.widget_manager.Error.Busy"_text, "not yet"_text);
    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.lines(),
                     QList<QByteArray>{"W/QWIXTD: QWixtApplicationManager: cant get widgets list not yet"});

    QVERIFY(device.setApiKey("last-key"_text));
    device.widgetManager().stop();
    device.widgetManager().answerCallsOf("listOfInstalledWidgets"_text);
    QVERIFY(device.widgetManager().start());

    EVENTUALLY_EQUAL(device.announced(), QStringList(started));
    QCOMPARE(device.server().requestCount(), 1);
    QVERIFY(carriesKey(device.server().requests().at(0), "last-key"));
}

void TestStart::keyEmptyAndOnline_keySetFetchesTheList()
{
    DeviceUnderTest device;
    device.daemon().setApiKeyQuietly(""_text);
    QVERIFY(device.startServices() && device.startProgram());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QCOMPARE(device.server().requestCount(), 0);

    QVERIFY(device.setApiKey("fresh-key"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
}

void TestStart::keyEmptyAndOffline_nothingIsSentBeforeTheInternet()
{
    DeviceUnderTest device;
    device.daemon().setApiKeyQuietly(""_text);
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());

    QVERIFY(device.setApiKey("early-key"_text));
    QVERIFY(device.setApiKey("last-key"_text));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced(), QStringList(started));
    QCOMPARE(device.server().requestCount(), 1);
    QVERIFY(carriesKey(device.server().requests().at(0), "last-key"));
}

void TestStart::remoteIdEmpty_keySetReadsItAgain()
{
    DeviceUnderTest device;
    device.daemon().setRemoteId(""_text);
    QVERIFY(device.startServices() && device.startProgram());

    // Still without an id, which a key alone does not make up for.
    QVERIFY(device.setApiKey("fresh-key"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QCOMPARE(device.server().requestCount(), 0);
    device.daemon().setRemoteId("d10"_text);
    QVERIFY(device.setApiKey("fresh-key"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.requested(),
             QStringList({"GET"_text, "POST id=d10&identifier=u1&name=Clock&type=t"_text}));
}

void TestStart::offline_listIsFetchedWithTheInternet()
{
    DeviceUnderTest device;
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());

    QVERIFY(device.setApiKey("last-key"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
    QVERIFY(carriesKey(device.server().requests().at(0), "last-key"));
}

void TestStart::everythingLate_startsOnceWithTheLast()
{
    DeviceUnderTest device;
    device.daemon().setApiKeyQuietly(""_text);
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startProgram());

    QVERIFY(device.daemon().start());
    QVERIFY(device.setInternetAvailable(true));
    QVERIFY(device.setApiKey("early-key"_text));
    QVERIFY(device.setApiKey("last-key"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.widgetManager().start());

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
    QVERIFY(carriesKey(device.server().requests().at(0), "last-key"));
}

void TestStart::requestsBeforeReady_areSentAfterTheListInOrder()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u2"_text, "Radio"_text));
    QVERIFY(device.startProgram());

    QVERIFY(device.registerApplication("u3"_text, "Mail"_text, "t"_text));
    QVERIFY(device.deleteApplication("a1"_text, "u2"_text, "t"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    // Nothing is known of the server's applications yet, so that this one is registered.
    QVERIFY(device.updateApplication("a1"_text, "u2"_text, "Radio 2"_text, "t"_text));
    QVERIFY(device.startServices());

    EVENTUALLY_EQUAL(device.announced().size(), 5);
    QCOMPARE(device.requested(),
             QStringList({"GET"_text, "POST id=d9&identifier=u3&name=Mail&type=t"_text,
                          "DELETE app_id=a1&type=t"_text, "POST id=d9&identifier=u1&name=Clock&type=t"_text,
                          "POST id=d9&identifier=u2&name=Radio 2&type=t"_text}));
    QCOMPARE(device.announced(),
             QStringList({started, "applicationRegistered(u3, app-1, t)"_text,
                          "applicationDeleted(u2, a1, t)"_text, "applicationRegistered(u1, app-2, t)"_text,
                          "applicationRegistered(u2, app-3, t)"_text}));
}

void TestStart::daemonRestarts_listIsNotFetchedAgain()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.daemon().clearCalls();

    device.daemon().stop();
    QVERIFY(device.daemon().start());
    EVENTUALLY_EQUAL(device.daemon().calls().size(), 4);
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QCOMPARE(device.server().requestCount(), 2);
}

QTEST_GUILESS_MAIN(TestStart)
#include "tst_qwixtd_start.moc"
