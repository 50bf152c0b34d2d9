#include "curlfake.h"
#include "fetcherprobe.h"
#include "membersof.h"
#include "platformcapture.h"
#include "remoterequestworker.h"
#include "remotetaskwithdescription.h"

#include <QPointer>
#include <QtTest>

namespace
{

struct Result {
    int code; ///< 0 for a success
    QByteArray data;
    RemoteTaskDescription descr;
};

/// Takes the worker's results as the manager does: directly, with arguments that no queue could carry.
class Receiver : public QObject
{
    Q_OBJECT

public:
    explicit Receiver(RemoteRequestWorker *worker)
    {
        connect(worker, &RemoteRequestWorker::taskSuccess, this, &Receiver::success);
        connect(worker, &RemoteRequestWorker::taskFailed, this, &Receiver::failed);
    }

    QList<Result> results;
    QThread *calledOn = nullptr;

Q_SIGNALS:
    void arrived();

private Q_SLOTS:
    void success(QByteArray &data, RemoteTaskDescription descr) { add({0, data, descr}); }
    void failed(int code, QByteArray &data, RemoteTaskDescription descr) { add({code, data, descr}); }

private:
    void add(const Result &result)
    {
        results.append(result);
        calledOn = QThread::currentThread();
        Q_EMIT arrived();
    }
};

RemoteTaskDescription description(const char *id)
{
    return {1, QString::fromLatin1(id), {{QStringLiteral("name"), QString::fromLatin1(id)}}};
}

/// Counts what is connected to it.
class CountingTask : public RemoteTaskWithDescription
{
public:
    using RemoteTaskWithDescription::RemoteTaskWithDescription;
    int connections() const
    {
        return receivers(SIGNAL(success(QByteArray))) + receivers(SIGNAL(failure(int, QByteArray))) +
               receivers(SIGNAL(doUpdate())) + receivers(SIGNAL(invokeIntervalChanged(int))) +
               receivers(SIGNAL(typeChanged(VFetchTask::VFetchTaskType)));
    }
};

} // namespace

/// The tasks of a test stand before its worker, whose thread may still be leaving their run at the end.
class TestRemoteRequestWorker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void metaObject_listsSignalsAndSlotsInOrder();
    void result_carriesTheDescription_data();
    void result_carriesTheDescription();
    void taskAddedTwice_isConnectedOnceAndRunsTwice();
    void taskAddedAgainAThousandTimes_holdsAsManyConnections();
    void containsTask_onlyWhileQueued();
    void removeTask_leavesTheRunQueued();
    void removeTask_ofOneNotHeldIsSilent();
    void removeTask_whileHeldEndsInAWarning();
    void resultOfADeletedTask_isDropped_data();
    void resultOfADeletedTask_isDropped();
    void finish_isAnnounced();
    void disposedTask_isDeletedHereBehindItsResults();
    void disposedTask_thatNeverRan_isDeleted();
};

void TestRemoteRequestWorker::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestRemoteRequestWorker::metaObject_listsSignalsAndSlotsInOrder()
{
    const QStringList members = membersOf(RemoteRequestWorker::staticMetaObject);

    QCOMPARE(
        members,
        (QStringList{
            QStringLiteral("signal void workerFinished()"),
            QStringLiteral("signal void taskSuccess(QByteArray& data, RemoteTaskDescription descr)"),
            QStringLiteral("signal void taskFailed(int code, QByteArray& data, RemoteTaskDescription descr)"),
            QStringLiteral("signal void workerThreadFinished()"),
            QStringLiteral("slot void taskSuccessSlot(QByteArray data)"),
            QStringLiteral("slot void taskFailedSlot(int code, QByteArray data)")}));
}

void TestRemoteRequestWorker::result_carriesTheDescription_data()
{
    QTest::addColumn<int>("curlCode");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("success") << 0 << 201 << QByteArray("b") << 0 << QByteArray("b");
    QTest::newRow("status") << 0 << 503 << QByteArray("b") << 503 << QByteArray("b");
    QTest::newRow("curl error") << 7 << 0 << QByteArray() << 7 << QByteArray();
}

void TestRemoteRequestWorker::result_carriesTheDescription()
{
    QFETCH(int, curlCode);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    CurlFake::setAnswer({static_cast<CURLcode>(curlCode), status, body, ""});
    RemoteTaskWithDescription task(description("u"));
    RemoteRequestWorker worker(nullptr);
    const Receiver receiver(&worker);

    worker.addTask(&task);
    QTRY_COMPARE(receiver.results.size(), 1);

    QTEST(receiver.results.constFirst().code, "code");
    QTEST(receiver.results.constFirst().data, "data");
    QVERIFY(receiver.results.constFirst().descr == description("u"));
    QCOMPARE(receiver.calledOn, QThread::currentThread());
    QVERIFY(CurlFake::requests().constFirst().thread != QThread::currentThread());
}

void TestRemoteRequestWorker::taskAddedTwice_isConnectedOnceAndRunsTwice()
{
    CountingTask task(description("u"));
    RemoteRequestWorker worker(nullptr);
    const Receiver receiver(&worker);

    worker.addTask(&task);
    worker.addTask(&task);

    QCOMPARE(task.connections(), 7); // two of the worker, five of the fetcher
    QTRY_COMPARE(receiver.results.size(), 2);
    QCOMPARE(CurlFake::requestCount(), 2);
}

