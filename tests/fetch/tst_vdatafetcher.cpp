#include "platformcapture.h"
#include "vdatafetcher.h"
#include "vdatafetcher_p.h"
#include "vfetchtask.h"

#include <QMutex>
#include <QSemaphore>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace
{

QMutex logMutex;
QList<int> runLog;
QThread *lastThread = nullptr;

QList<int> runs()
{
    const QMutexLocker locker(&logMutex);
    return runLog;
}

/// A task whose run notes its id and ends as told, without a transfer. A held task waits for its semaphore.
class ScriptedTask : public VFetchTask
{
public:
    explicit ScriptedTask(int id, bool succeeds = true)
        : VFetchTask(id)
        , endsWell(succeeds)
    {
    }

    void run() override
    {
        if (held) {
            gate.acquire();
        }
        {
            const QMutexLocker locker(&logMutex);
            runLog.append(id());
            lastThread = QThread::currentThread();
        }
        if (endsWell) {
            Q_EMIT success(QByteArray("good"));
        } else {
            Q_EMIT failure(500, QByteArray("bad"));
        }
    }

    int connectionsOf(const char *signal) const { return receivers(signal); }

    QSemaphore gate;
    bool held = false;

private:
    bool endsWell;
};

std::unique_ptr<ScriptedTask> singleShot(int id, bool succeeds = true)
{
    auto task = std::make_unique<ScriptedTask>(id, succeeds);
    task->setType(VFetchTask::SingleShot);
    return task;
}

QStringList slotNames(const QMetaObject &meta)
{
    QStringList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        names.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    return names;
}

} // namespace

class TestVDataFetcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<VFetchTask *>(); }
    void init();
    void cleanup();

    void metaObjects_listSignalsAndSlotsInOrder();
    void tasks_runInOrderOnTheWorkerThread();
    void nullTask_isIgnored();
    void singleShotWithInterval_isWarnedAboutAndRuns();
    void singleShotNotNow_runsWhenItAsksToOrIsForced();
    void sameTaskAddedTwice_isConnectedOnce_data();
    void sameTaskAddedTwice_isConnectedOnce();
    void singleShotHandedOverAgain_holdsAsManyConnections();
    void secondTaskOfTheSameId_takesThePlaceOfTheFirst();
    void taskBehindAQueuedOneOfItsId_runsOnTheWorkerThread();
    void deprecatedAdd_warnsAndKeepsTheTasksId();
    void lookUps_knowPeriodicTasks();
    void containsFetchTask_byIdOfPeriodicOrQueued();
    void periodicTask_runsAgainAfterItsInterval_data();
    void periodicTask_runsAgainAfterItsInterval();
    void intervalOfZero_isNeverRescheduled();
    void periodicNotNow_waitsForItsInterval();
    void periodicFailure_takesTheNextQueuedTask();
    void periodicSuccess_doesNot();
    void deletedWhileQueued_isSkippedWithoutAWord();
    void deletedAfterSuccess_isWarnedAbout();
    void deletedAfterFailure_isDroppedSilently();
    void results_arePassedOn();
    void typeChange_toSingleShotTakesTheTaskOut();
    void typeChange_toPeriodicSchedulesIt();
    void intervalChange_schedulesAfresh();
    void forceUpdate_queuesNowInPlaceOfTheTimer();
    void forceUpdate_ofAnUnknownIdWarns();
    void forceUpdate_ofATaskNeverAddedWarns();
    void forceUpdateAll_canBeLimitedToOneTimeUpdates();
    void remove_takesTheTaskOutAndDisconnectsIt();
    void remove_ofAnUnknownIdWarns();
    void startTwice_warns();
    void stopTwice_warns();
    void stop_leavesTimersThatDoNothing();
    void stop_emptiesTheQueue();
    void startAfterStop_isRefused();
    void doubleRun_leavesOneTimer();

