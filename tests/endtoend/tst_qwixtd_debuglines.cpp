#include "deviceundertest.h"

#include <QRegularExpression>

#include <functional>
#include <vector>

/// The debug and verbose lines of a build that has them, to the letter.
class TestDebugLines : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stateChanges_areWritten_data();
    void stateChanges_areWritten();
    void stateChangesOfARunningDaemon_areWritten();
    void eventsThatChangeNoState_writeNothing();
    void requests_areWrittenWithTheirTrailingSpace();
    void duplicates_areWritten();
    void listAndItsCleaning_areWritten();
    void widgetDeletedWithoutAnyRecord_isWritten();
    void widgetDeletedWithRecordsOfOthers_writesNothing();
    void retries_areWritten();
    void registration_isWrittenFromTheBusToTheServer();
    void requestAndReply_areOnTheFrameworksChannel();
    void registeredData_arePrintedBeforeTheTaskIsAnnounced();
};

namespace
{
const QByteArray manager = "QWixtApplicationManager: ";
const QByteArray toNotSetuped = "State changed from WaitForDaemonsToStart to NotSetuped";
const QByteArray waitToNoInternet = "State changed from WaitForDaemonsToStart to NoInternet";
const QByteArray toWaitForList = "State changed from NotSetuped to WaitForList";
const QByteArray setUpToNoInternet = "State changed from NotSetuped to NoInternet";
const QByteArray toReady = "State changed from WaitForList to Ready";
const QByteArray offlineToReady = "State changed from NoInternet to Ready";
const QByteArray readyToNoInternet = "State changed from Ready to NoInternet";
const QByteArray removed = "Remove all tasks from worker";
const QByteArray listAdded = "added get list task";
const QByteArray begun = "Start process requests";
const QByteArray atFirst = "state is WaitForDaemonsToStart";

// What happens to the daemon, and the lines that it writes then.
struct Step {
    std::function<bool()> event;
    QList<QByteArray> lines;
};

// The manager's debug lines, without its name.
QList<QByteArray> managerLines(DeviceUnderTest &device)
{
    QList<QByteArray> texts;
    const QList<QByteArray> all = device.lines('D');
    for (const QByteArray &line : all) {
        if (line.startsWith(manager)) {
            texts.append(line.mid(manager.size()));
        }
    }
    return texts;
}

// The lines of one writer at both silent levels, with numbers of threads made equal.
QList<QByteArray> linesOf(DeviceUnderTest &device, const QByteArray &writer)
{
    QList<QByteArray> texts;
    const QRegularExpression thread("(thread:? |Thread: )(0x)?[0-9a-f]+"_text);
    const QList<QByteArray> all = device.lines();
    for (const QByteArray &line : all) {
        const bool isMeant = line.startsWith("V/QWIXTD: " + writer) || line.startsWith("D/QWIXTD: " + writer);
        if (isMeant) {
            texts.append(QString::fromUtf8(line).replace(thread, "\\1\\2N"_text).toUtf8());
        }
    }
    return texts;
}
} // namespace

void TestDebugLines::stateChanges_areWritten_data()
{
    QTest::addColumn<bool>("hasKey");
    QTest::addColumn<bool>("isOnline");
    QTest::addColumn<QList<QByteArray>>("atStart");
    QTest::addColumn<QList<QByteArray>>("whenSetUp");
    QTest::addColumn<QList<QByteArray>>("whenOnline");

    using Lines = QList<QByteArray>;
    QTest::newRow("set up and online")
        << true << true << Lines{atFirst, toWaitForList, listAdded, toReady, begun} << Lines{} << Lines{};
    QTest::newRow("set up and offline") << true << false << Lines{atFirst, waitToNoInternet, removed}
                                        << Lines{} << Lines{toWaitForList, listAdded, toReady, begun};
    QTest::newRow("not set up and online") << false << true << Lines{atFirst, toNotSetuped}
                                           << Lines{toWaitForList, listAdded, toReady, begun} << Lines{};
    QTest::newRow("not set up and offline")
        << false << false << Lines{atFirst, toNotSetuped} << Lines{setUpToNoInternet, removed}
        << Lines{toWaitForList, listAdded, toReady, begun};
}

void TestDebugLines::stateChanges_areWritten()
{
    QFETCH(bool, hasKey);
    QFETCH(bool, isOnline);
    QFETCH(QList<QByteArray>, atStart);
    QFETCH(QList<QByteArray>, whenSetUp);
    QFETCH(QList<QByteArray>, whenOnline);
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    device.daemon().setApiKeyQuietly(hasKey ? DeviceUnderTest::apiKey : ""_text);
    device.server().setApiKey(DeviceUnderTest::apiKey);
    device.daemon().setInternetAvailable(isOnline);

    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(managerLines(device), atStart);
    if (!hasKey) {
        QVERIFY(device.setApiKey(DeviceUnderTest::apiKey));
        EVENTUALLY_EQUAL(managerLines(device), atStart + whenSetUp);
    }
    QVERIFY(device.setInternetAvailable(true));

    EVENTUALLY_EQUAL(managerLines(device), atStart + whenSetUp + whenOnline);
}

