#include "deviceundertest.h"

/// What the daemon sends, and keeps to itself, for requests and widgets, given what the server holds.
class TestRecords : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sameRegistrationWhilePending_isSentOnce();
    void sameRegistrationAfterTheReply_isSentAgain();
    void otherRegistrationOfTheWidget_isSentToo();
    void registered_isKnownAfterwards();
    void updateWithEqualValues_sendsNothing();
    void updateOfOneValue_isSent_data();
    void updateOfOneValue_isSent();
    void sameUpdateAgain_sendsNothing();
    void sameUpdateWhilePending_isSentOnce();
    void typeUpdated_recordKeepsItsType();
    void updateOfAnUnlistedApplication_registersIt();
    void deleted_isUnknownAfterwards();
    void sameDeletionWhilePending_isSentAgain();
    void widgetWithTwoApplications_losesBoth();
    void widgetWithoutApplication_sendsNothing();
    void applicationsWithoutWidget_areDeletedWithTheList();
    void otherDevicesApplications_areLeftAlone();
    void secondOfTwoEqualIds_isLeftOut();
    void deletionAnswered404_isDoneButTheRecordStays();
    void differentRequestsOfOneWidget_allGoOut();
};

namespace
{
// The registration that follows what must send nothing: once it is at the server, nothing came before it.
constexpr auto nextRequest = "POST id=d9&identifier=next&name=&type=";

bool sendNextRequest(DeviceUnderTest &device)
{
    return device.registerApplication("next"_text, ""_text, ""_text);
}

const QByteArray notChanged = "I/QWIXTD: QWixtApplicationManager: application is not changed";
} // namespace

void TestRecords::sameRegistrationWhilePending_isSentOnce()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(sendNextRequest(device));
    device.server().clearFaults();

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text,
                                                      "applicationRegistered(next, app-2, )"_text}));
    QCOMPARE(device.server().requestCount(), 3);
}

void TestRecords::sameRegistrationAfterTheReply_isSentAgain()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text,
                                                      "applicationRegistered(u1, app-2, t)"_text}));
    QCOMPARE(device.requested().mid(1), QStringList({"POST id=d9&identifier=u1&name=Clock&type=t"_text,
                                                     "POST id=d9&identifier=u1&name=Clock&type=t"_text}));
}

void TestRecords::otherRegistrationOfTheWidget_isSentToo()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "other"_text));
    QVERIFY(device.registerApplication("u1"_text, "Watch"_text, "t"_text));
    device.server().clearFaults();

    EVENTUALLY_EQUAL(device.announced().mid(1), QStringList({"applicationRegistered(u1, app-1, t)"_text,
                                                             "applicationRegistered(u1, app-2, other)"_text,
                                                             "applicationRegistered(u1, app-3, t)"_text}));
}

void TestRecords::registered_isKnownAfterwards()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.announced().size(), 2);

    QVERIFY(device.updateApplication("app-1"_text, "u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.updateApplication("app-1"_text, "u1"_text, "Watch"_text, "t"_text));

    EVENTUALLY_EQUAL(device.requested().mid(2), QStringList("PUT app_id=app-1&name=Watch&type=t"_text));
    EVENTUALLY(device.hasLine(notChanged));
}

void TestRecords::updateWithEqualValues_sendsNothing()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));
    QVERIFY(sendNextRequest(device));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1), QStringList(QString::fromLatin1(nextRequest)));
    EVENTUALLY(device.hasLine(notChanged));
}

void TestRecords::updateOfOneValue_isSent_data()
{
    QTest::addColumn<QString>("uuid");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("request");

    QTest::newRow("name") << "u1"_text
                          << "Watch"_text
                          << "t"_text
                          << "PUT app_id=a1&name=Watch&type=t"_text;
    QTest::newRow("type") << "u1"_text
                          << "Clock"_text
                          << "other"_text
                          << "PUT app_id=a1&name=Clock&type=other"_text;
    QTest::newRow("widget") << "u2"_text
                            << "Clock"_text
                            << "t"_text
                            << "PUT app_id=a1&name=Clock&type=t"_text;
    QTest::newRow("name in other letters") << "u1"_text
                                           << "clock"_text
                                           << "t"_text
                                           << "PUT app_id=a1&name=clock&type=t"_text;
}