private:
    /// Starts the fetcher and waits until its first look at the empty queue is over.
    static void startAndSettle(VDataFetcher &fetcher)
    {
        fetcher.startProcessing();
        QTRY_COMPARE(PlatformCapture::count("DataFetcher: No tasks to run. Sleeping."), 1);
    }

    static const VDataFetcherPrivate *privateHalf(const VDataFetcher &fetcher)
    {
        return fetcher.findChild<VDataFetcherPrivate *>();
    }
};

void TestVDataFetcher::init()
{
    PlatformCapture::clear();
    const QMutexLocker locker(&logMutex);
    runLog.clear();
}

void TestVDataFetcher::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestVDataFetcher::metaObjects_listSignalsAndSlotsInOrder()
{
    QCOMPARE(slotNames(VDataFetcher::staticMetaObject),
             (QStringList{QStringLiteral("taskSuccess(int,VFetchTask*)"),
                          QStringLiteral("taskFailure(int,VFetchTask*)")}));
    QCOMPARE(
        VDataFetcher::staticMetaObject.method(VDataFetcher::staticMetaObject.methodOffset()).parameterNames(),
        (QList<QByteArray>{"id", "task"}));
    QCOMPARE(
        slotNames(VDataFetcherPrivate::staticMetaObject),
        (QStringList{QStringLiteral("processNextTask()"), QStringLiteral("addTaskToExecQueue()"),
                     QStringLiteral("addTaskToExecQueue(VFetchTask*)"),
                     QStringLiteral("removeTaskFromExecQueue(VFetchTask*)"),
                     QStringLiteral("taskFinishedSuccess(QByteArray)"),
                     QStringLiteral("taskFinishedFailure(int,QByteArray)"),
                     QStringLiteral("taskInvokeIntervalChanged()"), QStringLiteral("taskTypeChanged()")}));
}

void TestVDataFetcher::tasks_runInOrderOnTheWorkerThread()
{
    const auto a = singleShot(1);
    const auto b = singleShot(2, false);
    const auto c = singleShot(3);
    VDataFetcher fetcher;
    QVERIFY(!fetcher.isRunning());
    fetcher.addFetchTask(a.get(), 0, true);
    fetcher.addFetchTask(b.get(), 0, true);
    fetcher.addFetchTask(c.get(), 0, true);
    QVERIFY(fetcher.isRunning());
    QTRY_COMPARE(runs(), (QList<int>{1, 2, 3}));
    QVERIFY(lastThread != QThread::currentThread());
    QCOMPARE(lastThread->metaObject()->className(), "VThread");
    QCOMPARE(a->thread(), lastThread);
    QCOMPARE(fetcher.thread(), QThread::currentThread());
    QCOMPARE(PlatformCapture::count("VDataFetcher: start processing"), 1);
    QCOMPARE(PlatformCapture::count("DataFetcher: Task id=2 has been added to processing queue."), 1);
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
    const auto task = singleShot(4);
    VDataFetcher fetcher;
    fetcher.addFetchTask(task.get(), 3, true);
    QCOMPARE(PlatformCapture::texts(5),
             QList<QByteArray>{"DataFetcher: Single shot task id=4 contains invoke interval 3"});
    QCOMPARE(task->invokeInterval(), 3);
    QTRY_COMPARE(runs(), QList<int>{4});
}

void TestVDataFetcher::singleShotNotNow_runsWhenItAsksToOrIsForced()
{
    const auto task = singleShot(4);
    VDataFetcher fetcher;
    fetcher.addFetchTask(task.get(), 0, false);
    QTest::qWait(50); // grace time: nothing runs
    QVERIFY(runs().isEmpty());
    Q_EMIT task->doUpdate();
    QTRY_COMPARE(runs().size(), 1);
    fetcher.forceUpdate(task.get());
    QTRY_COMPARE(runs().size(), 2);
}

void TestVDataFetcher::sameTaskAddedTwice_isConnectedOnce_data()
{
    QTest::addColumn<bool>("periodic");
    QTest::newRow("periodic") << true;
    QTest::newRow("single shot") << false;
}

