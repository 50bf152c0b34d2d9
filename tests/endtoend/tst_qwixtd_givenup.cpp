#include "deviceundertest.h"

/// Requests that the server refuses for good are sent once, and those that it can do nothing for are not
/// lost.
class TestGivenUp : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void refusedForGood_isNotSentAgain();
    void listRefusedForGood_isNotFetchedAgain();
};

void TestGivenUp::refusedForGood_isNotSentAgain()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    device.server().setScript([](const HttpRequest &request) -> std::optional<HttpAnswer> {
        // The name or the id says what it wants to be answered with.
        for (const int status : {400, 404}) {
            if (request.body.contains("answer-" + QByteArray::number(status))) {
                HttpAnswer answer;
                answer.status = status;
                answer.body = R"({"app_id":"wrong"})";
                return answer;
            }
        }
        return std::nullopt;
    });

    QVERIFY(device.registerApplication("u1"_text, "answer-400"_text, "t"_text));
    QVERIFY(device.registerApplication("u1"_text, "answer-404"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "answer-400"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "answer-404"_text, "t"_text));
    QVERIFY(device.deleteApplication("answer-400"_text, "u2"_text, "t"_text));
    QVERIFY(device.deleteApplication("answer-404"_text, "u2"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 7);
    QTest::qWait(retryGraceMs);

    // A deletion of what the server does not know is done; nothing is said of the others.
    QCOMPARE(device.announced(), QStringList({started, "applicationDeleted(u2, answer-404, t)"_text}));
    QCOMPARE(device.server().requestCount(), 7);
    // Given up, they are not in the way of the same requests, and left the record as it was.
    QVERIFY(device.registerApplication("u1"_text, "answer-400"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "answer-404"_text, "t"_text));
    EVENTUALLY_EQUAL(device.requested().mid(7),
                     QStringList({"POST id=d9&identifier=u1&name=answer-400&type=t"_text,
                                  "PUT app_id=a1&name=answer-404&type=t"_text}));
}

void TestGivenUp::listRefusedForGood_isNotFetchedAgain()
{
    DeviceUnderTest device;
    device.server().failNext(1, ServerFault::withStatus(404));

    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.lines('W').size(), 1);
    QTest::qWait(retryGraceMs);
    QCOMPARE(device.requested(), QStringList("GET"_text));
    QCOMPARE(device.announced(), QStringList());

    // It takes a loss of the internet to ask anew.
    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.setInternetAvailable(true));
    EVENTUALLY_EQUAL(device.announced(), QStringList(started));
}

QTEST_GUILESS_MAIN(TestGivenUp)
#include "tst_qwixtd_givenup.moc"
