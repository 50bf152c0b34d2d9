#include "fetcherprobe.h"
#include "platformcapture.h"
#include "scriptedtask.h"
#include "threadtext.h"
#include "vdatafetcher.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

/// The run queue: who waits in it, who takes from it, and where the results go.
class TestFetcherRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<VFetchTask *>(); } // for the spies
    void init();
    void cleanup() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    void addedTasks_runInOrder();
    void taskHandedOn_hasItsLine();
    void emptyQueue_hasItsLine();
    void singleShotNotNow_waitsUntilItAsks();
    void singleShotNotNow_waitsUntilItIsForced();
    void singleShotNotNow_isNotScheduled();
    void taskBehindOneOfItsId_runsOnTheWorkerThread();

    void periodicFailure_takesTheNextTask();
    void otherEnds_takeNoTask_data();
    void otherEnds_takeNoTask();
    void append_takesTheTaskThatWaitedLongest();

    void results_arePassedOn();
    void taskDeletedWhileQueued_isSkippedSilently();
    void onlyTaskDeletedWhileQueued_leavesAnEmptyQueue();
    void taskDeletedAfterSuccess_isWarnedAbout();
    void taskDeletedAfterFailure_isDroppedSilently();
    void taskRemovedAfterItsRun_isNotReported_data();
    void taskRemovedAfterItsRun_isNotReported();
    void fetcherDeletedAtAResult_isLeftAlone();

    void leavingTask_takesAllItsEntriesWithIt_data();
    void leavingTask_takesAllItsEntriesWithIt();
    void stop_emptiesTheQueue();
    void stoppedFetcher_queuesNothing_data();
    void stoppedFetcher_queuesNothing();

private:
    /// Starts the fetcher and returns when its first look at the empty queue is over.
    static void startAndSettle(VDataFetcher &fetcher)
    {
        fetcher.startProcessing();
        QTRY_COMPARE(PlatformCapture::count("DataFetcher: No tasks to run. Sleeping."), 1);
    }
    /// Returns when the task has run, with its result still on the way here.
    static void waitWithoutEvents(const QList<int> &ids)
    {
        for (int i = 0; i < 10000 && Runs::ids() != ids; ++i) {
            QThread::msleep(1);
        }
        QCOMPARE(Runs::ids(), ids);
    }
};

void TestFetcherRuns::init()
{
    PlatformCapture::clear();
    Runs::clear();
}

void TestFetcherRuns::addedTasks_runInOrder()
{
    SingleShotTask a(1);
    SingleShotTask b(2, ScriptedTask::Fails);
    ScriptedTask c(3);
    VDataFetcher fetcher;

    fetcher.addFetchTask(&a, 0, true);
    fetcher.addFetchTask(&b, 0, true);
    fetcher.addFetchTask(&c, 0, true);
    fetcher.addFetchTask(&a, 0, true);

    QTRY_COMPARE(Runs::ids(), (QList<int>{1, 2, 3, 1}));
}

void TestFetcherRuns::taskHandedOn_hasItsLine()
{
    SingleShotTask task(3);
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 0, true);

    const QByteArray line = "DataFetcher: Woke up. Got some work here. Task id=3, thread: " +
                            threadText(QThread::currentThreadId());
    QCOMPARE(PlatformCapture::texts(LogPriority::Debug).count(line), 1);
}

void TestFetcherRuns::emptyQueue_hasItsLine()
{
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    PlatformCapture::clear();

    FetcherProbe(fetcher).takeNext();

    QCOMPARE(PlatformCapture::texts(), QList<QByteArray>{"DataFetcher: No tasks to run. Sleeping."});
    QCOMPARE(PlatformCapture::lines().constFirst().priority, int(LogPriority::Debug));
}

void TestFetcherRuns::singleShotNotNow_waitsUntilItAsks()
{
    SingleShotTask task(4);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 0, false);
    QTest::qWait(50); // grace time: nothing runs
    QVERIFY(Runs::ids().isEmpty());

    Q_EMIT task.doUpdate();

    QTRY_COMPARE(Runs::ids(), QList<int>{4});
}

void TestFetcherRuns::singleShotNotNow_waitsUntilItIsForced()
{
    SingleShotTask task(4);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 0, false);

    fetcher.forceUpdate(&task);

    QTRY_COMPARE(Runs::ids(), QList<int>{4});
}

void TestFetcherRuns::singleShotNotNow_isNotScheduled()
{
    SingleShotTask task(4);
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 30, false);

    QCOMPARE(FetcherProbe(fetcher).waitingReruns(), 0);
    QCOMPARE(FetcherProbe(fetcher).queued(), 0);
    QCOMPARE(task.connections(), 5);
}

