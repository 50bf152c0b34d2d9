#include "messagecapture.h"
#include "openmanager.h"
#include "platformcapture.h"
#include "remotetaskwithdescription.h"

#include <QPointer>
#include <QtTest>

namespace
{

const QByteArray listLine = "QWixtApplicationManager: added get list task";

QList<QByteArray> bodies()
{
    QList<QByteArray> list;
    const QList<CurlFake::Request> requests = CurlFake::requests();
    for (const CurlFake::Request &request : requests) {
        list.append(request.method() + ' ' + request.body());
    }
    return list;
}

} // namespace

/// Requests on their way from the queue to the worker.
class TestTaskQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void request_isBuiltForItsKind_data();
    void request_isBuiltForItsKind();
    void request_ofUnknownKind_data();
    void request_ofUnknownKind();
    void request_keepsTheKeyOfItsMoment();
    void createdTask_printsItsParametersInDebug();

    void processRequests_outsideReadyDoesNothing();
    void processRequests_sendsInOrder();
    void processRequests_skipsUnknownKinds();
    void processRequests_skipsWaitingRetries();
    void processRequests_handsOutStoredTasksAgain();
    void processRequests_skipsTasksThatTheWorkerHolds();
    void twoRegistersAlike_areOneDescription();

    void listRequest_waitsOutsideItsStates_data();
    void listRequest_waitsOutsideItsStates();
    void listRequest_againIsAddedOnlyWhenHeld_data();
    void listRequest_againIsAddedOnlyWhenHeld();
    void listRequest_withoutATaskGetsOne();

    void withdrawing_keepsQueueTasksAndTimers();
    void withdrawing_doesNotTakeBackWhatTheWorkerHolds();

    void replacedTask_isDisposedOf();

private:
    PrivateBus bus;
};

void TestTaskQueue::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestTaskQueue::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestTaskQueue::request_isBuiltForItsKind_data()
{
    QTest::addColumn<RemoteTaskDescription>("descr");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<bool>("hasBody");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("register") << Descr::registration("u1") << QByteArray("POST") << true
                              << QByteArray("id=d9&identifier=u1&name=Clock&type=t");
    QTest::newRow("delete") << Descr::deletion("a7", "u1") << QByteArray("DELETE") << true
                            << QByteArray("app_id=a7&type=t");
    QTest::newRow("update") << Descr::update("a7", "u1") << QByteArray("PUT") << true
                            << QByteArray("app_id=a7&name=Clock&type=t");
    QTest::newRow("list") << Descr::list() << QByteArray("GET") << false << QByteArray();
}

void TestTaskQueue::request_isBuiltForItsKind()
{
    QFETCH(RemoteTaskDescription, descr);
    OpenManager manager;
    manager.beReady();
    const std::unique_ptr<RemoteTaskWithDescription> task(manager.createRemoteTask(descr));
    QVERIFY(task->description == descr);
    QCOMPARE(task->id(), 0);
    QCOMPARE(task->type(), VFetchTask::SingleShot);

    task->run();

    const CurlFake::Request request = CurlFake::requests().constFirst();
    QTEST(request.method(), "method");
    QTEST(request.has(CURLOPT_COPYPOSTFIELDS), "hasBody");
    QTEST(request.body(), "body");
    QCOMPARE(request.url(), QByteArray("https://developer.vorlet.example/api/v1/qwixt/apps"));
    QCOMPARE(request.headers,
             (QList<QByteArray>{"Accept: application/json", "Authorization: Basic OmtleQ=="}));
}

void TestTaskQueue::request_ofUnknownKind_data()
{
    QTest::addColumn<int>("kind");
    for (const int kind : {0, 5, -1}) {
        QTest::addRow("%d", kind) << kind;
    }
}

void TestTaskQueue::request_ofUnknownKind()
{
    QFETCH(int, kind);
    const OpenManager manager;
    PlatformCapture::clear();

    const RemoteTaskWithDescription *const task = manager.createRemoteTask({kind, text("u"), {}});

    QVERIFY(task == nullptr);
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"RemoteRequestWorker: Unknown task type"});
    // Nothing is left of an attempt.
    QCOMPARE(PlatformCapture::count("Fetch task deleted"), PlatformCapture::count("Fetch task created"));
}

void TestTaskQueue::request_keepsTheKeyOfItsMoment()
{
    OpenManager manager;
    manager.beReady();
    const std::unique_ptr<RemoteTaskWithDescription> task(manager.createRemoteTask(Descr::list()));
    manager.setApiKey(QString());
    const std::unique_ptr<RemoteTaskWithDescription> later(manager.createRemoteTask(Descr::list()));

    task->run();
    later->run();

    QCOMPARE(CurlFake::requests().at(0).headers.at(1), QByteArray("Authorization: Basic OmtleQ=="));
    QCOMPARE(CurlFake::requests().at(1).headers.at(1), QByteArray("Authorization: Basic Og=="));
}