void TestRecords::updateOfOneValue_isSent()
{
    QFETCH(QString, uuid);
    QFETCH(QString, name);
    QFETCH(QString, type);
    QFETCH(QString, request);
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication("a1"_text, uuid, name, type));

    EVENTUALLY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application updated"));
    QCOMPARE(device.requested().mid(1), QStringList(request));
    QCOMPARE(device.announced(), QStringList(started));
}

void TestRecords::sameUpdateAgain_sendsNothing()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    EVENTUALLY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application updated"));

    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(sendNextRequest(device));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1),
             QStringList({"PUT app_id=a1&name=Watch&type=t"_text, QString::fromLatin1(nextRequest)}));
}

void TestRecords::sameUpdateWhilePending_isSentOnce()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));

    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Timer"_text, "t"_text));
    QVERIFY(sendNextRequest(device));
    device.server().clearFaults();

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1),
             QStringList({"PUT app_id=a1&name=Watch&type=t"_text, "PUT app_id=a1&name=Timer&type=t"_text,
                          QString::fromLatin1(nextRequest)}));
}

void TestRecords::typeUpdated_recordKeepsItsType()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "other"_text));
    EVENTUALLY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application updated"));

    // The record has the old type, on purpose: the same update goes out again, and the old values do not.
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "other"_text));
    QVERIFY(sendNextRequest(device));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1),
             QStringList({"PUT app_id=a1&name=Clock&type=other"_text,
                          "PUT app_id=a1&name=Clock&type=other"_text, QString::fromLatin1(nextRequest)}));
    EVENTUALLY(device.hasLine(notChanged));
}

void TestRecords::updateOfAnUnlistedApplication_registersIt()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication("a99"_text, "u2"_text, "Radio"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u2, app-1, t)"_text}));
    QCOMPARE(device.requested().mid(1), QStringList("POST id=d9&identifier=u2&name=Radio&type=t"_text));
    QVERIFY(device.hasLine("W/QWIXTD: No remote info about application a99 register one more time"));
}

void TestRecords::deleted_isUnknownAfterwards()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u1, a1, t)"_text}));

    QVERIFY(device.deleteWidget("u1"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced().size(), 3);
    QCOMPARE(device.requested().mid(1), QStringList({"DELETE app_id=a1&type=t"_text,
                                                     "POST id=d9&identifier=u1&name=Clock&type=t"_text}));
}

void TestRecords::sameDeletionWhilePending_isSentAgain()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));

    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.server().requestCount(), 2);
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    QVERIFY(sendNextRequest(device));
    device.server().clearFaults();

    // The second finds nothing at the server, which counts as done.
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u1, a1, t)"_text,
                                                      "applicationDeleted(u1, a1, t)"_text,
                                                      "applicationRegistered(next, app-1, )"_text}));
    QCOMPARE(device.requested().mid(1),
             QStringList({"DELETE app_id=a1&type=t"_text, "DELETE app_id=a1&type=t"_text,
                          QString::fromLatin1(nextRequest)}));
}

void TestRecords::widgetWithTwoApplications_losesBoth()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("b2"_text, "u1"_text));
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    device.server().addApplication(listedApplication("c3"_text, "u2"_text));
    QVERIFY(device.startAll());

    QVERIFY(device.deleteWidget("u1"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u1, a1, )"_text,
                                                      "applicationDeleted(u1, b2, )"_text}));
    QCOMPARE(device.requested().mid(1),
             QStringList({"DELETE app_id=a1&type="_text, "DELETE app_id=b2&type="_text}));
    QCOMPARE(device.server().applications().size(), 1);
}

void TestRecords::widgetWithoutApplication_sendsNothing()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());

    QVERIFY(device.deleteWidget("u2"_text));
    QVERIFY(sendNextRequest(device));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1), QStringList(QString::fromLatin1(nextRequest)));
}