void TestFetcherRuns::taskBehindOneOfItsId_runsOnTheWorkerThread()
{
    // Regression: the second task was neither connected nor moved, and ran on the thread that added it.
    SingleShotTask waiting(0);
    SingleShotTask added(0, ScriptedTask::Fails);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    startAndSettle(fetcher);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(&waiting, 0, false);
    probe.leaveInQueue(&waiting);

    fetcher.addFetchTask(&added, 0, true); // takes the waiting one out
    probe.takeNext();

    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(Runs::ids().size(), 2);
    QCOMPARE(Runs::lastThread(), added.thread());
    QVERIFY(added.thread() != QThread::currentThread());
    QCOMPARE(added.connections(), 5);
}

void TestFetcherRuns::periodicFailure_takesTheNextTask()
{
    SingleShotTask waiting(2);
    ScriptedTask failing(1, ScriptedTask::Fails);
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    fetcher.addFetchTask(&failing, 0, false);
    fetcher.addFetchTask(&waiting, 0, false);
    FetcherProbe(fetcher).leaveInQueue(&waiting);

    QMetaObject::invokeMethod(&failing, "run");

    QTRY_COMPARE(Runs::ids(), (QList<int>{1, 2}));
}

void TestFetcherRuns::otherEnds_takeNoTask_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("ending");
    QTest::newRow("periodic, success") << int(VFetchTask::Periodic) << int(ScriptedTask::Succeeds);
    QTest::newRow("single shot, success") << int(VFetchTask::SingleShot) << int(ScriptedTask::Succeeds);
    QTest::newRow("single shot, failure") << int(VFetchTask::SingleShot) << int(ScriptedTask::Fails);
}

void TestFetcherRuns::otherEnds_takeNoTask()
{
    QFETCH(int, type);
    QFETCH(int, ending);
    SingleShotTask waiting(2);
    ScriptedTask ended(1, static_cast<ScriptedTask::Ending>(ending));
    ended.setType(static_cast<VFetchTask::VFetchTaskType>(type));
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(&ended, 0, false);
    fetcher.addFetchTask(&waiting, 0, false);
    FetcherProbe(fetcher).leaveInQueue(&waiting);

    QMetaObject::invokeMethod(&ended, "run");
    QTRY_COMPARE(successes.count() + failures.count(), 1);

    QCOMPARE(FetcherProbe(fetcher).queued(), 1);
    QCOMPARE(Runs::ids(), QList<int>{1});
}

void TestFetcherRuns::append_takesTheTaskThatWaitedLongest()
{
    SingleShotTask waiting(1);
    SingleShotTask added(2);
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    fetcher.addFetchTask(&waiting, 0, false);
    FetcherProbe(fetcher).leaveInQueue(&waiting);

    fetcher.addFetchTask(&added, 0, true);

    QTRY_COMPARE(Runs::ids(), QList<int>{1});
    QVERIFY(fetcher.containsFetchTask(&added)); // one append takes one task
}

void TestFetcherRuns::results_arePassedOn()
{
    SingleShotTask good(1);
    SingleShotTask bad(2, ScriptedTask::Fails);
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);

    fetcher.addFetchTask(&good, 0, true);
    fetcher.addFetchTask(&bad, 0, true);

    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(0).toInt(), 1);
    QCOMPARE(successes.at(0).at(1).value<VFetchTask *>(), &good);
    QCOMPARE(failures.at(0).at(0).toInt(), 2);
    QCOMPARE(failures.at(0).at(1).value<VFetchTask *>(), &bad);
}

void TestFetcherRuns::taskDeletedWhileQueued_isSkippedSilently()
{
    SingleShotTask survivor(2);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    startAndSettle(fetcher);
    fetcher.addFetchTask(&survivor, 0, false);
    auto doomed = std::make_unique<SingleShotTask>(1);
    probe.leaveInQueue(doomed.get());
    probe.leaveInQueue(&survivor);
    doomed.reset();
    PlatformCapture::clear();

    probe.takeNext();

    QTRY_COMPARE(Runs::ids(), QList<int>{2});
    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"DataFetcher: Woke up. Got some work here. Task id=2, thread: " +
                               threadText(QThread::currentThreadId())});
}

void TestFetcherRuns::onlyTaskDeletedWhileQueued_leavesAnEmptyQueue()
{
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    startAndSettle(fetcher);
    auto doomed = std::make_unique<SingleShotTask>(1);
    probe.leaveInQueue(doomed.get());
    doomed.reset();
    PlatformCapture::clear();

    probe.takeNext();

    QCOMPARE(PlatformCapture::texts(), QList<QByteArray>{"DataFetcher: No tasks to run. Sleeping."});
}

