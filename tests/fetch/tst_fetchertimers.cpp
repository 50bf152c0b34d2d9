#include "fetcherprobe.h"
#include "platformcapture.h"
#include "scriptedtask.h"
#include "threadtext.h"
#include "vdatafetcher.h"

#include <QSignalSpy>
#include <QtTest>

namespace
{

/// Counts the timer events that reach an object.
class TimerCounter : public QObject
{
public:
    explicit TimerCounter(QObject *receiver) { receiver->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        count += event->type() == QEvent::Timer ? 1 : 0;
        return QObject::eventFilter(receiver, event);
    }
};

} // namespace

/// Runs that come again: their timers, and what changes them.
class TestFetcherTimers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<VFetchTask *>(); } // for the spies
    void init();
    void cleanup() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    void periodicTask_runsAgainAfterItsInterval_data();
    void periodicTask_runsAgainAfterItsInterval();
    void periodicTaskNotNow_waitsForItsInterval();
    void intervalOfZero_isNeverScheduled_data();
    void intervalOfZero_isNeverScheduled();
    void longestInterval_isATimersLongest();
    void firedTimer_leavesNoPair();
    void twoRunsOfATask_leaveOneTimer();
    void unknownTimer_isKilled();
    void stoppedFetcher_leavesTimersThatDoNothing();

    void replacedTask_isNotScheduledAgain_data();
    void replacedTask_isNotScheduledAgain();
    void replacedTask_isNotScheduledWhenItsSuccessorHasLeft_data();
    void replacedTask_isNotScheduledWhenItsSuccessorHasLeft();
    void replacedTask_withAnotherIntervalIsNotScheduled();
    void replacedTask_leavesItsSuccessorAlone();

    void becomingSingleShot_takesTheTaskOut();
    void becomingPeriodic_entersAndSchedulesTheTask();
    void becomingPeriodic_leavesAnotherOfTheIdAlone();
    void becomingPeriodicOnTheWorkerThread_reachesTheFetcher();
    void anotherInterval_schedulesAfresh();
    void intervalSetToZero_endsTheWait();

    void forceUpdate_runsNowInPlaceOfTheTimer();
    void forceUpdate_ofAnUnknownIdIsWarnedAbout();
    void forceUpdate_ofATaskNeverAddedIsWarnedAbout();
    void forceUpdateAll_canBeLimitedToOneTimeUpdates();
    void forceUpdateAll_namesAnEmptyEntry();
};

void TestFetcherTimers::init()
{
    PlatformCapture::clear();
    Runs::clear();
}

void TestFetcherTimers::periodicTask_runsAgainAfterItsInterval_data()
{
    QTest::addColumn<int>("ending");
    QTest::newRow("after a success") << int(ScriptedTask::Succeeds);
    QTest::newRow("after a failure") << int(ScriptedTask::Fails);
}

void TestFetcherTimers::periodicTask_runsAgainAfterItsInterval()
{
    QFETCH(int, ending);
    ScriptedTask task(1, static_cast<ScriptedTask::Ending>(ending));
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    QElapsedTimer clock;
    clock.start();

    fetcher.addFetchTask(&task, 1, true);

    const QByteArray line = "DataFetcher: Scheduling task 1 to start again in 1 seconds. Thread: " +
                            threadText(QThread::currentThreadId());
    QTRY_COMPARE(PlatformCapture::texts(LogPriority::Debug).count(line), 1);
    QCOMPARE(Runs::ids().size(), 1);
    QVERIFY(probe.waitsForRerun(&task));
    QCOMPARE(probe.waitingReruns(), 1);
    QTRY_COMPARE(Runs::ids().size(), 2);
    QVERIFY(clock.elapsed() >= 900);
}

void TestFetcherTimers::periodicTaskNotNow_waitsForItsInterval()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    QElapsedTimer clock;
    clock.start();

    fetcher.addFetchTask(&task, 1, false);

    QVERIFY(FetcherProbe(fetcher).waitsForRerun(&task));
    QTRY_COMPARE(Runs::ids().size(), 1);
    QVERIFY(clock.elapsed() >= 900);
}

void TestFetcherTimers::intervalOfZero_isNeverScheduled_data()
{
    periodicTask_runsAgainAfterItsInterval_data();
}

void TestFetcherTimers::intervalOfZero_isNeverScheduled()
{
    QFETCH(int, ending);
    ScriptedTask task(1, static_cast<ScriptedTask::Ending>(ending));
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);

    fetcher.addFetchTask(&task, 0, true);
    QTRY_COMPARE(successes.count() + failures.count(), 1);

    QCOMPARE(FetcherProbe(fetcher).waitingReruns(), 0);
    QCOMPARE(Runs::ids().size(), 1);
}

