#include "deviceundertest.h"

/// What the program as it is shipped writes to standard error, to the letter.
class TestLogLines : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void request_hasItsLines_data();
    void request_hasItsLines();
    void requestsQueuedBeforeReady_writeTheirOutcomeAlone();
    void refusedList_isWritten();
    void refusedRequest_isWrittenWithItsStatus_data();
    void refusedRequest_isWrittenWithItsStatus();
    void serverThatIsGone_isWrittenAsAnError();
    void serverOfAnUnknownAuthority_isNotTrusted();
    void underTheJournal_linesBeginWithTheirPriority();
    void foreignTextInALine_staysOnOneLine_data();
    void foreignTextInALine_staysOnOneLine();
    void serversTextInALine_staysOnOneLine();
    void longLine_isCut();
    void standardOutput_staysEmpty();
};

namespace
{
const ServerApplication listed = listedApplication("a1"_text, "u1"_text);

QByteArray urlOf(DeviceUnderTest &device)
{
    return "https://" + device.server().host().toLatin1() + "/api/v1/qwixt/apps";
}
} // namespace

void TestLogLines::request_hasItsLines_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QList<QByteArray>>("lines");

    const QByteArray manager = "I/QWIXTD: QWixtApplicationManager: ";
    const QByteArray registered = manager + "Application registered with status registered";
    QTest::newRow("registration") << "registerQwixtApplication"_text
                                  << QVariantList{"u2"_text, "Radio"_text, "t"_text}
                                  << QList<QByteArray>{manager + "added register app task", registered};
    QTest::newRow("update") << "updateQwixtApplication"_text
                            << QVariantList{"a1"_text, "u1"_text, "Watch"_text, "t"_text}
                            << QList<QByteArray>{manager + "added update app task",
                                                 manager + "Application updated"};
    QTest::newRow("update that changes nothing")
        << "updateQwixtApplication"_text << QVariantList{"a1"_text, "u1"_text, "Clock"_text, "t"_text}
        << QList<QByteArray>{manager + "application is not changed"};
    QTest::newRow("update of an unknown application")
        << "updateQwixtApplication"_text << QVariantList{"a9"_text, "u3"_text, "Mail"_text, "t"_text}
        << QList<QByteArray>{"W/QWIXTD: No remote info about application a9 register one more time",
                             manager + "added register app task", registered};
    QTest::newRow("deletion") << "deleteQwixtApplication"_text << QVariantList{"a1"_text, "u1"_text, "t"_text}
                              << QList<QByteArray>{manager + "added delete app task",
                                                   manager + "Application deleted"};
}

void TestLogLines::request_hasItsLines()
{
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    QFETCH(QList<QByteArray>, lines);
    DeviceUnderTest device;
    device.server().addApplication(listed);
    QVERIFY(device.startAll());
    QCOMPARE(device.lines(), QList<QByteArray>());

    QVERIFY(device.isAnsweredEmpty(member, arguments));

    EVENTUALLY_EQUAL(device.lines(), lines);
}

void TestLogLines::requestsQueuedBeforeReady_writeTheirOutcomeAlone()
{
    DeviceUnderTest device;
    device.daemon().setInternetAvailable(false);
    QVERIFY(device.startServices() && device.startProgram());
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));

    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(device.lines().size(), 2);
    QCOMPARE(device.lines().at(0),
             QByteArray("I/QWIXTD: QWixtApplicationManager: Application registered with status registered"));
    // The server has no such application.
    QCOMPARE(device.lines().at(1), "W/QWIXTD: FetchTask: DELETE Status=404 Url=" + urlOf(device));
}

void TestLogLines::refusedList_isWritten()
{
    DeviceUnderTest device;
    device.server().failNext(1, ServerFault::withStatus(400));

    QVERIFY(device.startServices() && device.startProgram());

    EVENTUALLY_EQUAL(device.lines(),
                     QList<QByteArray>{"W/QWIXTD: FetchTask: GET Status=400 Url=" + urlOf(device)});
}

void TestLogLines::refusedRequest_isWrittenWithItsStatus_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("registration") << "registerQwixtApplication"_text
                                  << QVariantList{"u2"_text, "Radio"_text, "t"_text} << 503
                                  << QByteArray("POST Status=503");
    QTest::newRow("update") << "updateQwixtApplication"_text
                            << QVariantList{"a1"_text, "u1"_text, "Watch"_text, "t"_text} << 401
                            << QByteArray("PUT Status=401");
    QTest::newRow("deletion") << "deleteQwixtApplication"_text << QVariantList{"a1"_text, "u1"_text, "t"_text}
                              << 500 << QByteArray("DELETE Status=500");
}

void TestLogLines::refusedRequest_isWrittenWithItsStatus()
{
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    QFETCH(int, status);
    QFETCH(QByteArray, line);
    DeviceUnderTest device;
    device.server().addApplication(listed);
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withStatus(status));

    QVERIFY(device.isAnsweredEmpty(member, arguments));

    EVENTUALLY(device.hasLine("W/QWIXTD: FetchTask: " + line + " Url=" + urlOf(device)));
}

