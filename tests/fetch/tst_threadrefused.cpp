#include "platformcapture.h"
#include "scriptedtask.h"
#include "vdatafetcher.h"

#include <QtTest>

#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

/// What becomes of a run when the system has no thread for it.
class TestThreadRefused : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void runWithoutAThread_isReportedAsFailed();
    void nextRun_startsTheThread();
    void taskDeletedMeanwhile_isReportedToNobody();
};

namespace
{

bool refuseThreads = false;

struct Refusal {
    Refusal() { refuseThreads = true; }
    ~Refusal() { refuseThreads = false; }
    Q_DISABLE_COPY(Refusal)
};

} // namespace

// Stands before the C library's: the framework's threads are made here.
extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*routine)(void *),
                              void *argument)
{
    using Create = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return refuseThreads ? EAGAIN : create(thread, attributes, routine, argument);
}

void TestThreadRefused::init()
{
    PlatformCapture::clear();
    Runs::clear();
}

void TestThreadRefused::runWithoutAThread_isReportedAsFailed()
{
    SingleShotTask task(7);
    VDataFetcher fetcher;
    QSignalSpy failures(&task, &VFetchTask::failure);
    QSignalSpy reported(&fetcher, &VDataFetcher::taskFailure);

    {
        const Refusal refusal;
        fetcher.addFetchTask(&task, 0, true);
    }
    QVERIFY(failures.isEmpty()); // whoever adds a task does not expect its result before the call is over

    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), static_cast<int>(VFetchTask::NoCurlHandle));
    QCOMPARE(reported.count(), 1);
    QCOMPARE(PlatformCapture::count(
                 "DataFetcher: Task id=7 can not be run, there is no thread. It counts as failed."),
             1);
    QVERIFY(!fetcher.isRunning());
    QVERIFY(Runs::ids().isEmpty());
}

void TestThreadRefused::nextRun_startsTheThread()
{
    SingleShotTask task(7);
    VDataFetcher fetcher;
    QSignalSpy failures(&task, &VFetchTask::failure);
    QSignalSpy successes(&fetcher, &VDataFetcher::taskSuccess);
    {
        const Refusal refusal;
        fetcher.addFetchTask(&task, 0, true);
    }
    QTRY_COMPARE(failures.count(), 1);

    fetcher.addFetchTask(&task, 0, true);

    QTRY_COMPARE(successes.count(), 1);
    QCOMPARE(Runs::ids(), QList<int>{7});
    QVERIFY(task.thread() != QThread::currentThread());
    QCOMPARE(failures.count(), 1);
}

void TestThreadRefused::taskDeletedMeanwhile_isReportedToNobody()
{
    VDataFetcher fetcher;
    QSignalSpy reported(&fetcher, &VDataFetcher::taskFailure);
    {
        const Refusal refusal;
        const auto task = std::make_unique<SingleShotTask>(7);
        fetcher.addFetchTask(task.get(), 0, true);
    }

    QTest::qWait(20); // grace time: what was posted is delivered

    QVERIFY(reported.isEmpty());
}

QTEST_GUILESS_MAIN(TestThreadRefused)
#include "tst_threadrefused.moc"