void TestVDataFetcher::sameTaskAddedTwice_isConnectedOnce()
{
    QFETCH(bool, periodic);
    ScriptedTask task(1);
    task.setType(periodic ? VFetchTask::Periodic : VFetchTask::SingleShot);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 0, true);
    fetcher.addFetchTask(&task, 0, true);
    for (const char *signal :
         {SIGNAL(doUpdate()), SIGNAL(success(QByteArray)), SIGNAL(failure(int, QByteArray)),
          SIGNAL(invokeIntervalChanged(int)), SIGNAL(typeChanged(VFetchTask::VFetchTaskType))}) {
        QCOMPARE(task.connectionsOf(QMetaObject::normalizedSignature(signal).constData()), 1);
    }
    QTRY_COMPARE(runs().size(), 2);
    fetcher.stopProcessing();
}

void TestVDataFetcher::singleShotHandedOverAgain_holdsAsManyConnections()
{
    const auto task = singleShot(0, false);
    VDataFetcher fetcher;
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    for (int i = 1; i <= 1000; ++i) {
        fetcher.addFetchTask(task.get(), 0, true);
        QVERIFY(failures.count() == i || failures.wait(5000));
        QCOMPARE(failures.count(), i);
        QCOMPARE(task->connectionsOf(SIGNAL(failure(int, QByteArray))), 1);
        QCOMPARE(task->connectionsOf(SIGNAL(doUpdate())), 1);
    }
}

void TestVDataFetcher::secondTaskOfTheSameId_takesThePlaceOfTheFirst()
{
    ScriptedTask first(1);
    ScriptedTask second(1);
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(&first, 30, false);
    fetcher.addFetchTask(&second, 0, true);
    QCOMPARE(fetcher.fetchTaskById(1), &second);
    QVERIFY(privateHalf(fetcher)->timerByTask.isEmpty());
    QTRY_COMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(1).value<VFetchTask *>(), &second);
    QVERIFY(lastThread != QThread::currentThread());
    fetcher.stopProcessing();
}

void TestVDataFetcher::taskBehindAQueuedOneOfItsId_runsOnTheWorkerThread()
{
    // Regression: the second task was neither connected nor moved, and ran on the thread that added it.
    const auto waiting = singleShot(0);
    const auto added = singleShot(0, false);
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(waiting.get(), 0, false);
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(waiting.get());
    fetcher.addFetchTask(added.get(), 0, true); // takes the waiting one out
    QMetaObject::invokeMethod(fetcher.findChild<VDataFetcherPrivate *>(), "processNextTask");
    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(runs().size(), 2);
    QVERIFY(lastThread != QThread::currentThread());
    QCOMPARE(added->connectionsOf(SIGNAL(success(QByteArray))), 1);
}

void TestVDataFetcher::deprecatedAdd_warnsAndKeepsTheTasksId()
{
    const auto task = singleShot(4);
    VDataFetcher fetcher;
    fetcher.addFetchTask(77, task.get(), 0, true);
    QCOMPARE(PlatformCapture::texts(5),
             QList<QByteArray>{"DataFetcher: deprecated api. Use addFetchTask(VFetchTask, int, bool)"});
    QCOMPARE(PlatformCapture::count(
                 "DataFetcher: Task id=77, invoke interval: 0 has been added to processing queue."),
             1);
    QCOMPARE(task->id(), 4);
    QTRY_COMPARE(runs(), QList<int>{4});
}

void TestVDataFetcher::lookUps_knowPeriodicTasks()
{
    ScriptedTask periodic(1);
    const auto single = singleShot(2);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&periodic, 0, false);
    fetcher.addFetchTask(single.get(), 0, false);
    QCOMPARE(fetcher.fetchTaskById(1), &periodic);
    QVERIFY(fetcher.fetchTaskById(2) == nullptr);
    PlatformCapture::clear();
    QCOMPARE(fetcher.fetchTask(1), &periodic);
    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"DataFetcher: deprecated API. Use fetchTaskById(int) instead"});
}