void TestDebugLines::stateChangesOfARunningDaemon_areWritten()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    device.server().failNext(1, ServerFault::withDelay(60000));
    QVERIFY(device.startServices() && device.startProgram());
    EVENTUALLY_EQUAL(device.server().requestCount(), 1);
    QList<QByteArray> expected = {atFirst, toWaitForList, listAdded};
    EVENTUALLY_EQUAL(managerLines(device), expected);
    const auto goesOffline = [&device] { return device.setInternetAvailable(false); };
    const auto comesOnline = [&device] { return device.setInternetAvailable(true); };
    const auto listArrives = [&device] {
        device.server().clearFaults();
        return true;
    };
    const std::vector<Step> steps = {
        // Lost while the list is awaited: the line names another state than the one that is left.
        {goesOffline, {readyToNoInternet, removed}},
        {comesOnline, {toWaitForList, listAdded}},
        {listArrives, {toReady, begun}},
        {goesOffline, {readyToNoInternet, removed}},
        {comesOnline, {offlineToReady, begun}},
    };

    for (const Step &step : steps) {
        QVERIFY(step.event());
        expected += step.lines;
        EVENTUALLY_EQUAL(managerLines(device), expected);
    }

    QCOMPARE(managerLines(device), expected);
}

void TestDebugLines::eventsThatChangeNoState_writeNothing()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());
    EVENTUALLY(managerLines(device).endsWith(begun));
    const QList<QByteArray> before = managerLines(device);

    QVERIFY(device.createWidget("u7"_text));
    QVERIFY(device.setApiKey("next-key"_text));
    QVERIFY(device.registerApplication("u7"_text, "Last"_text, "t"_text));

    EVENTUALLY(device.announced().contains("applicationRegistered(u7, app-1, t)"_text));
    QCOMPARE(managerLines(device), before);
}

void TestDebugLines::requests_areWrittenWithTheirTrailingSpace()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startProgram());

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t1"_text));
    QVERIFY(device.updateApplication("a1"_text, "u2"_text, "Radio"_text, "t2"_text));
    QVERIFY(device.deleteApplication("a2"_text, "u3"_text, "t3"_text));
    QVERIFY(device.registerApplication(""_text, ""_text, ""_text));
    QVERIFY(device.registerApplication("u1"_text, "Two\nE/QWIXTD: lines\x1b[0m"_text, "%s"_text));

    EVENTUALLY_EQUAL(
        linesOf(device, "QwixtDbusContext"),
        QList<QByteArray>(
            {"D/QWIXTD: QwixtDbusContext: Request register application u1 Clock t1 ",
             "D/QWIXTD: QwixtDbusContext: Request update application u2 Radio t2 ",
             "D/QWIXTD: QwixtDbusContext: Request delete application u3 t3  ",
             "D/QWIXTD: QwixtDbusContext: Request register application    ",
             "D/QWIXTD: QwixtDbusContext: Request register application u1 Two E/QWIXTD: lines [0m %s "}));
}

void TestDebugLines::duplicates_areWritten()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withDelay(60000));
    const auto before = managerLines(device).size();

    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "some-type"_text));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "some-type"_text));

    // A deletion that is queued carries data, so that it is never found by the check for duplicates.
    EVENTUALLY_EQUAL(
        managerLines(device).mid(before),
        QList<QByteArray>({"register task already exists", "update task already exists",
                           "added delete app a1 some-type task", "added delete app a1 some-type task"}));
}

void TestDebugLines::listAndItsCleaning_areWritten()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    device.server().addApplication(listedApplication("a1"_text, "gone"_text));
    device.server().addApplication(listedApplication("a2"_text, "u1"_text));

    QVERIFY(device.startAll());

    EVENTUALLY_EQUAL(managerLines(device),
                     QList<QByteArray>({atFirst, toWaitForList, listAdded, "There are no widget with id gone",
                                        toReady, begun}));
    EVENTUALLY(device.hasLine("u1, u2, u3"));
}

void TestDebugLines::widgetDeletedWithoutAnyRecord_isWritten()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());

    QVERIFY(device.deleteWidget("u1"_text));

    EVENTUALLY(managerLines(device).contains("no widget registered to delete"));
}

void TestDebugLines::widgetDeletedWithRecordsOfOthers_writesNothing()
{
    // The line depends on whether there is any record, not on whether one is this widget's.
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u3"_text, "Clock"_text, "t"_text));
    EVENTUALLY(device.announced().contains("applicationRegistered(u3, app-1, t)"_text));
    const auto before = managerLines(device).size();

    QVERIFY(device.deleteWidget("u2"_text));
    QVERIFY(device.registerApplication("u3"_text, "Clock"_text, "t"_text));

    EVENTUALLY(device.announced().contains("applicationRegistered(u3, app-2, t)"_text));
    QCOMPARE(managerLines(device).mid(before), QList<QByteArray>());
}

