#include "messagecapture.h"
#include "openmanager.h"
#include "platformcapture.h"
#include "remotetaskwithdescription.h"
#include "taskconnections.h"

#include <QPointer>
#include <QTimer>
#include <QtTest>

#include <malloc.h>
#include <unistd.h>

namespace
{

const QByteArray listLine = "QWixtApplicationManager: added get list task";
const QByteArray retryLine = "QWixtApplicationManager: Task rescheduler after fail";

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

class TestTaskQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void request_data();
    void request();
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
    void listRequest_again_data();
    void listRequest_again();
    void listRequest_withoutATask();

    void withdrawing_keepsQueueTasksAndTimers();
    void withdrawing_doesNotTakeBackWhatTheWorkerHolds();

    void failure_isGivenUpOrRetried_data();
    void failure_isGivenUpOrRetried();
    void deleteAnswered404_countsAsDone();
    void retryTimer_isOneOfFiveSeconds();
    void secondFailure_restartsTheSameTimer();
    void retry_whenReadyGoesOut();
    void retry_whileNotReadyIsNotSent();
    void retryDueWhileNotReady_goesOutAtTheNextReady();
    void retry_ofTheListGoesOutAnyway();
    void retry_whileTheWorkerHoldsTheTask();
    void retryTimer_withoutSender();
    void failureOfAnUnknownTask_endsInAWarning();
    void manyFailures_areAllRetried();
    void disposedTask_takesItsTimerWithIt();
    void replacedTask_isDisposedOf();
    void retriedAThousandTimes_holdsAsMuch();
    void failureBody_isPrintedInDebug();

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

void TestTaskQueue::request_data()
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

void TestTaskQueue::request()
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

    task->run();

    QCOMPARE(CurlFake::requests().constFirst().headers.at(1), QByteArray("Authorization: Basic OmtleQ=="));
    const std::unique_ptr<RemoteTaskWithDescription> later(manager.createRemoteTask(Descr::list()));
    later->run();
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
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);

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
    QTest::newRow("WaitForDaemonsToStart") << 0 << false;
    QTest::newRow("NotSetuped") << 1 << false;
    QTest::newRow("NoInternet") << 2 << false;
    QTest::newRow("WaitForList") << 3 << true;
    QTest::newRow("Ready") << 4 << true;
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

void TestTaskQueue::listRequest_again_data()
{
    QTest::addColumn<bool>("held");
    QTest::addColumn<int>("runs");
    QTest::newRow("on its way: left alone") << false << 1;
    QTest::newRow("held by the worker: added once more") << true << 2;
}

void TestTaskQueue::listRequest_again()
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

void TestTaskQueue::listRequest_withoutATask()
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

void TestTaskQueue::failure_isGivenUpOrRetried_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("retried");
    for (const int kind : {1, 2, 3, 4}) {
        QTest::addRow("kind %d, 400", kind) << kind << 400 << false;
        QTest::addRow("kind %d, 404", kind) << kind << 404 << false;
        for (const int code : {-2, -1, 6, 7, 28, 60, 300, 304, 401, 403, 409, 500, 503}) {
            QTest::addRow("kind %d, %d", kind, code) << kind << code << true;
        }
    }
}

void TestTaskQueue::failure_isGivenUpOrRetried()
{
    QFETCH(int, kind);
    QFETCH(int, code);
    QFETCH(bool, retried);
    RemoteTaskDescription descr = Descr::deletion("a", "u1");
    descr.type = kind;
    OpenManager manager;
    manager.beReady();
    manager.setQueue({Descr::update("x", "y"), descr, Descr::update("x", "z")});
    const QPointer<RemoteTaskWithDescription> task = manager.createStoredTask(descr);
    const QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    const QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    PlatformCapture::clear();

    manager.fail(descr, code);

    QCOMPARE(manager.queue().contains(descr), retried);
    QCOMPARE(manager.queue().size(), retried ? 3 : 2);
    QCOMPARE(manager.taskOf(descr) != nullptr, retried);
    QCOMPARE(manager.retryOf(task) != nullptr, retried);
    QCOMPARE(registered.count(), 0);
    QCOMPARE(deleted.count(), code == 404 && kind == 2 ? 1 : 0);
    QCOMPARE(PlatformCapture::texts(), retried ? QList<QByteArray>{retryLine} : QList<QByteArray>());
    QTest::qWait(1);
    QTRY_COMPARE(task.isNull(), !retried);
}