void TestVDataFetcher::containsFetchTask_byIdOfPeriodicOrQueued()
{
    ScriptedTask periodic(1);
    ScriptedTask sameId(1);
    const auto single = singleShot(2);
    VDataFetcher fetcher;
    QVERIFY(!fetcher.containsFetchTask(&periodic));
    fetcher.addFetchTask(&periodic, 0, false);
    QVERIFY(fetcher.containsFetchTask(&periodic));
    QVERIFY(fetcher.containsFetchTask(&sameId)); // the id decides

    // A queued task is handed to the worker thread at once, so it is held only until then.
    fetcher.addFetchTask(single.get(), 0, true);
    QVERIFY(!fetcher.containsFetchTask(single.get()));
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(single.get());
    QVERIFY(fetcher.containsFetchTask(single.get()));
}

void TestVDataFetcher::periodicTask_runsAgainAfterItsInterval_data()
{
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("after a success") << true;
    QTest::newRow("after a failure") << false;
}

void TestVDataFetcher::periodicTask_runsAgainAfterItsInterval()
{
    QFETCH(bool, succeeds);
    ScriptedTask task(1, succeeds);
    VDataFetcher fetcher;
    QElapsedTimer clock;
    clock.start();
    fetcher.addFetchTask(&task, 1, true);
    QTRY_COMPARE(runs().size(), 1);
    QTRY_VERIFY(PlatformCapture::texts(3).join('\n').contains(
        "DataFetcher: Scheduling task 1 to start again in 1 seconds. Thread: "));
    QCOMPARE(privateHalf(fetcher)->taskByTimer.size(), 1);
    QCOMPARE(privateHalf(fetcher)->timerByTask.size(), 1);
    QTRY_COMPARE(runs().size(), 2);
    QVERIFY(clock.elapsed() >= 900);
    fetcher.stopProcessing();
}

void TestVDataFetcher::intervalOfZero_isNeverRescheduled()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    QSignalSpy finished(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(&task, 0, true);
    QVERIFY(finished.wait(5000));
    QVERIFY(privateHalf(fetcher)->taskByTimer.isEmpty());
    QCOMPARE(runs().size(), 1);
    fetcher.stopProcessing();
}

void TestVDataFetcher::periodicNotNow_waitsForItsInterval()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    QElapsedTimer clock;
    clock.start();
    fetcher.addFetchTask(&task, 1, false);
    QVERIFY(runs().isEmpty());
    QTRY_COMPARE(runs().size(), 1);
    QVERIFY(clock.elapsed() >= 900);
    fetcher.stopProcessing();
}

void TestVDataFetcher::periodicFailure_takesTheNextQueuedTask()
{
    ScriptedTask failing(1, false);
    const auto waiting = singleShot(2);
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(&failing, 0, false);
    fetcher.addFetchTask(waiting.get(), 0, false);
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(waiting.get());
    QMetaObject::invokeMethod(&failing, "run");
    QVERIFY(failures.wait(5000));
    QTRY_COMPARE(runs(), (QList<int>{1, 2}));
    fetcher.stopProcessing();
}

void TestVDataFetcher::periodicSuccess_doesNot()
{
    ScriptedTask good(1);
    const auto waiting = singleShot(2);
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(&good, 0, false);
    fetcher.addFetchTask(waiting.get(), 0, false);
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(waiting.get());
    QMetaObject::invokeMethod(&good, "run");
    QVERIFY(successes.wait(5000));
    QTest::qWait(50); // grace time: nothing takes the waiting task
    QCOMPARE(runs(), QList<int>{1});
    // The next append does.
    const auto next = singleShot(3);
    fetcher.addFetchTask(next.get(), 0, true);
    QTRY_VERIFY(runs().contains(2));
    fetcher.stopProcessing();
}