void TestDebugLines::retries_areWritten()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());
    device.server().failNext(2, ServerFault::withStatus(503));
    const auto before = managerLines(device).size();
    const QByteArray rescheduled = "Task rescheduler after fail";
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(managerLines(device).mid(before), QList<QByteArray>{rescheduled});

    QVERIFY(device.setInternetAvailable(false));
    QList<QByteArray> expected = {rescheduled, readyToNoInternet, removed, "not ready to do request 0"};
    EVENTUALLY_EQUAL(managerLines(device).mid(before), expected);
    QVERIFY(device.setInternetAvailable(true));

    expected += QList<QByteArray>{offlineToReady, begun, rescheduled};
    EVENTUALLY_EQUAL(managerLines(device).mid(before), expected);
    EVENTUALLY(device.announced().contains("applicationRegistered(u1, app-1, t)"_text));
    QCOMPARE(managerLines(device).mid(before), expected);
}

void TestDebugLines::registration_isWrittenFromTheBusToTheServer()
{
    const QList<QByteArray> oneTask = {"V/QWIXTD: Fetch task created", "V/QWIXTD: Fetch task deleted"};
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());
    EVENTUALLY_EQUAL(linesOf(device, "Fetch task"), oneTask); // the list's task goes after daemonDidStarted

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    const QByteArray url = "https://" + device.server().host().toLatin1() + "/api/v1/qwixt/apps";
    // The list, then the registration; the thread writes between the lines of the main thread.
    EVENTUALLY_EQUAL(linesOf(device, "FetchTask"),
                     QList<QByteArray>({"V/QWIXTD: FetchTask: 0 is running in thread 0xN",
                                        "D/QWIXTD: FetchTask: Making request to " + url,
                                        "D/QWIXTD: FetchTask: GET Status=200 Url=" + url,
                                        "V/QWIXTD: FetchTask: 0 is finished in thread 0xN",
                                        "V/QWIXTD: FetchTask: 0 is running in thread 0xN",
                                        "D/QWIXTD: FetchTask: Making request to " + url,
                                        "D/QWIXTD: FetchTask: POST Status=200 Url=" + url,
                                        "V/QWIXTD: FetchTask: 0 is finished in thread 0xN"}));
    EVENTUALLY_EQUAL(linesOf(device, "Fetch task"), oneTask + oneTask);
    QCOMPARE(linesOf(device, "VDataFetcher"), QList<QByteArray>{"D/QWIXTD: VDataFetcher: start processing"});
    const QList<QByteArray> fetcher = linesOf(device, "DataFetcher");
    QCOMPARE(fetcher.count("D/QWIXTD: DataFetcher: Task id=0 has been added to processing queue."), 2);
    QCOMPARE(fetcher.count("D/QWIXTD: DataFetcher: Woke up. Got some work here. Task id=0, thread: N"), 2);
}

void TestDebugLines::requestAndReply_areOnTheFrameworksChannel()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());
    device.server().failNext(1, ServerFault::withStatus(400));

    QVERIFY(device.registerApplication("u1"_text, "refused"_text, "t"_text));
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced().size(), 2);
    const QList<QByteArray> expected = {
        "header Accept : application/json", "header Authorization : ***", R"("{\"apps\":[]}")",
        R"("{\"app_id\":\"app-1\",\"status\":\"registered\"}")", R"(400 "{\"error\":\"simulated failure\"}")",
        // What is registered, then what is sent for it.
        R"(QMap(("name", QVariant(QString, "Clock"))("type", QVariant(QString, "t"))))",
        R"(QMap(("id", QVariant(QString, "d9"))("identifier", QVariant(QString, "u1")))"
        R"(("name", QVariant(QString, "Clock"))("type", QVariant(QString, "t"))))"};
    for (const QByteArray &line : expected) {
        QVERIFY2(device.hasLine(line), line.constData());
    }
}

void TestDebugLines::registeredData_arePrintedBeforeTheTaskIsAnnounced()
{
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    const QByteArray announced = "I/QWIXTD: QWixtApplicationManager: added register app task";
    EVENTUALLY(device.hasLine(announced));
    const QList<QByteArray> lines = device.lines();
    const auto data =
        lines.indexOf(R"(QMap(("name", QVariant(QString, "Clock"))("type", QVariant(QString, "t"))))");
    QVERIFY(data >= 0);
    QVERIFY(data < lines.indexOf(announced));
}

QTEST_GUILESS_MAIN(TestDebugLines)
#include "tst_qwixtd_debuglines.moc"