void TestRemoteRequestWorker::taskAddedAgainAThousandTimes_holdsAsManyConnections()
{
    CurlFake::setAnswer({CURLE_OK, 503, "", ""});
    CountingTask task(description("u"));
    RemoteRequestWorker worker(nullptr);
    Receiver receiver(&worker);
    QSignalSpy arrivals(&receiver, &Receiver::arrived);

    for (int i = 1; i <= 1000; ++i) {
        worker.addTask(&task);
        QVERIFY(arrivals.count() == i || arrivals.wait(5000));
    }

    QCOMPARE(receiver.results.size(), 1000);
    QCOMPARE(task.connections(), 7);
    QCOMPARE(CurlFake::requestCount(), 1000);
}

void TestRemoteRequestWorker::containsTask_onlyWhileQueued()
{
    CurlFake::hold();
    RemoteTaskWithDescription task(description("u"));
    RemoteRequestWorker worker(nullptr);
    QVERIFY(!worker.containsTask(&task));

    worker.addTask(&task);
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    QVERIFY(!worker.containsTask(&task)); // it runs
    FetcherProbe(worker).leaveInQueue(&task);

    QVERIFY(worker.containsTask(&task));
    CurlFake::release();
}

void TestRemoteRequestWorker::removeTask_leavesTheRunQueued()
{
    CurlFake::hold();
    RemoteTaskWithDescription first(description("1"));
    RemoteTaskWithDescription second(description("2"));
    RemoteRequestWorker worker(nullptr);
    const Receiver receiver(&worker);
    worker.addTask(&first);
    worker.addTask(&second);

    worker.removeTask(&second);
    CurlFake::release();

    QTRY_COMPARE(receiver.results.size(), 2);
    QVERIFY(receiver.results.at(1).descr == description("2"));
}

void TestRemoteRequestWorker::removeTask_ofOneNotHeldIsSilent()
{
    RemoteTaskWithDescription task(description("u"));
    RemoteRequestWorker worker(nullptr);

    worker.removeTask(&task);

    QVERIFY(PlatformCapture::texts(LogPriority::Warning).isEmpty());
}

void TestRemoteRequestWorker::removeTask_whileHeldEndsInAWarning()
{
    RemoteTaskWithDescription task(description("u"));
    RemoteRequestWorker worker(nullptr);
    const FetcherProbe probe(worker);
    probe.leaveInQueue(&task);

    worker.removeTask(&task);

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning), QList<QByteArray>{"DataFetcher: Wrong task id"});
    QCOMPARE(probe.queued(), 1);
}

void TestRemoteRequestWorker::resultOfADeletedTask_isDropped_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("warnings");
    QTest::newRow("success") << 200 << 1;
    QTest::newRow("failure") << 503 << 0;
}

void TestRemoteRequestWorker::resultOfADeletedTask_isDropped()
{
    QFETCH(int, status);
    QFETCH(int, warnings);
    CurlFake::setAnswer({CURLE_OK, status, "", ""});
    RemoteRequestWorker worker(nullptr);
    const Receiver receiver(&worker);
    auto *const task = new RemoteTaskWithDescription(description("u"));
    worker.addTask(task);
    auto *const thread = worker.findChild<VThread *>();
    for (int i = 0; i < 10000 && CurlFake::requestCount() == 0; ++i) {
        QThread::msleep(1); // no event loop here: the result waits
    }
    QCOMPARE(CurlFake::requestCount(), 1);
    task->deleteLater(); // on its own thread, behind the run
    thread->quit();
    QVERIFY(thread->wait(5000));
    PlatformCapture::clear();

    QCoreApplication::processEvents();

    QVERIFY(receiver.results.isEmpty());
    QCOMPARE(PlatformCapture::count("DataFetcher: Task finished ignored as sender is deleted"), warnings);
}

void TestRemoteRequestWorker::finish_isAnnounced()
{
    RemoteRequestWorker worker(nullptr);
    const QSignalSpy finished(&worker, &RemoteRequestWorker::workerFinished);
    const QSignalSpy threadFinished(&worker, &RemoteRequestWorker::workerThreadFinished);

    worker.finish();

    QCOMPARE(finished.count(), 1);
    QCOMPARE(threadFinished.count(), 0);
}

void TestRemoteRequestWorker::disposedTask_isDeletedHereBehindItsResults()
{
    CurlFake::hold();
    RemoteRequestWorker worker(nullptr);
    const Receiver receiver(&worker);
    QPointer<RemoteTaskWithDescription> task = new RemoteTaskWithDescription(description("u"));
    QThread *deletedOn = nullptr;
    int resultsWhenDeleted = 0;
    connect(
        task.data(), &QObject::destroyed, this,
        [&] {
            deletedOn = QThread::currentThread();
            resultsWhenDeleted = static_cast<int>(receiver.results.size());
        },
        Qt::DirectConnection);
    worker.addTask(task);
    worker.addTask(task);

    worker.disposeTask(task);
    QVERIFY(!task.isNull());
    CurlFake::release();
    QTRY_VERIFY(task.isNull());

    QCOMPARE(deletedOn, QThread::currentThread());
    QCOMPARE(resultsWhenDeleted, 2);
    QVERIFY(PlatformCapture::texts(LogPriority::Warning).isEmpty()); // no result lost its sender
}

void TestRemoteRequestWorker::disposedTask_thatNeverRan_isDeleted()
{
    RemoteRequestWorker worker(nullptr);
    QPointer<RemoteTaskWithDescription> task = new RemoteTaskWithDescription(description("u"));

    worker.disposeTask(task);

    QTRY_VERIFY(task.isNull());
}

QTEST_GUILESS_MAIN(TestRemoteRequestWorker)
#include "tst_remoterequestworker.moc"