void TestRecords::applicationsWithoutWidget_areDeletedWithTheList()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    device.server().addApplication({"d9"_text, "a4"_text, "gone-b"_text, "B"_text, "type-b"_text});
    device.server().addApplication({"d9"_text, "a3"_text, "gone-a"_text, "A"_text, "type-a"_text});
    // The widget's id counts letter for letter.
    device.server().addApplication({"d9"_text, "a2"_text, "U1"_text, "A"_text, ""_text});

    QVERIFY(device.startAll());

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(U1, a2, )"_text,
                                                      "applicationDeleted(gone-a, a3, type-a)"_text,
                                                      "applicationDeleted(gone-b, a4, type-b)"_text}));
    QCOMPARE(device.requested(),
             QStringList({"GET"_text, "DELETE app_id=a2&type="_text, "DELETE app_id=a3&type=type-a"_text,
                          "DELETE app_id=a4&type=type-b"_text}));
    QCOMPARE(device.server().applications().size(), 1);
}

void TestRecords::otherDevicesApplications_areLeftAlone()
{
    DeviceUnderTest device;
    device.server().addApplication({"d10"_text, "a1"_text, "gone"_text, "Clock"_text, "t"_text});
    device.server().addApplication({"d10"_text, "a2"_text, "u1"_text, "Clock"_text, "t"_text});
    device.server().addApplication({""_text, "a3"_text, "u1"_text, "Clock"_text, "t"_text});
    QVERIFY(device.startAll());

    // Unknown here, though it is listed with this widget's id.
    QVERIFY(device.deleteWidget("u1"_text));
    QVERIFY(device.updateApplication("a2"_text, "next"_text, ""_text, ""_text));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1), QStringList(QString::fromLatin1(nextRequest)));
}

void TestRecords::secondOfTwoEqualIds_isLeftOut()
{
    DeviceUnderTest device;
    device.server().setScript([](const HttpRequest &request) -> std::optional<HttpAnswer> {
        if (request.method != "GET") {
            return std::nullopt;
        }
        HttpAnswer answer;
        answer.body = R"({"apps":[
            {"device_id":"d10","app_id":"a1","identifier":"gone","name":"Other","type":"t"},
            {"device_id":"d9","app_id":"a1","identifier":"u1","name":"First","type":"t"},
            {"device_id":"d9","app_id":"a1","identifier":"gone","name":"Second","type":"t"}]})";
        return answer;
    });
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "First"_text, "t"_text));
    QVERIFY(sendNextRequest(device));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    QCOMPARE(device.requested().mid(1), QStringList(QString::fromLatin1(nextRequest)));
    QVERIFY(device.hasLine(notChanged));
}

void TestRecords::deletionAnswered404_isDoneButTheRecordStays()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    QVERIFY(device.server().removeApplication("a1"_text));

    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationDeleted(u1, a1, t)"_text}));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.deleteWidget("u1"_text));

    EVENTUALLY_EQUAL(device.announced().mid(2), QStringList("applicationDeleted(u1, a1, )"_text));
    QCOMPARE(device.requested().mid(1),
             QStringList({"DELETE app_id=a1&type=t"_text, "DELETE app_id=a1&type="_text}));
    QVERIFY(device.hasLine(notChanged));
    QVERIFY(!device.hasLine("I/QWIXTD: QWixtApplicationManager: Application deleted"));
}

void TestRecords::differentRequestsOfOneWidget_allGoOut()
{
    DeviceUnderTest device;
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    device.server().clearFaults();

    EVENTUALLY_EQUAL(device.announced().mid(1), QStringList({"applicationRegistered(u1, app-1, t)"_text,
                                                             "applicationDeleted(u1, a1, t)"_text}));
    QCOMPARE(device.requested().mid(1),
             QStringList({"POST id=d9&identifier=u1&name=Clock&type=t"_text,
                          "PUT app_id=a1&name=Watch&type=t"_text, "DELETE app_id=a1&type=t"_text}));
}

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_qwixtd_records.moc"