void TestLogLines::serverThatIsGone_isWrittenAsAnError()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().stop();

    QVERIFY(device.registerApplication("u3"_text, "Mail"_text, "t"_text));

    EVENTUALLY(device.hasLine("E/QWIXTD: FetchTask: [Error] 7 " + urlOf(device) +
                              curlsWords(CURLE_COULDNT_CONNECT)));
}

void TestLogLines::serverOfAnUnknownAuthority_isNotTrusted()
{
    DeviceUnderTest device;
    QwixtdProcess stranger(QStringLiteral(QWIXTD_PROGRAM), "/dev/null"_text);
    QVERIFY(device.startServices());

    QVERIFY(stranger.start(device.bus().address(), device.server().host()));

    EVENTUALLY(!stranger.errorLines().isEmpty());
    const QByteArray beginning = "E/QWIXTD: FetchTask: [Error] ";
    const QByteArray line = stranger.errorLines().at(0);
    // Without any authority the library says so (77) or finds the certificate wanting (60).
    QVERIFY2(line.startsWith(beginning + "60 " + urlOf(device)) ||
                 line.startsWith(beginning + "77 " + urlOf(device)),
             line.constData());
    QCOMPARE(device.server().requestCount(), 0);
}

void TestLogLines::underTheJournal_linesBeginWithTheirPriority()
{
    DeviceUnderTest device;
    device.server().addApplication(listed);
    device.program().setEnvironment("JOURNAL_STREAM"_text, "8:12345"_text);
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Clock"_text, "t"_text));
    device.server().failNext(1, ServerFault::withStatus(503));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines().size(), 3);
    device.server().stop();
    QVERIFY(device.deleteApplication("a2"_text, "u2"_text, "t"_text));

    EVENTUALLY_EQUAL(device.lines(),
                     QList<QByteArray>({"<6>I/QWIXTD: QWixtApplicationManager: application is not changed",
                                        "<6>I/QWIXTD: QWixtApplicationManager: added delete app task",
                                        "<4>W/QWIXTD: FetchTask: DELETE Status=503 Url=" + urlOf(device),
                                        "<6>I/QWIXTD: QWixtApplicationManager: added delete app task",
                                        "<3>E/QWIXTD: FetchTask: [Error] 7 " + urlOf(device) +
                                            curlsWords(CURLE_COULDNT_CONNECT)}));
}

void TestLogLines::foreignTextInALine_staysOnOneLine_data()
{
    QTest::addColumn<QString>("appId");
    QTest::addColumn<QByteArray>("shown");

    QTest::newRow("line feed") << "a\nE/QWIXTD: forged"_text << QByteArray("a E/QWIXTD: forged");
    QTest::newRow("carriage return") << "a\rb\r\nc"_text << QByteArray("a b  c");
    QTest::newRow("escape sequence") << "\x1b[2Ja\x1b[31m"_text << QByteArray(" [2Ja [31m");
    QTest::newRow("all others") << "\x01\x07\x08\t\x0b\x0c\x1f\x7f."_text << QByteArray("        .");
    QTest::newRow("places of a format") << "%s%n%d%%"_text << QByteArray("%s%n%d%%");
    QTest::newRow("priority") << "\n<0>a"_text << QByteArray(" <0>a");
}

void TestLogLines::foreignTextInALine_staysOnOneLine()
{
    QFETCH(QString, appId);
    QFETCH(QByteArray, shown);
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication(appId, "u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(
        device.lines(),
        QList<QByteArray>({"W/QWIXTD: No remote info about application " + shown + " register one more time",
                           "I/QWIXTD: QWixtApplicationManager: added register app task",
                           "I/QWIXTD: QWixtApplicationManager: Application registered with "
                           "status registered"}));
}

void TestLogLines::serversTextInALine_staysOnOneLine()
{
    DeviceUnderTest device;
    device.server().setScript([](const HttpRequest &request) -> std::optional<HttpAnswer> {
        if (request.method != "POST") {
            return std::nullopt;
        }
        HttpAnswer answer;
        answer.body = R"({"app_id":"a1","status":"fine\nE/QWIXTD: forged\u001b[0m %s"})";
        return answer;
    });
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.lines().mid(1),
                     QList<QByteArray>{"I/QWIXTD: QWixtApplicationManager: Application registered with "
                                       "status fine E/QWIXTD: forged [0m %s"});
}

void TestLogLines::longLine_isCut()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.updateApplication(QString(300, QLatin1Char('x')), "u1"_text, "Clock"_text, "t"_text));

    const QByteArray text = "No remote info about application ";
    EVENTUALLY_EQUAL(device.lines('W'), QList<QByteArray>{text + QByteArray(254 - text.size(), 'x')});
}

void TestLogLines::standardOutput_staysEmpty()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    QVERIFY(device.updateApplication("a9"_text, "u3"_text, "Mail"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines().size(), 3);

    QByteArray lines = device.lines().join('\n') + '\n';

    QCOMPARE(device.program().output(), lines);
}

QTEST_GUILESS_MAIN(TestLogLines)
#include "tst_qwixtd_loglines.moc"