void TestTaskQueue::createdTask_printsItsParametersInDebug()
{
    OpenManager manager;
    manager.beReady();
    const MessageCapture messages;

    delete manager.createRemoteTask(Descr::registration("u1"));

    QCOMPARE(messages.debugTexts().size(), 1);
    QCOMPARE(messages.debugTexts().constFirst(),
             text("QMap((\"id\", QVariant(QString, \"d9\"))(\"identifier\", QVariant(QString, \"u1\"))"
                  "(\"name\", QVariant(QString, \"Clock\"))(\"type\", QVariant(QString, \"t\")))"));
}

void TestTaskQueue::processRequests_outsideReadyDoesNothing()
{
    OpenManager manager;
    manager.beReady();
    manager.setQueue({Descr::registration("u1")});
    PlatformCapture::clear();

    for (const auto state :
         {QWixtApplicationManager::WaitForDaemonsToStart, QWixtApplicationManager::NotSetuped,
          QWixtApplicationManager::NoInternet, QWixtApplicationManager::WaitForList}) {
        manager.setState(state);
        manager.processRequests();
    }

    QVERIFY(PlatformCapture::lines().isEmpty());
    QCOMPARE(manager.taskCount(), 0);
}

void TestTaskQueue::processRequests_sendsInOrder()
{
    OpenManager manager;
    manager.beReady();
    manager.setQueue({Descr::update("a3", "u3"), Descr::registration("u1"), Descr::deletion("a2", "u2"),
                      Descr::registration("u0")});

    manager.processRequests();

    QCOMPARE(manager.taskCount(), 4);
    QTRY_COMPARE(
        bodies(),
        (QList<QByteArray>{"PUT app_id=a3&name=Clock&type=t", "POST id=d9&identifier=u1&name=Clock&type=t",
                           "DELETE app_id=a2&type=t", "POST id=d9&identifier=u0&name=Clock&type=t"}));
}

void TestTaskQueue::processRequests_skipsUnknownKinds()
{
    OpenManager manager;
    manager.beReady();
    const RemoteTaskDescription odd = {9, text("odd"), {}};
    manager.setQueue({odd, Descr::registration("u1")});

    manager.processRequests();

    QCOMPARE(PlatformCapture::count("QWixtApplicationManager: unknown task description"), 1);
    QTRY_COMPARE(manager.queue().size(), 1);
    QVERIFY(manager.queue().contains(odd)); // it stays
    QCOMPARE(CurlFake::requestCount(), 1);
}

void TestTaskQueue::processRequests_skipsWaitingRetries()
{
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());

    manager.processRequests();

    QVERIFY(!manager.isRunOutstanding()); // nothing was handed to the worker
    QCOMPARE(manager.retryCount(), 1);
}

void TestTaskQueue::processRequests_handsOutStoredTasksAgain()
{
    CurlFake::queueAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.setQueue({Descr::registration("u1")});
    manager.processRequests();
    const auto *const task = manager.onlyTask();
    QTRY_COMPARE(manager.retryCount(), 1);
    manager.setState(QWixtApplicationManager::NoInternet);
    manager.retryNow();
    QTRY_COMPARE(manager.retryCount(), 0);
    manager.setState(QWixtApplicationManager::Ready);

    manager.processRequests();

    QCOMPARE(manager.onlyTask(), task);
    QTRY_COMPARE(CurlFake::requestCount(), 2);
}

void TestTaskQueue::processRequests_skipsTasksThatTheWorkerHolds()
{
    CurlFake::hold();
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    manager.holdInWorker(manager.onlyTask());

    manager.processRequests();

    QCOMPARE(manager.heldInWorker(), 1); // another append would have taken it out to run
}

void TestTaskQueue::twoRegistersAlike_areOneDescription()
{
    OpenManager manager;
    PlatformCapture::clear();

    const bool first = manager.registerApplication(text("u1"), text("n"), text("t"));
    const bool second = manager.registerApplication(text("u1"), text("n"), text("t"));
    const bool other = manager.registerApplication(text("u1"), text("n2"), text("t"));

    QVERIFY(first);
    QVERIFY(!second);
    QVERIFY(other);
    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"QWixtApplicationManager: register task already exists"});
    QVERIFY(manager.queue() ==
            (QList<RemoteTaskDescription>{Descr::registration("u1", "n"), Descr::registration("u1", "n2")}));
}

