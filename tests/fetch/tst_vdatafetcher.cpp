#include "fetcherprobe.h"
#include "membersof.h"
#include "platformcapture.h"
#include "scriptedtask.h"
#include "threadtext.h"
#include "vdatafetcher.h"

#include <QSignalSpy>
#include <QtTest>

/// What a fetcher knows, and its thread. In each test the tasks stand before their fetcher, whose thread may
/// still be leaving their run at the end.
class TestVDataFetcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<VFetchTask *>(); } // for the spies
    void init();
    void cleanup() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    void metaObjects_listSignalsAndSlotsInOrder();

    void addedTask_runsOnTheWorkerThread();
    void nullTask_isIgnored();
    void singleShotWithInterval_isWarnedAboutAndRuns();
    void taskAddedTwice_isConnectedOnceAndRunsTwice_data();
    void taskAddedTwice_isConnectedOnceAndRunsTwice();
    void singleShotAddedAThousandTimes_holdsAsManyConnections();
    void secondTaskOfAnId_takesThePlaceOfTheFirst();
    void deprecatedAdd_warnsAndKeepsTheTasksId();

    void lookUps_knowPeriodicTasksOnly();
    void deprecatedLookUp_warns();
    void containsFetchTask_goesByTheIdOfPeriodicTasks();
    void containsFetchTask_goesByTheIdOfQueuedTasks();
    void taskHandedToTheThread_isNotContained();

    void removedTask_isTakenOutAndDisconnected();
    void removedTaskOfUnknownId_isWarnedAbout();

    void startTwice_warns();
    void stopTwice_warns();
    void stop_waitsForTheRun();
    void addAfterStop_isRefused();
};

void TestVDataFetcher::init()
{
    PlatformCapture::clear();
    Runs::clear();
}

void TestVDataFetcher::metaObjects_listSignalsAndSlotsInOrder()
{
    const QStringList members = membersOf(VDataFetcher::staticMetaObject);
    const QStringList privateMembers = membersOf(VDataFetcherPrivate::staticMetaObject);

    QCOMPARE(members, (QStringList{QStringLiteral("signal void taskSuccess(int id, VFetchTask* task)"),
                                   QStringLiteral("signal void taskFailure(int id, VFetchTask* task)")}));
    QCOMPARE(privateMembers,
             (QStringList{QStringLiteral("slot void processNextTask()"),
                          QStringLiteral("slot void addTaskToExecQueue()"),
                          QStringLiteral("slot void addTaskToExecQueue(VFetchTask* task)"),
                          QStringLiteral("slot void removeTaskFromExecQueue(VFetchTask* task)"),
                          QStringLiteral("slot void taskFinishedSuccess(QByteArray body)"),
                          QStringLiteral("slot void taskFinishedFailure(int code, QByteArray body)"),
                          QStringLiteral("slot void taskInvokeIntervalChanged()"),
                          QStringLiteral("slot void taskTypeChanged()")}));
}

void TestVDataFetcher::addedTask_runsOnTheWorkerThread()
{
    SingleShotTask task(2);
    VDataFetcher fetcher;
    QVERIFY(!fetcher.isRunning());

    fetcher.addFetchTask(&task, 0, true);

    QVERIFY(fetcher.isRunning());
    QCOMPARE(PlatformCapture::count("VDataFetcher: start processing"), 1);
    QCOMPARE(PlatformCapture::count("DataFetcher: Task id=2 has been added to processing queue."), 1);
    QTRY_COMPARE(Runs::ids(), QList<int>{2});
    QCOMPARE(Runs::lastThread()->metaObject()->className(), "VThread");
    QCOMPARE(task.thread(), Runs::lastThread());
    QCOMPARE(fetcher.thread(), QThread::currentThread());
}

void TestVDataFetcher::nullTask_isIgnored()
{
    VDataFetcher fetcher;

    fetcher.addFetchTask(nullptr, 0, true);
    fetcher.removeFetchTask(nullptr);
    fetcher.forceUpdate(nullptr);

    QVERIFY(!fetcher.containsFetchTask(nullptr));
    QVERIFY(!fetcher.isRunning());
    QVERIFY(PlatformCapture::lines().isEmpty());
}

void TestVDataFetcher::singleShotWithInterval_isWarnedAboutAndRuns()
{
    SingleShotTask task(4);
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 3, true);

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: Single shot task id=4 contains invoke interval 3"});
    QCOMPARE(task.invokeInterval(), 3);
    QTRY_COMPARE(Runs::ids(), QList<int>{4});
}