void TestVDataFetcher::deletedWhileQueued_isSkippedWithoutAWord()
{
    VDataFetcher fetcher;
    startAndSettle(fetcher);
    auto *const d = fetcher.findChild<VDataFetcherPrivate *>();
    const auto survivor = singleShot(2);
    fetcher.addFetchTask(survivor.get(), 0, false);
    auto doomed = singleShot(1);
    d->execQueue.append(doomed.get());
    d->execQueue.append(survivor.get());
    doomed.reset();
    PlatformCapture::clear();
    QMetaObject::invokeMethod(d, "processNextTask");
    QTRY_COMPARE(runs(), QList<int>{2});
    QVERIFY(PlatformCapture::texts(5).isEmpty());

    // The only one in the queue: the queue counts as empty.
    auto last = singleShot(3);
    d->execQueue.append(last.get());
    last.reset();
    PlatformCapture::clear();
    QMetaObject::invokeMethod(d, "processNextTask");
    QCOMPARE(PlatformCapture::texts(3), QList<QByteArray>{"DataFetcher: No tasks to run. Sleeping."});
    fetcher.stopProcessing();
}

void TestVDataFetcher::deletedAfterSuccess_isWarnedAbout()
{
    auto *const task = singleShot(1).release();
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(task, 0, true);
    while (runs().isEmpty()) {
        QThread::msleep(1); // no event loop: the result waits in this thread's queue
    }
    task->deleteLater(); // its own thread deletes it behind the run
    fetcher.stopProcessing();
    PlatformCapture::clear();
    QCoreApplication::processEvents();
    QCOMPARE(PlatformCapture::texts(5),
             QList<QByteArray>{"DataFetcher: Task finished ignored as sender is deleted"});
    QCOMPARE(successes.count(), 0);
}

void TestVDataFetcher::deletedAfterFailure_isDroppedSilently()
{
    auto *const task = singleShot(1, false).release();
    VDataFetcher fetcher;
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(task, 0, true);
    while (runs().isEmpty()) {
        QThread::msleep(1);
    }
    task->deleteLater();
    fetcher.stopProcessing();
    PlatformCapture::clear();
    QCoreApplication::processEvents();
    QVERIFY(PlatformCapture::lines().isEmpty());
    QCOMPARE(failures.count(), 0);
}

void TestVDataFetcher::results_arePassedOn()
{
    const auto good = singleShot(1);
    const auto bad = singleShot(2, false);
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(good.get(), 0, true);
    fetcher.addFetchTask(bad.get(), 0, true);
    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(0).toInt(), 1);
    QCOMPARE(successes.at(0).at(1).value<VFetchTask *>(), good.get());
    QCOMPARE(failures.at(0).at(0).toInt(), 2);
    QCOMPARE(failures.at(0).at(1).value<VFetchTask *>(), bad.get());
}

void TestVDataFetcher::typeChange_toSingleShotTakesTheTaskOut()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 30, false);
    QCOMPARE(privateHalf(fetcher)->taskByTimer.size(), 1);
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(&task);
    task.setType(VFetchTask::SingleShot);
    QVERIFY(privateHalf(fetcher)->taskByTimer.isEmpty());
    QVERIFY(privateHalf(fetcher)->timerByTask.isEmpty());
    QVERIFY(privateHalf(fetcher)->execQueue.isEmpty());
    QVERIFY(fetcher.fetchTaskById(1) == nullptr);
    QTest::qWait(50); // grace time
    QVERIFY(runs().isEmpty());
    fetcher.stopProcessing();
}

void TestVDataFetcher::typeChange_toPeriodicSchedulesIt()
{
    const auto task = singleShot(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(task.get(), 0, false);
    task->blockSignals(true);
    task->setInvokeInterval(30);
    task->blockSignals(false);
    task->setType(VFetchTask::Periodic);
    QCOMPARE(fetcher.fetchTaskById(1), task.get());
    QCOMPARE(privateHalf(fetcher)->taskByTimer.size(), 1);
    fetcher.stopProcessing();
}

void TestVDataFetcher::intervalChange_schedulesAfresh()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 30, false);
    task.setInvokeInterval(1);
    QCOMPARE(privateHalf(fetcher)->taskByTimer.size(), 1);
    QVERIFY(privateHalf(fetcher)->timerByTask.contains(&task));
    QTRY_COMPARE_WITH_TIMEOUT(runs().size(), 1, 5000); // after a second, not after thirty

    task.setInvokeInterval(0);
    QVERIFY(privateHalf(fetcher)->taskByTimer.isEmpty());
    QVERIFY(privateHalf(fetcher)->timerByTask.isEmpty());
    fetcher.stopProcessing();
}