void TestFetcherTimers::longestInterval_isATimersLongest()
{
    // In milliseconds this is 2^32 and 704 more, and a timer counts to 2^31 only.
    ScriptedTask task(1);
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 4294968, false);

    QVERIFY(FetcherProbe(fetcher).millisecondsToRerun(&task) > 2147000000);
}

void TestFetcherTimers::firedTimer_leavesNoPair()
{
    ScriptedTask task(1);
    task.held = true;
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 1, false);
    QCOMPARE(probe.waitingReruns(), 1);

    QTRY_COMPARE(task.begun.load(), 1);

    QCOMPARE(probe.waitingReruns(), 0);
    QVERIFY(!probe.waitsForRerun(&task));
    task.gate.release();
}

void TestFetcherTimers::twoRunsOfATask_leaveOneTimer()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);

    fetcher.addFetchTask(&task, 30, true);
    fetcher.addFetchTask(&task, 30, true);
    QTRY_COMPARE(successes.count(), 2);

    QCOMPARE(FetcherProbe(fetcher).waitingReruns(), 1);
}

void TestFetcherTimers::unknownTimer_isKilled()
{
    VDataFetcher fetcher;
    fetcher.startProcessing();
    const FetcherProbe probe(fetcher);
    const TimerCounter counter(probe.receiver());

    probe.receiver()->startTimer(5);
    QTRY_COMPARE(counter.count, 1);

    QTest::qWait(50); // grace time: a timer that lives fires again and again
    QCOMPARE(counter.count, 1);
    QCOMPARE(probe.queued(), 0);
}

void TestFetcherTimers::stoppedFetcher_leavesTimersThatDoNothing()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 1, false);

    fetcher.stopProcessing();
    QCOMPARE(probe.waitingReruns(), 1);
    QTRY_COMPARE(probe.waitingReruns(), 0); // it fires

    QCOMPARE(probe.queued(), 0);
    QVERIFY(Runs::ids().isEmpty());
    QVERIFY(!fetcher.isRunning());
}

void TestFetcherTimers::replacedTask_isNotScheduledAgain_data()
{
    periodicTask_runsAgainAfterItsInterval_data();
}

void TestFetcherTimers::replacedTask_isNotScheduledAgain()
{
    QFETCH(int, ending);
    ScriptedTask replaced(1, static_cast<ScriptedTask::Ending>(ending));
    replaced.held = true;
    ScriptedTask successor(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    QSignalSpy failures(&fetcher, &VDataFetcher::taskFailure);
    fetcher.addFetchTask(&replaced, 30, true);
    QTRY_COMPARE(replaced.begun.load(), 1);

    fetcher.addFetchTask(&successor, 40, false);
    replaced.gate.release();
    QTRY_COMPARE(successes.count() + failures.count(), 1); // its result is passed on all the same

    QVERIFY(!probe.waitsForRerun(&replaced));
    QVERIFY(probe.waitsForRerun(&successor));
    QCOMPARE(probe.waitingReruns(), 1);
}

void TestFetcherTimers::replacedTask_isNotScheduledWhenItsSuccessorHasLeft_data()
{
    QTest::addColumn<bool>("removed");
    QTest::newRow("removed") << true;
    QTest::newRow("single-shot now") << false;
}

void TestFetcherTimers::replacedTask_isNotScheduledWhenItsSuccessorHasLeft()
{
    QFETCH(bool, removed);
    ScriptedTask replaced(1);
    replaced.held = true;
    ScriptedTask successor(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    fetcher.addFetchTask(&replaced, 30, true);
    QTRY_COMPARE(replaced.begun.load(), 1);
    fetcher.addFetchTask(&successor, 40, false);

    if (removed) {
        fetcher.removeFetchTask(1);
    } else {
        successor.setType(VFetchTask::SingleShot);
    }
    replaced.gate.release();
    QTRY_COMPARE(successes.count(), 1);
    replaced.setInvokeInterval(20);

    QCOMPARE(probe.waitingReruns(), 0);
}

void TestFetcherTimers::replacedTask_withAnotherIntervalIsNotScheduled()
{
    ScriptedTask replaced(1);
    ScriptedTask successor(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&replaced, 30, false);
    fetcher.addFetchTask(&successor, 40, false);

    replaced.setInvokeInterval(20);

    QVERIFY(!probe.waitsForRerun(&replaced));
    QVERIFY(probe.waitsForRerun(&successor));
}

void TestFetcherTimers::replacedTask_leavesItsSuccessorAlone()
{
    ScriptedTask replaced(1);
    ScriptedTask successor(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&replaced, 30, false);
    fetcher.addFetchTask(&successor, 40, false);

    replaced.setType(VFetchTask::SingleShot);
    replaced.setType(VFetchTask::Periodic);

    QCOMPARE(fetcher.fetchTaskById(1), &successor);
    QVERIFY(probe.waitsForRerun(&successor));
    QCOMPARE(probe.waitingReruns(), 1);
}

void TestFetcherTimers::becomingSingleShot_takesTheTaskOut()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 30, false);
    QVERIFY(probe.waitsForRerun(&task));

    task.setType(VFetchTask::SingleShot);

    QCOMPARE(probe.waitingReruns(), 0);
    QVERIFY(fetcher.fetchTaskById(1) == nullptr);
}