void TestVDataFetcher::taskAddedTwice_isConnectedOnceAndRunsTwice_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("periodic") << int(VFetchTask::Periodic);
    QTest::newRow("single shot") << int(VFetchTask::SingleShot);
}

void TestVDataFetcher::taskAddedTwice_isConnectedOnceAndRunsTwice()
{
    QFETCH(int, type);
    ScriptedTask task(1);
    task.setType(static_cast<VFetchTask::VFetchTaskType>(type));
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 0, true);
    fetcher.addFetchTask(&task, 0, true);

    QCOMPARE(task.connectionsOf(SIGNAL(doUpdate())), 1);
    QCOMPARE(task.connectionsOf(SIGNAL(success(QByteArray))), 1);
    QCOMPARE(task.connectionsOf(SIGNAL(failure(int, QByteArray))), 1);
    QCOMPARE(task.connectionsOf(SIGNAL(invokeIntervalChanged(int))), 1);
    QCOMPARE(task.connectionsOf(SIGNAL(typeChanged(VFetchTask::VFetchTaskType))), 1);
    QTRY_COMPARE(Runs::ids().size(), 2);
}

void TestVDataFetcher::singleShotAddedAThousandTimes_holdsAsManyConnections()
{
    SingleShotTask task(0, ScriptedTask::Fails);
    VDataFetcher fetcher;
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);

    for (int i = 1; i <= 1000; ++i) {
        fetcher.addFetchTask(&task, 0, true);
        QVERIFY(failures.count() == i || failures.wait(5000));
    }

    QCOMPARE(failures.count(), 1000);
    QCOMPARE(task.connections(), 5);
}

void TestVDataFetcher::secondTaskOfAnId_takesThePlaceOfTheFirst()
{
    ScriptedTask first(1);
    ScriptedTask second(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(&first, 30, false);

    fetcher.addFetchTask(&second, 0, true);

    QCOMPARE(fetcher.fetchTaskById(1), &second);
    QCOMPARE(probe.waitingReruns(), 0);
    QTRY_COMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(1).value<VFetchTask *>(), &second);
    QCOMPARE(second.thread(), Runs::lastThread());
}

void TestVDataFetcher::deprecatedAdd_warnsAndKeepsTheTasksId()
{
    SingleShotTask task(4);
    VDataFetcher fetcher;

    fetcher.addFetchTask(77, &task, 0, true);

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: deprecated api. Use addFetchTask(VFetchTask, int, bool)"});
    QCOMPARE(PlatformCapture::count(
                 "DataFetcher: Task id=77, invoke interval: 0 has been added to processing queue."),
             1);
    QTRY_COMPARE(Runs::ids(), QList<int>{4});
}

void TestVDataFetcher::lookUps_knowPeriodicTasksOnly()
{
    ScriptedTask periodic(1);
    SingleShotTask single(2);
    VDataFetcher fetcher;

    fetcher.addFetchTask(&periodic, 0, false);
    fetcher.addFetchTask(&single, 0, false);

    QCOMPARE(fetcher.fetchTaskById(1), &periodic);
    QVERIFY(fetcher.fetchTaskById(2) == nullptr);
}

void TestVDataFetcher::deprecatedLookUp_warns()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 0, false);
    PlatformCapture::clear();

    VFetchTask *const found = fetcher.fetchTask(1);

    QCOMPARE(found, &task);
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: deprecated API. Use fetchTaskById(int) instead"});
}

void TestVDataFetcher::containsFetchTask_goesByTheIdOfPeriodicTasks()
{
    ScriptedTask known(1);
    ScriptedTask sameId(1);
    VDataFetcher fetcher;
    QVERIFY(!fetcher.containsFetchTask(&known));

    fetcher.addFetchTask(&known, 0, false);

    QVERIFY(fetcher.containsFetchTask(&known));
    QVERIFY(fetcher.containsFetchTask(&sameId));
}

void TestVDataFetcher::containsFetchTask_goesByTheIdOfQueuedTasks()
{
    SingleShotTask queued(2);
    SingleShotTask sameId(2);
    SingleShotTask otherId(3);
    VDataFetcher fetcher;

    FetcherProbe(fetcher).leaveInQueue(&queued);

    QVERIFY(fetcher.containsFetchTask(&queued));
    QVERIFY(fetcher.containsFetchTask(&sameId));
    QVERIFY(!fetcher.containsFetchTask(&otherId));
}

