#include "deviceundertest.h"

#include <QSet>

/// Requests and retries across losses of the internet.
class TestOffline : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void queuedOffline_leavesInOrderOneAtATime();
    void requestsOfTwoOfflineTimes_keepTheirOrder();
    void answerArrivesOffline_isAnnouncedAndNotSentAgain();
    void retryDueOffline_goesOutWithTheInternet();
    void retryNotYetDue_waitsItsTimeThroughALoss();
    void listRetryOffline_isSentAllTheSame();
    void keyChangesBeforeARetry_requestKeepsItsKey();
};

namespace
{
// How many different connections the requests came by.
int connectionCount(const QList<HttpRequest> &requests)
{
    QSet<int> ports;
    for (const HttpRequest &request : requests) {
        ports.insert(request.remotePort);
    }
    return static_cast<int>(ports.size());
}
} // namespace

void TestOffline::queuedOffline_leavesInOrderOneAtATime()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    QVERIFY(device.setInternetAvailable(false));
    QStringList expected;
    for (int i = 0; i < 12; ++i) {
        // Ids in falling order, so that no sorting passes for the order of arrival.
        const QString uuid = QStringLiteral("w%1").arg(99 - i);
        QVERIFY(device.registerApplication(uuid, "Name"_text, "t"_text));
        expected.append(QStringLiteral("POST id=d9&identifier=%1&name=Name&type=t").arg(uuid));
    }
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    expected.append("PUT app_id=a1&name=Watch&type=t"_text);
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    expected.append("DELETE app_id=a1&type=t"_text);
    QVERIFY(device.registerApplication("w00"_text, "Name"_text, "t"_text));
    expected.append("POST id=d9&identifier=w00&name=Name&type=t"_text);

    // The key shows whether a request was built after the loss or before.
    QVERIFY(device.setApiKey("last-key"_text));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced().size(), 15);
    QCOMPARE(device.requested().mid(1), expected);
    const QList<HttpRequest> requests = device.server().requests().mid(1);
    for (const HttpRequest &request : requests) {
        QCOMPARE(request.header("Authorization"), QByteArray("Basic Omxhc3Qta2V5"));
    }
    QCOMPARE(device.server().maximumConcurrent(), 1);
    QCOMPARE(connectionCount(device.server().requests()), 16);
}

void TestOffline::requestsOfTwoOfflineTimes_keepTheirOrder()
{
    DeviceUnderTest device;
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());
    QVERIFY(device.registerApplication("u3"_text, "Name"_text, "t"_text));
    device.server().failNext(1, ServerFault::withDelay(60000));
    QVERIFY(device.setInternetAvailable(true));
    EVENTUALLY_EQUAL(device.server().requestCount(), 1);
    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.registerApplication("u1"_text, "Name"_text, "t"_text));
    QVERIFY(device.setInternetAvailable(true));
    QVERIFY(device.registerApplication("u2"_text, "Name"_text, "t"_text));
    QCOMPARE(device.server().requestCount(), 1);

    device.server().clearFaults();

    EVENTUALLY_EQUAL(device.announced().size(), 4);
    QCOMPARE(device.requested(), QStringList({"GET"_text, "POST id=d9&identifier=u3&name=Name&type=t"_text,
                                              "POST id=d9&identifier=u1&name=Name&type=t"_text,
                                              "POST id=d9&identifier=u2&name=Name&type=t"_text}));
}

void TestOffline::answerArrivesOffline_isAnnouncedAndNotSentAgain()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);

    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    device.server().clearFaults();
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced().size(), 3);
    QCOMPARE(device.requested().mid(1), QStringList({"POST id=d9&identifier=u1&name=Clock&type=t"_text,
                                                     "POST id=d9&identifier=u2&name=Radio&type=t"_text}));
}

void TestOffline::retryDueOffline_goesOutWithTheInternet()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(2, ServerFault::withStatus(503));
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('W').size(), 2);

    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.registerApplication("u3"_text, "Mail"_text, "t"_text));
    QTest::qWait(retryGraceMs);
    QCOMPARE(device.server().requestCount(), 3);
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced().size(), 4);
    QCOMPARE(device.requested().mid(3), QStringList({"POST id=d9&identifier=u2&name=Radio&type=t"_text,
                                                     "POST id=d9&identifier=u1&name=Clock&type=t"_text,
                                                     "POST id=d9&identifier=u3&name=Mail&type=t"_text}));
}

void TestOffline::retryNotYetDue_waitsItsTimeThroughALoss()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withStatus(503));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('W').size(), 1);

    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    const QList<HttpRequest> requests = device.server().requests();
    QCOMPARE(requests.size(), 3);
    const qint64 pauseMs = requests.at(2).receivedAtMs - requests.at(1).answeredAtMs;
    QVERIFY2(isRetryPause(pauseMs), QByteArray::number(pauseMs).constData());
}

void TestOffline::listRetryOffline_isSentAllTheSame()
{
    DeviceUnderTest device;
    device.server().failNext(1, ServerFault::withStatus(503));
    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.lines('W').size(), 1);

    QVERIFY(device.setInternetAvailable(false));

    // The list alone is fetched whatever the state; it leads on when the internet is back.
    EVENTUALLY_EQUAL(device.requested(), QStringList({"GET"_text, "GET"_text}));
    QVERIFY(device.setInternetAvailable(true));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY(device.announced().contains("applicationRegistered(u1, app-1, t)"_text));
    QCOMPARE(device.requested().count("GET"_text), 2);
}

void TestOffline::keyChangesBeforeARetry_requestKeepsItsKey()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().setApiKey("not-yet-given-out"_text);
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('W').size(), 1);

    QVERIFY(device.setApiKey("next-key"_text));
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));

    EVENTUALLY_EQUAL(device.server().requestCount(), 4);
    const QList<HttpRequest> requests = device.server().requests();
    QCOMPARE(requests.at(2).header("Authorization"), QByteArray("Basic Om5leHQta2V5"));
    // Built before the key changed, and kept as it was built.
    QCOMPARE(requests.at(3).body, requests.at(1).body);
    QCOMPARE(requests.at(3).header("Authorization"), requests.at(1).header("Authorization"));
}

QTEST_GUILESS_MAIN(TestOffline)
#include "tst_qwixtd_offline.moc"