void TestTaskQueue::deleteAnswered404_countsAsDone()
{
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a7"), text("u1"), text("n"), text("t")});
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    CurlFake::setAnswer({CURLE_OK, 404, "", ""});

    manager.deleteApplication(text("a7"), text("u1"), text("t"));

    QVERIFY(deleted.wait(5000));
    QCOMPARE(deleted.at(0), (QVariantList{text("u1"), text("a7"), text("t")}));
    QVERIFY(manager.queue().isEmpty());
    QCOMPARE(manager.taskCount(), 0);
    QCOMPARE(manager.retryCount(), 0);
    QCOMPARE(manager.remoteRecords(), QStringList{text("a7: a7 u1 n t")}); // the record stays on this path
}

void TestTaskQueue::retryTimer_isOneOfFiveSeconds()
{
    CurlFake::setAnswer({CURLE_OK, 500, "", ""});
    OpenManager manager;
    manager.beReady();

    manager.registerApplication(text("u1"), text("n"), text("t"));

    QTRY_COMPARE(manager.retryCount(), 1);
    const QTimer *const timer = manager.onlyRetry();
    QCOMPARE(manager.taskOfOnlyRetry(), manager.onlyTask());
    QCOMPARE(timer->interval(), 5000);
    QVERIFY(timer->isSingleShot());
    QVERIFY(timer->isActive());
    QCOMPARE(timer->parent(), &manager);
    QCOMPARE(PlatformCapture::count(retryLine), 1);
}

void TestTaskQueue::secondFailure_restartsTheSameTimer()
{
    CurlFake::setAnswer({CURLE_OK, 500, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    const QTimer *const timer = manager.onlyRetry();
    QTest::qWait(200);
    QVERIFY(timer->remainingTime() < 4900);

    manager.fail(Descr::registration("u1", "n"), 500);

    QCOMPARE(manager.retryCount(), 1);
    QCOMPARE(manager.onlyRetry(), timer);
    QVERIFY(timer->remainingTime() > 4900);
    QCOMPARE(PlatformCapture::count(retryLine), 2);
}

void TestTaskQueue::retry_whenReadyGoesOut()
{
    CurlFake::queueAnswer({CURLE_OK, 503, "", ""});
    CurlFake::queueAnswer({CURLE_OK, 200, R"({"app_id":"a1"})", ""});
    OpenManager manager;
    manager.beReady();
    QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    const QPointer<QTimer> timer = manager.onlyRetry();

    manager.retryNow();

    QVERIFY(registered.wait(5000));
    QCOMPARE(manager.retryCount(), 0);
    QCOMPARE(CurlFake::requestCount(), 2);
    QTRY_VERIFY(timer.isNull());
}

void TestTaskQueue::retry_whileNotReadyIsNotSent()
{
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    const QPointer<QTimer> timer = manager.onlyRetry();
    manager.loseInternet();
    PlatformCapture::clear();

    manager.retryNow();

    QTRY_COMPARE(manager.retryCount(), 0);
    QTRY_VERIFY(timer.isNull());
    QCOMPARE(managerLines(), QList<QByteArray>{"QWixtApplicationManager: not ready to do request 0"});
    QCOMPARE(manager.queue().size(), 1);
    QCOMPARE(manager.taskCount(), 1);
    QVERIFY(!manager.isRunOutstanding());
}

void TestTaskQueue::retryDueWhileNotReady_goesOutAtTheNextReady()
{
    CurlFake::queueAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    manager.loseInternet();
    manager.retryNow();
    QTRY_COMPARE(manager.retryCount(), 0);

    manager.regainInternet();

    QTRY_VERIFY(manager.queue().isEmpty());
    QCOMPARE(CurlFake::requestCount(), 2);
}

void TestTaskQueue::retry_ofTheListGoesOutAnyway()
{
    CurlFake::setAnswer({CURLE_COULDNT_CONNECT, 0, "", ""});
    OpenManager manager;
    manager.beWaitingForList();
    manager.getListOfRemoteApps();
    QTRY_COMPARE(manager.retryCount(), 1);
    manager.loseInternet();
    QCOMPARE(manager.currentState(), QWixtApplicationManager::NoInternet);

    manager.retryNow();

    QTRY_COMPARE(CurlFake::requestCount(), 2);
}

void TestTaskQueue::retry_whileTheWorkerHoldsTheTask()
{
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    const QPointer<QTimer> timer = manager.onlyRetry();
    manager.holdInWorker(manager.onlyTask());
    PlatformCapture::clear();

    manager.retryNow();

    QTRY_COMPARE(manager.retryCount(), 0);
    QTRY_VERIFY(timer.isNull());
    QCOMPARE(managerLines(), QList<QByteArray>{"QWixtApplicationManager: not ready to do request 1"});
}

void TestTaskQueue::retryTimer_withoutSender()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.delayedTaskTimeout();

    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"QWixtApplicationManager: Unknown timer finished working"});
    QCOMPARE(PlatformCapture::lines().constFirst().priority, static_cast<int>(LogPriority::Warning));
}