void TestFetcherTimers::becomingPeriodic_entersAndSchedulesTheTask()
{
    SingleShotTask task(1);
    task.setInvokeInterval(30);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 30, false);

    task.setType(VFetchTask::Periodic);

    QCOMPARE(fetcher.fetchTaskById(1), &task);
    QVERIFY(FetcherProbe(fetcher).waitsForRerun(&task));
}

void TestFetcherTimers::becomingPeriodic_leavesAnotherOfTheIdAlone()
{
    ScriptedTask known(1);
    SingleShotTask changing(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&known, 40, false);
    fetcher.addFetchTask(&changing, 30, false);

    changing.setType(VFetchTask::Periodic);

    QCOMPARE(fetcher.fetchTaskById(1), &known);
    QVERIFY(probe.waitsForRerun(&known));
    QVERIFY(!probe.waitsForRerun(&changing));
}

void TestFetcherTimers::becomingPeriodicOnTheWorkerThread_reachesTheFetcher()
{
    // Regression: the type was not known by its name, and the change never left the worker thread.
    SingleShotTask task(1);
    task.duringRun = [&task] { task.setType(VFetchTask::Periodic); };
    VDataFetcher fetcher;

    fetcher.addFetchTask(&task, 0, true);

    QTRY_COMPARE(fetcher.fetchTaskById(1), &task);
}

void TestFetcherTimers::anotherInterval_schedulesAfresh()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 30, false);

    task.setInvokeInterval(60);

    QVERIFY(probe.waitsForRerun(&task));
    QCOMPARE(probe.waitingReruns(), 1);
    QVERIFY(probe.millisecondsToRerun(&task) > 30000);
    QVERIFY(probe.millisecondsToRerun(&task) <= 61000);
}

void TestFetcherTimers::intervalSetToZero_endsTheWait()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&task, 30, false);

    task.setInvokeInterval(0);

    QCOMPARE(FetcherProbe(fetcher).waitingReruns(), 0);
}

void TestFetcherTimers::forceUpdate_runsNowInPlaceOfTheTimer()
{
    ScriptedTask task(1);
    VDataFetcher fetcher;
    const FetcherProbe probe(fetcher);
    fetcher.addFetchTask(&task, 30, false);

    fetcher.forceUpdate(1);

    QCOMPARE(probe.waitingReruns(), 0);
    QTRY_COMPARE(Runs::ids().size(), 1);
    QTRY_VERIFY(probe.waitsForRerun(&task)); // for its next run again
}

void TestFetcherTimers::forceUpdate_ofAnUnknownIdIsWarnedAbout()
{
    VDataFetcher fetcher;

    fetcher.forceUpdate(5);

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: Unable force uptate task id=5. Task not found."});
}

void TestFetcherTimers::forceUpdate_ofATaskNeverAddedIsWarnedAbout()
{
    ScriptedTask task(5);
    VDataFetcher fetcher;
    fetcher.startProcessing();

    fetcher.forceUpdate(&task);

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"DataFetcher: Unable force uptate task id=5. Task not found."});
    QVERIFY(Runs::ids().isEmpty()); // its run would have been here, and now
}

void TestFetcherTimers::forceUpdateAll_canBeLimitedToOneTimeUpdates()
{
    ScriptedTask a(1);
    ScriptedTask b(2);
    b.setOneTimeUpdate(true);
    VDataFetcher fetcher;
    fetcher.addFetchTask(&a, 0, false);
    fetcher.addFetchTask(&b, 0, false);

    fetcher.forceUpdateAll(true);
    fetcher.forceUpdateAll(false);

    QTRY_COMPARE(Runs::ids(), (QList<int>{2, 1, 2}));
}

void TestFetcherTimers::forceUpdateAll_namesAnEmptyEntry()
{
    VDataFetcher fetcher;
    FetcherProbe(fetcher).enterNothing(9);

    fetcher.forceUpdateAll(false);

    QCOMPARE(PlatformCapture::texts(LogPriority::Debug),
             QList<QByteArray>{"DataFetcher: Unable to force update task id=9. Task not found."});
}

QTEST_GUILESS_MAIN(TestFetcherTimers)
#include "tst_fetchertimers.moc"