void TestVDataFetcher::forceUpdate_queuesNowInPlaceOfTheTimer()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 30, false);
    fetcher.forceUpdate(1);
    QVERIFY(privateHalf(fetcher)->taskByTimer.isEmpty());
    QTRY_COMPARE(runs().size(), 1);
    QTRY_COMPARE(privateHalf(fetcher)->taskByTimer.size(), 1); // waits for its next run again
    fetcher.stopProcessing();
}

void TestVDataFetcher::forceUpdate_ofAnUnknownIdWarns()
{
    VDataFetcher fetcher;
    fetcher.forceUpdate(5);
    QCOMPARE(PlatformCapture::texts(5),
             QList<QByteArray>{"DataFetcher: Unable force uptate task id=5. Task not found."});
}

void TestVDataFetcher::forceUpdate_ofATaskNeverAddedWarns()
{
    ScriptedTask task(5);
    VDataFetcher fetcher;
    fetcher.startProcessing();
    fetcher.forceUpdate(&task);
    QCOMPARE(PlatformCapture::texts(5),
             QList<QByteArray>{"DataFetcher: Unable force uptate task id=5. Task not found."});
    QVERIFY(runs().isEmpty());
}

void TestVDataFetcher::forceUpdateAll_canBeLimitedToOneTimeUpdates()
{
    ScriptedTask a(1);
    ScriptedTask b(2);
    b.setOneTimeUpdate(true);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&a, 0, false);
    fetcher.addFetchTask(&b, 0, false);
    fetcher.forceUpdateAll(true);
    QTRY_COMPARE(runs(), QList<int>{2});
    fetcher.forceUpdateAll(false);
    QTRY_COMPARE(runs(), (QList<int>{2, 1, 2}));

    fetcher.findChild<VDataFetcherPrivate *>()->tasksById.insert(9, nullptr);
    fetcher.forceUpdateAll(false);
    QCOMPARE(
        PlatformCapture::texts(3).count("DataFetcher: Unable to force update task id=9. Task not found."), 1);
    fetcher.stopProcessing();
}

void TestVDataFetcher::remove_takesTheTaskOutAndDisconnectsIt()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 30, false);
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(&task);
    PlatformCapture::clear();
    fetcher.removeFetchTask(&task);
    QVERIFY(fetcher.fetchTaskById(1) == nullptr);
    QVERIFY(privateHalf(fetcher)->taskByTimer.isEmpty());
    QVERIFY(privateHalf(fetcher)->execQueue.isEmpty());
    QCOMPARE(task.connectionsOf(SIGNAL(doUpdate())), 0);
    QCOMPARE(task.connectionsOf(SIGNAL(success(QByteArray))), 0);
    QCOMPARE(task.connectionsOf(SIGNAL(failure(int, QByteArray))), 0);
    QCOMPARE(task.connectionsOf(SIGNAL(invokeIntervalChanged(int))), 0);
    QCOMPARE(task.connectionsOf(SIGNAL(typeChanged(VFetchTask::VFetchTaskType))), 0);
    QCOMPARE(PlatformCapture::texts(), (QList<QByteArray>{"DataFetcher: No tasks to run. Sleeping.",
                                                          "DataFetcher: removed task with id 1"}));
    QVERIFY(task.thread() != QThread::currentThread());
    fetcher.stopProcessing();
}