void TestVDataFetcher::taskHandedToTheThread_isNotContained()
{
    SingleShotTask task(2);
    task.held = true;
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 0, true);

    QVERIFY(!fetcher.containsFetchTask(&task)); // nor while it waits there
    QTRY_COMPARE(task.begun.load(), 1);
    QVERIFY(!fetcher.containsFetchTask(&task));
    task.gate.release();
}

void TestVDataFetcher::removedTask_isTakenOutAndDisconnected()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 30, false);
    probe.leaveInQueue(&task);
    PlatformCapture::clear();

    fetcher.removeFetchTask(&task);

    QVERIFY(fetcher.fetchTaskById(1) == nullptr);
    QCOMPARE(probe.waitingReruns(), 0);
    QCOMPARE(probe.queued(), 0);
    QCOMPARE(task.connections(), 0);
    QCOMPARE(PlatformCapture::texts(), (QList<QByteArray>{"DataFetcher: No tasks to run. Sleeping.",
                                                          "DataFetcher: removed task with id 1"}));
    QVERIFY(task.thread() != QThread::currentThread());
}

void TestVDataFetcher::removedTaskOfUnknownId_isWarnedAbout()
{
    SingleShotTask single(3); // not known by its id
    VDataFetcher fetcher;
    fetcher.addFetchTask(&single, 0, false);
    PlatformCapture::clear();

    fetcher.removeFetchTask(3);

    QCOMPARE(PlatformCapture::texts(), QList<QByteArray>{"DataFetcher: Wrong task id"});
    QCOMPARE(PlatformCapture::lines().constFirst().priority, int(LogPriority::Warning));
    QCOMPARE(single.connections(), 5);
}

void TestVDataFetcher::startTwice_warns()
{
    VDataFetcher fetcher;
    fetcher.startProcessing();
    QCOMPARE(PlatformCapture::texts(), (QList<QByteArray>{"DataFetcher: Processing started from thread " +
                                                              threadText(QThread::currentThreadId()),
                                                          "VDataFetcher: start processing"}));

    fetcher.startProcessing();

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: Fetcher already running"});
}

void TestVDataFetcher::stopTwice_warns()
{
    VDataFetcher fetcher;
    fetcher.startProcessing();
    PlatformCapture::clear();

    fetcher.stopProcessing();
    QVERIFY(!fetcher.isRunning());
    QCOMPARE(PlatformCapture::texts(LogPriority::Debug),
             (QList<QByteArray>{"VDataFetcher: stop processing", "DataFetcher: Processing stopped."}));
    fetcher.stopProcessing();
    QTRY_VERIFY(FetcherProbe(fetcher).threadIsGone()); // it deletes itself
    fetcher.stopProcessing();

    QCOMPARE(
        PlatformCapture::texts(LogPriority::Warning),
        (QList<QByteArray>{"DataFetcher: Fetcher already stopped", "DataFetcher: Fetcher already stopped"}));
}

void TestVDataFetcher::stop_waitsForTheRun()
{
    SingleShotTask task(1);
    task.duringRun = [] { QThread::msleep(50); }; // as long as a short transfer
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 0, true);
    QTRY_COMPARE(task.begun.load(), 1);

    fetcher.stopProcessing();

    QCOMPARE(Runs::ids(), QList<int>{1});
    QVERIFY(!fetcher.isRunning());
}

void TestVDataFetcher::addAfterStop_isRefused()
{
    SingleShotTask task(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.startProcessing();
    fetcher.stopProcessing();
    PlatformCapture::clear();

    fetcher.addFetchTask(&task, 0, true); // the thread has finished and is not gone yet
    QTRY_VERIFY(probe.threadIsGone());
    fetcher.addFetchTask(&task, 0, true);

    QVERIFY(!fetcher.isRunning());
    const QByteArray refused = "DataFetcher: Fetcher can not be started again";
    const QByteArray notRun =
        "DataFetcher: Task id=1 can not be run, there is no thread. It counts as failed.";
    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             (QList<QByteArray>{refused, notRun, refused, notRun}));
    QCOMPARE(probe.queued(), 0);
    QCOMPARE(task.thread(), QThread::currentThread()); // no dead thread holds it
    QVERIFY(Runs::ids().isEmpty());
}

QTEST_GUILESS_MAIN(TestVDataFetcher)
#include "tst_vdatafetcher.moc"
