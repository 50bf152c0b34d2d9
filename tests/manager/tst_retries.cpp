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

const QByteArray retryLine = "QWixtApplicationManager: Task rescheduler after fail";

} // namespace

/// What becomes of a request that failed: given up, or sent again.
class TestRetries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void failure_isGivenUpOrRetried_data();
    void failure_isGivenUpOrRetried();
    void deleteAnswered404_countsAsDone();
    void retryTimer_isOneOfFiveSeconds();
    void secondFailure_restartsTheSameTimer();
    void retry_whenReadyGoesOut();
    void retry_whileNotReadyIsNotSent();
    void retryDueWhileNotReady_goesOutAtTheNextReady();
    void retry_ofTheListGoesOutAnyway();
    void retry_whileTheWorkerHoldsTheTaskIsNotSent();
    void retryTimer_withoutSenderIsWarnedAbout();
    void failureOfAnUnknownTask_endsInAWarning();
    void manyFailures_areAllRetried();
    void disposedTask_takesItsTimerWithIt();
    void retriedAThousandTimes_holdsAsMuch();
    void failureBody_isPrintedInDebug();

private:
    PrivateBus bus;
};

void TestRetries::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestRetries::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestRetries::failure_isGivenUpOrRetried_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("retried");
    const struct {
        const char *name;
        int number;
    } kinds[] = {{"registration", RemoteTaskDescription::Register},
                 {"deletion", RemoteTaskDescription::Delete},
                 {"update", RemoteTaskDescription::Update},
                 {"list", RemoteTaskDescription::GetList}};
    for (const auto &kind : kinds) {
        QTest::addRow("%s, 400", kind.name) << kind.number << 400 << false;
        QTest::addRow("%s, 404", kind.name) << kind.number << 404 << false;
        for (const int code : {-2, -1, 6, 7, 28, 60, 300, 304, 401, 403, 409, 500, 503}) {
            QTest::addRow("%s, %d", kind.name, code) << kind.number << code << true;
        }
    }
}

void TestRetries::failure_isGivenUpOrRetried()
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
    QCOMPARE(deleted.count(), code == 404 && kind == RemoteTaskDescription::Delete ? 1 : 0);
    QCOMPARE(PlatformCapture::texts(), retried ? QList<QByteArray>{retryLine} : QList<QByteArray>());
    QTest::qWait(1);
    QTRY_COMPARE(task.isNull(), !retried);
}

void TestRetries::deleteAnswered404_countsAsDone()
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

void TestRetries::retryTimer_isOneOfFiveSeconds()
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

void TestRetries::secondFailure_restartsTheSameTimer()
{
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());
    const QTimer *const timer = manager.onlyRetry();
    QTest::qWait(200);
    QVERIFY(timer->remainingTime() < 4900);

    manager.fail(Descr::registration("u1", "n"), 500);

    QCOMPARE(manager.retryCount(), 1);
    QCOMPARE(manager.onlyRetry(), timer);
    QVERIFY(timer->remainingTime() > 4900);
    QCOMPARE(PlatformCapture::count(retryLine), 2);
}

void TestRetries::retry_whenReadyGoesOut()
{
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());
    CurlFake::setAnswer({CURLE_OK, 200, R"({"app_id":"a1"})", ""});
    QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    const QPointer<QTimer> timer = manager.onlyRetry();

    manager.retryNow();

    QVERIFY(registered.wait(5000));
    QCOMPARE(manager.retryCount(), 0);
    QCOMPARE(CurlFake::requestCount(), 2);
    QTRY_VERIFY(timer.isNull());
}

void TestRetries::retry_whileNotReadyIsNotSent()
{
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());
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

void TestRetries::retryDueWhileNotReady_goesOutAtTheNextReady()
{
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());
    manager.loseInternet();
    manager.retryNow();
    QTRY_COMPARE(manager.retryCount(), 0);

    manager.regainInternet();

    QTRY_VERIFY(manager.queue().isEmpty());
    QCOMPARE(CurlFake::requestCount(), 2);
}

void TestRetries::retry_ofTheListGoesOutAnyway()
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

void TestRetries::retry_whileTheWorkerHoldsTheTaskIsNotSent()
{
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());
    const QPointer<QTimer> timer = manager.onlyRetry();
    manager.holdInWorker(manager.onlyTask());
    PlatformCapture::clear();

    manager.retryNow();

    QTRY_COMPARE(manager.retryCount(), 0);
    QTRY_VERIFY(timer.isNull());
    QCOMPARE(managerLines(), QList<QByteArray>{"QWixtApplicationManager: not ready to do request 1"});
}

void TestRetries::retryTimer_withoutSenderIsWarnedAbout()
{
    OpenManager manager;
    PlatformCapture::clear();

    manager.delayedTaskTimeout();

    QCOMPARE(PlatformCapture::texts(),
             QList<QByteArray>{"QWixtApplicationManager: Unknown timer finished working"});
    QCOMPARE(PlatformCapture::lines().constFirst().priority, static_cast<int>(LogPriority::Warning));
}

void TestRetries::failureOfAnUnknownTask_endsInAWarning()
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

void TestRetries::manyFailures_areAllRetried()
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

void TestRetries::disposedTask_takesItsTimerWithIt()
{
    // Regression: a task that ran twice was given up while the timer of its other run still waited under it.
    OpenManager manager;
    QVERIFY(manager.beReadyWithOneRetry());
    const QPointer<QTimer> timer = manager.onlyRetry();
    const QPointer<RemoteTaskWithDescription> task = manager.onlyTask();

    manager.fail(Descr::registration("u1", "n"), 400);

    QCOMPARE(manager.retryCount(), 0);
    QVERIFY(!timer->isActive());
    QTRY_VERIFY(timer.isNull());
    QTRY_VERIFY(task.isNull());
}

void TestRetries::retriedAThousandTimes_holdsAsMuch()
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

void TestRetries::failureBody_isPrintedInDebug()
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
    TestRetries test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_retries.moc"