void TestTaskQueue::listRequest_waitsOutsideItsStates_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("goesOut");
    QTest::newRow("WaitForDaemonsToStart") << int(QWixtApplicationManager::WaitForDaemonsToStart) << false;
    QTest::newRow("NotSetuped") << int(QWixtApplicationManager::NotSetuped) << false;
    QTest::newRow("NoInternet") << int(QWixtApplicationManager::NoInternet) << false;
    QTest::newRow("WaitForList") << int(QWixtApplicationManager::WaitForList) << true;
    QTest::newRow("Ready") << int(QWixtApplicationManager::Ready) << true;
}

void TestTaskQueue::listRequest_waitsOutsideItsStates()
{
    QFETCH(int, state);
    QFETCH(bool, goesOut);
    CurlFake::hold();
    OpenManager manager;
    manager.beReady();
    manager.setState(state);

    manager.getListOfRemoteApps();
    const int linesAtFirst = PlatformCapture::count(listLine);
    manager.getListOfRemoteApps(); // the same state: still one

    QVERIFY(manager.queue() == QList<RemoteTaskDescription>{Descr::list()});
    QCOMPARE(manager.taskCount(), goesOut ? 1 : 0);
    QCOMPARE(linesAtFirst, goesOut ? 1 : 0);
    QCOMPARE(PlatformCapture::count(listLine), goesOut ? 2 : 0);
}

void TestTaskQueue::listRequest_againIsAddedOnlyWhenHeld_data()
{
    QTest::addColumn<bool>("held");
    QTest::addColumn<int>("runs");
    QTest::newRow("on its way: left alone") << false << 1;
    QTest::newRow("held by the worker: added once more") << true << 2;
}

void TestTaskQueue::listRequest_againIsAddedOnlyWhenHeld()
{
    QFETCH(bool, held);
    QFETCH(int, runs);
    CurlFake::hold();
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.getListOfRemoteApps();
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    if (held) {
        manager.holdInWorker(manager.onlyTask());
    }

    manager.getListOfRemoteApps();

    QCOMPARE(manager.taskCount(), 1);
    QCOMPARE(manager.outstandingRunsOf(Descr::list()), runs);
    CurlFake::release();
    QTRY_VERIFY(!manager.isRunOutstanding());
    QCOMPARE(CurlFake::requestCount(), runs);
}

void TestTaskQueue::listRequest_withoutATaskGetsOne()
{
    OpenManager manager;
    manager.beReady();
    manager.setQueue({Descr::list()});

    manager.getListOfRemoteApps();

    QCOMPARE(manager.taskCount(), 1);
    QCOMPARE(PlatformCapture::count(listLine), 1);
    QVERIFY(!manager.isRunOutstanding()); // a task that the worker does not hold is left alone
}

void TestTaskQueue::withdrawing_keepsQueueTasksAndTimers()
{
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    manager.registerApplication(text("u2"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 2);
    PlatformCapture::clear();

    manager.removeAllTasksFromWorker();

    QCOMPARE(managerLines(), QList<QByteArray>{"QWixtApplicationManager: Remove all tasks from worker"});
    QVERIFY(PlatformCapture::texts(LogPriority::Warning).isEmpty());
    QCOMPARE(manager.queue().size(), 2);
    QCOMPARE(manager.taskCount(), 2);
    QCOMPARE(manager.retryCount(), 2);
}

void TestTaskQueue::withdrawing_doesNotTakeBackWhatTheWorkerHolds()
{
    // The fetcher is asked, and refuses: it knows periodic tasks only.
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    manager.registerApplication(text("u2"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 2);
    manager.holdInWorker(manager.anyTask());

    manager.removeAllTasksFromWorker();

    QCOMPARE(PlatformCapture::count("DataFetcher: Wrong task id"), 2); // both have the one id of remote tasks
    QCOMPARE(manager.heldInWorker(), 1);
}

void TestTaskQueue::replacedTask_isDisposedOf()
{
    CurlFake::hold();
    OpenManager manager;
    manager.beReady();
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    manager.deleteApplication(text("a"), text("u"), text("t"));
    const QPointer<RemoteTaskWithDescription> first = manager.onlyTask();
    manager.deleteApplication(text("a"), text("u"), text("t")); // queued again, as deletions are
    const QPointer<RemoteTaskWithDescription> second = manager.onlyTask();
    QCOMPARE(manager.queue().size(), 2);
    QCOMPARE(manager.taskCount(), 1);
    QVERIFY(second != first);

    CurlFake::release();

    QTRY_COMPARE(deleted.count(), 2);
    QCOMPARE(CurlFake::requestCount(), 2);
    QVERIFY(manager.queue().isEmpty());
    QTRY_VERIFY(first.isNull());
    QTRY_VERIFY(second.isNull());
}

QTEST_GUILESS_MAIN(TestTaskQueue)
#include "tst_taskqueue.moc"
