#include "daemonservice.h"
#include "developerserver.h"
#include "httpsclient.h"
#include "privatebus.h"

#include <QtTest>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QElapsedTimer>
#include <QRegularExpression>

#include <curl/curl.h>

/// The ways in which the simulated server and services fail that only long random runs use.
class TestSimulatedTrouble : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();

    void faultOfServer_isAnsweredSo_data();
    void faultOfServer_isAnsweredSo();
    void refusalUnderAFaultOfSuccess_staysARefusal();
    void heldCall_isAnsweredLateWhileOthersAreAnswered();
    void holdingNoMore_answersAtOnce();
    void serviceThatStopsWithAHeldCall_leavesItWithoutAReply();

private:
    QDBusPendingReply<> ask(const QString &member) const;

    PrivateBus bus;
};

namespace
{
const auto registration = QByteArrayLiteral("id=d&identifier=u&name=n&type=t");
const auto madeBody = QByteArrayLiteral(R"({"app_id":"app-1","status":"registered"})");
constexpr int megabyte = 1024 * 1024;

HttpsClient::Result post(const DeveloperServer &server, const QByteArray &body)
{
    const HttpsClient client{QByteArray()};
    return client.send("POST", server.url(QStringLiteral("/api/v1/qwixt/apps")).toUtf8(),
                       {"Accept: application/json", "Authorization: Basic OmszeQ=="}, body);
}
} // namespace

void TestSimulatedTrouble::initTestCase()
{
    QVERIFY(bus.start());
}

void TestSimulatedTrouble::faultOfServer_isAnsweredSo_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("curlCode");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("applications");

    const auto row = [](const char *name, ServerFault::Kind kind, int curlCode, int status,
                        const QByteArray &body, int applications) {
        QTest::newRow(name) << static_cast<int>(kind) << curlCode << status << body << applications;
    };
    row("reset", ServerFault::Kind::ResetConnection, CURLE_RECV_ERROR, 0, {}, 0);
    row("created", ServerFault::Kind::OtherSuccess, CURLE_OK, 201, madeBody, 1);
    row("empty", ServerFault::Kind::EmptyBody, CURLE_OK, 200, {}, 1);
    row("large", ServerFault::Kind::LargeBody, CURLE_OK, 200, madeBody + QByteArray(megabyte, ' '), 1);
    row("cut off", ServerFault::Kind::CutOffBody, CURLE_PARTIAL_FILE, 200, madeBody.left(20), 1);
}

void TestSimulatedTrouble::faultOfServer_isAnsweredSo()
{
    QFETCH(int, kind);
    QFETCH(int, curlCode);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(int, applications);
    DeveloperServer server;
    server.setApiKey(QStringLiteral("k3y"));
    QVERIFY(server.start());
    ServerFault fault;
    fault.kind = static_cast<ServerFault::Kind>(kind);
    fault.status = status;
    server.failNext(1, fault);

    const HttpsClient::Result result = post(server, registration);

    QCOMPARE(result.code, curlCode);
    QCOMPARE(result.status, status);
    QCOMPARE(result.body, body);
    QCOMPARE(static_cast<int>(server.applications().size()), applications);
}

void TestSimulatedTrouble::refusalUnderAFaultOfSuccess_staysARefusal()
{
    DeveloperServer server;
    server.setApiKey(QStringLiteral("k3y"));
    QVERIFY(server.start());
    server.failNext(1, ServerFault::withOtherSuccess(201));

    const HttpsClient::Result result = post(server, "id=d");

    QCOMPARE(result.status, 400);
}

QDBusPendingReply<> TestSimulatedTrouble::ask(const QString &member) const
{
    QDBusConnection connection =
        QDBusConnection::connectToBus(bus.address(), QStringLiteral("simulatedtrouble"));
    return connection.asyncCall(
        QDBusMessage::createMethodCall(QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
                                       QStringLiteral("com.vorlet.daemon.general"), member));
}

void TestSimulatedTrouble::heldCall_isAnsweredLateWhileOthersAreAnswered()
{
    DaemonService service(bus.address());
    QVERIFY(service.start());
    service.holdCallsOf(QStringLiteral("apiKey"), 700);
    QElapsedTimer elapsed;
    elapsed.start();

    QDBusPendingReply<> held = ask(QStringLiteral("apiKey"));
    QDBusPendingReply<> other = ask(QStringLiteral("serial"));
    other.waitForFinished();
    const bool otherCameFirst = !held.isFinished();
    held.waitForFinished();

    QVERIFY(otherCameFirst);
    QVERIFY(!held.isError());
    QVERIFY2(elapsed.elapsed() >= 700, qPrintable(QString::number(elapsed.elapsed())));
}

void TestSimulatedTrouble::holdingNoMore_answersAtOnce()
{
    DaemonService service(bus.address());
    QVERIFY(service.start());
    service.holdCallsOf(QStringLiteral("apiKey"), 60000);
    service.holdCallsOf(QStringLiteral("apiKey"), 0);

    QDBusPendingReply<> reply = ask(QStringLiteral("apiKey"));
    reply.waitForFinished();

    QVERIFY(!reply.isError());
}

void TestSimulatedTrouble::serviceThatStopsWithAHeldCall_leavesItWithoutAReply()
{
    DaemonService service(bus.address());
    QVERIFY(service.start());
    service.holdCallsOf(QStringLiteral("apiKey"), 60000);
    QDBusPendingReply<> held = ask(QStringLiteral("apiKey"));
    QTRY_COMPARE(service.callCount(QStringLiteral("apiKey")), 1);

    service.stop();
    held.waitForFinished();

    QCOMPARE(held.error().type(), QDBusError::NoReply);
    QCOMPARE(held.error().message(), QStringLiteral("The service went without an answer"));
}

QTEST_GUILESS_MAIN(TestSimulatedTrouble)
#include "tst_simulatedtrouble.moc"