void TestVDataFetcher::remove_ofAnUnknownIdWarns()
{
    const auto single = singleShot(3);
    VDataFetcher fetcher;
    fetcher.addFetchTask(single.get(), 0, false);
    PlatformCapture::clear();
    fetcher.removeFetchTask(3); // a single-shot task is not known by its id
    QCOMPARE(PlatformCapture::texts(), QList<QByteArray>{"DataFetcher: Wrong task id"});
    QCOMPARE(single->connectionsOf(SIGNAL(success(QByteArray))), 1);
}

void TestVDataFetcher::startTwice_warns()
{
    VDataFetcher fetcher;
    fetcher.startProcessing();
    QVERIFY(PlatformCapture::texts(5).isEmpty());
    QVERIFY(
        PlatformCapture::texts(3).constFirst().startsWith("DataFetcher: Processing started from thread "));
    fetcher.startProcessing();
    QCOMPARE(PlatformCapture::texts(5), QList<QByteArray>{"DataFetcher: Fetcher already running"});
}

void TestVDataFetcher::stopTwice_warns()
{
    VDataFetcher fetcher;
    fetcher.startProcessing();
    PlatformCapture::clear();
    fetcher.stopProcessing();
    QVERIFY(!fetcher.isRunning());
    QCOMPARE(PlatformCapture::texts(),
             (QList<QByteArray>{"VDataFetcher: stop processing", "DataFetcher: Processing stopped."}));
    fetcher.stopProcessing();
    QCOMPARE(PlatformCapture::texts(5), QList<QByteArray>{"DataFetcher: Fetcher already stopped"});
    QTRY_VERIFY(privateHalf(fetcher)->thread.isNull()); // it deletes itself
    fetcher.stopProcessing();
    QCOMPARE(PlatformCapture::texts(5).size(), 2);
}

void TestVDataFetcher::stop_leavesTimersThatDoNothing()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 1, false);
    fetcher.stopProcessing();
    QCOMPARE(privateHalf(fetcher)->taskByTimer.size(), 1);
    QTRY_VERIFY(privateHalf(fetcher)->taskByTimer.isEmpty()); // it fires
    QTest::qWait(50);                                         // grace time: nothing runs
    QVERIFY(runs().isEmpty());
    QVERIFY(!fetcher.isRunning());
}

void TestVDataFetcher::stop_emptiesTheQueue()
{
    const auto running = singleShot(1);
    running->held = true;
    const auto waiting = singleShot(2);
    VDataFetcher fetcher;
    fetcher.addFetchTask(running.get(), 0, true);
    fetcher.findChild<VDataFetcherPrivate *>()->execQueue.append(waiting.get());
    running->gate.release();
    fetcher.stopProcessing(); // waits for the run
    QVERIFY(privateHalf(fetcher)->execQueue.isEmpty());
    QVERIFY(!runs().contains(2));
}

void TestVDataFetcher::startAfterStop_isRefused()
{
    const auto task = singleShot(1);
    VDataFetcher fetcher;
    fetcher.startProcessing();
    fetcher.stopProcessing();
    PlatformCapture::clear();
    fetcher.addFetchTask(task.get(), 0, true); // the thread is finished and not gone yet
    QVERIFY(!fetcher.isRunning());
    QCOMPARE(PlatformCapture::texts(5), QList<QByteArray>{"DataFetcher: Fetcher can not be started again"});
    QTRY_VERIFY(privateHalf(fetcher)->thread.isNull());
    fetcher.addFetchTask(task.get(), 0, true);
    QVERIFY(!fetcher.isRunning());
    QVERIFY(runs().isEmpty());
}

void TestVDataFetcher::doubleRun_leavesOneTimer()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(&task, 30, true);
    fetcher.addFetchTask(&task, 30, true);
    QTRY_COMPARE(successes.count(), 2);
    QCOMPARE(privateHalf(fetcher)->taskByTimer.size(), 1);
    QCOMPARE(privateHalf(fetcher)->timerByTask.size(), 1);
    fetcher.stopProcessing();
}

QTEST_GUILESS_MAIN(TestVDataFetcher)
#include "tst_vdatafetcher.moc"