void TestTaskQueue::failureOfAnUnknownTask_endsInAWarning()
{
    OpenManager manager;
    manager.beReady();
    manager.fail(Descr::registration("gone"), 503);
    manager.fail(Descr::registration("gone too"), 503);
    QCOMPARE(manager.retryCount(), 1);
    QCOMPARE(manager.findChildren<QTimer *>().size(), 2); // the refresh timer and one retry
    const QPointer<QTimer> timer = manager.retryOf(nullptr);
    QVERIFY(!timer.isNull());
    PlatformCapture::clear();

    manager.retryNow();

    QTRY_VERIFY(timer.isNull());
    QCOMPARE(manager.retryCount(), 0);
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"QWixtApplicationManager: Unknown task for timer finished working"});
}

void TestTaskQueue::manyFailures_areAllRetried()
{
    // Each look-up of a task by its description has to find it among the others.
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a1"), text("w1"), text("n"), text("t")});
    manager.addRemote({text("a2"), text("w2"), text("n"), text("t")});
    for (int i = 0; i < 10; ++i) {
        manager.registerApplication(text("u") + QString::number(i), text("n") + QString::number(i % 3),
                                    text("t"));
    }
    manager.updateApplication(text("a1"), text("w1"), text("new"), text("t"));
    manager.deleteApplication(text("a2"), text("w2"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 12);
    QVERIFY(manager.retryOf(nullptr) == nullptr);
    CurlFake::setAnswer({CURLE_OK, 200, R"({"app_id":"x"})", ""});

    manager.retryNow();

    QTRY_VERIFY(manager.queue().isEmpty());
    QCOMPARE(CurlFake::requestCount(), 24);
    QCOMPARE(manager.taskCount(), 0);
    QCOMPARE(manager.retryCount(), 0);
}

void TestTaskQueue::disposedTask_takesItsTimerWithIt()
{
    // Regression: a task that ran twice was given up while the timer of its other run still waited under it.
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    const QPointer<QTimer> timer = manager.onlyRetry();
    const QPointer<RemoteTaskWithDescription> task = manager.onlyTask();

    manager.fail(Descr::registration("u1", "n"), 400);

    QCOMPARE(manager.retryCount(), 0);
    QVERIFY(!timer->isActive());
    QTRY_VERIFY(timer.isNull());
    QTRY_VERIFY(task.isNull());
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

void TestTaskQueue::retriedAThousandTimes_holdsAsMuch()
{
    CurlFake::setAnswer({CURLE_OK, 503, "busy", ""});
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    RemoteTaskWithDescription *const task = manager.onlyTask();
    const int connections = connectionsOf(task);
    QCOMPARE(connections, 7);

    std::size_t heldEarly = 0;
    for (int i = 1; i <= 1000; ++i) {
        CurlFake::reset();
        CurlFake::setAnswer({CURLE_OK, 503, "busy", ""});
        PlatformCapture::clear();
        QTimer *const timer = manager.retryOf(task);
        QSignalSpy due(timer, &QTimer::timeout);
        manager.retryNow();
        QVERIFY(due.wait(5000));
        while (manager.retryCount() == 0) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(CurlFake::requestCount(), 1);
        QCOMPARE(connectionsOf(task), connections);
        if (i == 100) {
            heldEarly = mallinfo2().uordblks;
        }
    }

    const std::size_t heldLate = mallinfo2().uordblks;
    QVERIFY2(heldLate < heldEarly + 8 * 1024,
             qPrintable(QStringLiteral("%1 bytes more").arg(heldLate - heldEarly)));
    QCOMPARE(manager.queue().size(), 1);
    QCOMPARE(manager.onlyTask(), task);
    QCOMPARE(manager.findChildren<QTimer *>().size(), 2); // the refresh timer and one retry
}

void TestTaskQueue::failureBody_isPrintedInDebug()
{
    OpenManager manager;
    manager.beReady();
    const MessageCapture messages;

    manager.fail(Descr::registration("u1"), 400, "no such device");

    QCOMPARE(messages.debugTexts(), QStringList{text("400 \"no such device\"")});
}

int main(int argc, char *argv[])
{
    // The allocator keeps freed blocks for each thread and counts them as held. How many depends on how the
    // two threads meet, and on a busy machine that was more than a test of what is held can allow for.
    const char name[] = "GLIBC_TUNABLES";
    if (qEnvironmentVariableIsEmpty(name)) {
        qputenv(name, "glibc.malloc.tcache_count=0");
        execv("/proc/self/exe", argv);
        qFatal("cannot start again with %s", name);
    }
    QCoreApplication application(argc, argv);
    TestTaskQueue test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_taskqueue.moc"
