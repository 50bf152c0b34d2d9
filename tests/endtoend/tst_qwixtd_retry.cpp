#include "deviceundertest.h"

/// Requests that fail once are sent again five seconds later.
class TestRetry : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void failedOnce_isSentAgainAfterFiveSeconds_data();
    void failedOnce_isSentAgainAfterFiveSeconds();
    void failedTwice_isSentAThirdTime();
    void answerLost_isSentAgainAndTheServerHoldsTwo();
};

void TestRetry::failedOnce_isSentAgainAfterFiveSeconds_data()
{
    QTest::addColumn<bool>("isClosed");
    QTest::addColumn<QByteArray>("failed");

    QTest::newRow("server too busy") << false << QByteArray("POST");
    QTest::newRow("connection closed") << true << QByteArray("POST");
    QTest::newRow("list") << false << QByteArray("GET");
}

void TestRetry::failedOnce_isSentAgainAfterFiveSeconds()
{
    QFETCH(bool, isClosed);
    QFETCH(QByteArray, failed);
    DeviceUnderTest device;
    const ServerFault fault = isClosed ? ServerFault::withClosedConnection() : ServerFault::withStatus(503);
    const bool isList = failed == "GET";
    if (isList) {
        device.server().failNext(1, fault);
    }
    QVERIFY(isList ? device.startServices() && device.startProgram() : device.startAll());
    if (!isList) {
        device.server().failNext(1, fault);
    }

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    const QList<HttpRequest> requests = device.server().requests();
    QCOMPARE(requests.size(), 3);
    const HttpRequest &first = requests.at(isList ? 0 : 1);
    const HttpRequest &second = requests.at(isList ? 1 : 2);
    QCOMPARE(second.method, failed);
    QCOMPARE(second.body, first.body);
    QCOMPARE(second.header("Authorization"), first.header("Authorization"));
    const qint64 pauseMs = second.receivedAtMs - first.answeredAtMs;
    QVERIFY2(isRetryPause(pauseMs), QByteArray::number(pauseMs).constData());
}

void TestRetry::failedTwice_isSentAThirdTime()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withStatus(500));
    device.server().failNext(1, ServerFault::withStatus(301)); // leads nowhere

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    const QList<HttpRequest> requests = device.server().requests();
    QCOMPARE(requests.size(), 4);
    const qint64 pauseMs = requests.at(3).receivedAtMs - requests.at(2).answeredAtMs;
    QVERIFY2(isRetryPause(pauseMs), QByteArray::number(pauseMs).constData());
}

void TestRetry::answerLost_isSentAgainAndTheServerHoldsTwo()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withCutOffBody()); // it has done by then what was asked

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-2, t)"_text}));
    const QList<HttpRequest> requests = device.server().requests();
    QCOMPARE(requests.size(), 3);
    QCOMPARE(requests.at(2).body, requests.at(1).body);
    const QList<ServerApplication> held = device.server().applications();
    QCOMPARE(held.size(), 2);
    for (const ServerApplication &application : held) {
        QCOMPARE(application.identifier, "u1"_text);
    }
}

QTEST_GUILESS_MAIN(TestRetry)
#include "tst_qwixtd_retry.moc"