void TestFetcherRuns::taskDeletedAfterSuccess_isWarnedAbout()
{
    auto *const task = new SingleShotTask(1);
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(task, 0, true);
    waitWithoutEvents({1});
    task->deleteLater(); // its own thread deletes it behind the run
    fetcher.stopProcessing();
    PlatformCapture::clear();

    QCoreApplication::processEvents();

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: Task finished ignored as sender is deleted"});
    QCOMPARE(successes.count(), 0);
}

void TestFetcherRuns::taskDeletedAfterFailure_isDroppedSilently()
{
    auto *const task = new SingleShotTask(1, ScriptedTask::Fails);
    VDataFetcher fetcher;
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(task, 0, true);
    waitWithoutEvents({1});
    task->deleteLater();
    fetcher.stopProcessing();
    PlatformCapture::clear();

    QCoreApplication::processEvents();

    QVERIFY(PlatformCapture::lines().isEmpty());
    QCOMPARE(failures.count(), 0);
}

void TestFetcherRuns::taskRemovedAfterItsRun_isNotReported_data()
{
    QTest::addColumn<int>("ending");
    QTest::newRow("success") << int(ScriptedTask::Succeeds);
    QTest::newRow("failure") << int(ScriptedTask::Fails);
}

void TestFetcherRuns::taskRemovedAfterItsRun_isNotReported()
{
    QFETCH(int, ending);
    ScriptedTask task(1, static_cast<ScriptedTask::Ending>(ending));
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(&task, 0, true);
    waitWithoutEvents({1});
    fetcher.stopProcessing();

    fetcher.removeFetchTask(&task);
    QCoreApplication::processEvents();

    QCOMPARE(successes.count() + failures.count(), 0);
}

void TestFetcherRuns::fetcherDeletedAtAResult_isLeftAlone()
{
    SingleShotTask task(1);
    QPointer<VDataFetcher> fetcher = new VDataFetcher;
    connect(fetcher.data(), &VDataFetcher::taskSuccess, this, [&fetcher] { delete fetcher.data(); });

    fetcher->addFetchTask(&task, 0, true);

    QTRY_VERIFY(fetcher.isNull());
}

void TestFetcherRuns::leavingTask_takesAllItsEntriesWithIt_data()
{
    QTest::addColumn<bool>("removed");
    QTest::newRow("removed") << true;
    QTest::newRow("becomes single shot") << false;
}

void TestFetcherRuns::leavingTask_takesAllItsEntriesWithIt()
{
    QFETCH(bool, removed);
    ScriptedTask leaving(1);
    SingleShotTask staying(2);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    startAndSettle(fetcher);
    fetcher.addFetchTask(&leaving, 0, false);
    fetcher.addFetchTask(&staying, 0, false);
    probe.leaveInQueue(&leaving);
    probe.leaveInQueue(&staying);
    probe.leaveInQueue(&leaving);

    if (removed) {
        fetcher.removeFetchTask(&leaving);
    } else {
        leaving.setType(VFetchTask::SingleShot);
    }

    QCOMPARE(probe.queued(), 0); // the next one was taken at the same time
    QTRY_COMPARE(Runs::ids(), QList<int>{2});
}

void TestFetcherRuns::stop_emptiesTheQueue()
{
    SingleShotTask waiting(2);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    startAndSettle(fetcher);
    fetcher.addFetchTask(&waiting, 0, false);
    probe.leaveInQueue(&waiting);

    fetcher.stopProcessing();

    QCOMPARE(probe.queued(), 0);
    QVERIFY(Runs::ids().isEmpty());
}

void TestFetcherRuns::stoppedFetcher_queuesNothing_data()
{
    QTest::addColumn<bool>("threadIsGone");
    QTest::newRow("at once") << false;
    QTest::newRow("when its thread is gone") << true;
}

void TestFetcherRuns::stoppedFetcher_queuesNothing()
{
    QFETCH(bool, threadIsGone);
    ScriptedTask task(1);
    SingleShotTask single(2);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 0, false);
    fetcher.addFetchTask(&single, 0, false);
    fetcher.stopProcessing();
    if (threadIsGone) {
        QTRY_VERIFY(probe.threadIsGone());
    }

    Q_EMIT task.doUpdate();
    QCoreApplication::processEvents();
    fetcher.forceUpdate(1);
    fetcher.forceUpdate(&single);
    fetcher.forceUpdateAll(false);
    fetcher.addFetchTask(&single, 0, true);

    QCOMPARE(probe.queued(), 0);
    QVERIFY(!fetcher.containsFetchTask(&single));
    QVERIFY(Runs::ids().isEmpty());
}

QTEST_GUILESS_MAIN(TestFetcherRuns)
#include "tst_fetcherruns.moc"
