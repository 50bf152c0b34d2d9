#include "membersof.h"
#include "platformcapture.h"
#include "vfetchtask.h"
#include "vfetchtask_p.h"
#include "watchingtask.h"

#include <QSignalSpy>
#include <QtTest>

#include <chrono>
#include <functional>
#include <future>

namespace
{

using Access = std::function<void(VFetchTask &)>;

VFetchTaskPrivate *privateHalf(const VFetchTask &task)
{
    return task.findChild<VFetchTaskPrivate *>();
}

} // namespace

Q_DECLARE_METATYPE(Access)

class TestVFetchTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PlatformCapture::clear(); }

    void metaObject_listsSignalsThenMethodsInOrder();
    void typeChanged_canCrossThreads();
    void typeAndMethod_haveTheirNumbers_data();
    void typeAndMethod_haveTheirNumbers();
    void newTask_hasItsDefaults();
    void setInvokeInterval_announcesChangesOnly();
    void setType_announcesChangesOnly();
    void sameUrl_keepsTheHeaders();
    void anotherUrl_clearsTheHeaders();
    void accessors_waitForTheSettingsLock_data();
    void accessors_waitForTheSettingsLock();
    void isRunning_waitsForItsOwnLockOnly();
    void prepareRefused_failsWithoutTransfer();
    void hooks_doNothing();
    void oneTimeUpdate_isAskedForOnce();
    void oneTimeUpdate_canBeScheduledAgainAfterIt();
    void oneTimeUpdate_scheduledTwiceStartsOver();
    void oneTimeUpdate_canBeTakenBack();
    void shippedBuild_writesNoDebugLines();
};

void TestVFetchTask::metaObject_listsSignalsThenMethodsInOrder()
{
    const QMetaObject &meta = VFetchTask::staticMetaObject;

    const QStringList members = membersOf(meta);

    QCOMPARE(meta.className(), "VFetchTask");
    QCOMPARE(members,
             (QStringList{QStringLiteral("signal void doUpdate()"),
                          QStringLiteral("signal void success(QByteArray body)"),
                          QStringLiteral("signal void failure(int code, QByteArray body)"),
                          QStringLiteral("signal void invokeIntervalChanged(int newInterval)"),
                          QStringLiteral("signal void typeChanged(VFetchTask::VFetchTaskType newType)"),
                          QStringLiteral("method bool prepare()"), QStringLiteral("method void run()")}));
}

void TestVFetchTask::typeChanged_canCrossThreads()
{
    // Regression: with the type unknown by this name, a change on another thread was lost.
    const VFetchTask task(1);

    const QMetaObject *const meta = task.metaObject();
    const int typeChanged = meta->indexOfSignal("typeChanged(VFetchTask::VFetchTaskType)");

    QVERIFY(typeChanged >= 0);
    QVERIFY(meta->method(typeChanged).parameterType(0) != QMetaType::UnknownType);
}

void TestVFetchTask::typeAndMethod_haveTheirNumbers_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("number");
    QTest::newRow("SingleShot") << int(VFetchTask::SingleShot) << 0;
    QTest::newRow("Periodic") << int(VFetchTask::Periodic) << 1;
    QTest::newRow("Get") << int(VFetchTask::Get) << 0;
    QTest::newRow("Post") << int(VFetchTask::Post) << 1;
    QTest::newRow("Put") << int(VFetchTask::Put) << 2;
    QTest::newRow("PostForm") << int(VFetchTask::PostForm) << 3;
    QTest::newRow("Delete") << int(VFetchTask::Delete) << 4;
    QTest::newRow("Custom") << int(VFetchTask::Custom) << 5;
}

void TestVFetchTask::typeAndMethod_haveTheirNumbers()
{
    QFETCH(int, value);

    QTEST(value, "number");
}

void TestVFetchTask::newTask_hasItsDefaults()
{
    const VFetchTask task(7);

    QCOMPARE(task.id(), 7);
    QCOMPARE(task.invokeInterval(), 0);
    QCOMPARE(task.type(), VFetchTask::Periodic);
    QVERIFY(!task.isRunning());
    QVERIFY(!task.isOneTimeUpdate());
    QVERIFY(task.url().isEmpty());
    QCOMPARE(task.status(), 0);
    QVERIFY(task.responseBody().isEmpty());
    QVERIFY(!task.responseHeader().isValid());
    QVERIFY(task.parent() == nullptr);
}

void TestVFetchTask::setInvokeInterval_announcesChangesOnly()
{
    VFetchTask task(1);
    const QSignalSpy spy(&task, &VFetchTask::invokeIntervalChanged);

    task.setInvokeInterval(0);
    QCOMPARE(spy.count(), 0);
    task.setInvokeInterval(5);
    task.setInvokeInterval(5);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), 5);
    QCOMPARE(task.invokeInterval(), 5);
}

void TestVFetchTask::setType_announcesChangesOnly()
{
    VFetchTask task(1);
    const QSignalSpy spy(&task, &VFetchTask::typeChanged);
    // A slot that asks back must not meet a held lock.
    VFetchTask::VFetchTaskType seen = VFetchTask::Periodic;
    connect(&task, &VFetchTask::typeChanged, &task, [&task, &seen] { seen = task.type(); });

    task.setType(VFetchTask::Periodic);
    QCOMPARE(spy.count(), 0);
    task.setType(VFetchTask::SingleShot);
    task.setType(VFetchTask::SingleShot);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(seen, VFetchTask::SingleShot);
}

void TestVFetchTask::sameUrl_keepsTheHeaders()
{
    VFetchTask task(1);
    task.setUrl(QStringLiteral("https://host/a"));
    task.setHeader(QStringLiteral("A"), QStringLiteral("b"));

    task.setUrl(QUrl(QStringLiteral("https://host/a")));

    QCOMPARE(privateHalf(task)->headers.size(), 1);
}

void TestVFetchTask::anotherUrl_clearsTheHeaders()
{
    VFetchTask task(1);
    task.setUrl(QStringLiteral("https://host/a"));
    task.setHeader(QStringLiteral("A"), QStringLiteral("b"));

    task.setUrl(QStringLiteral("https://host/b"));

    QCOMPARE(task.url(), QUrl(QStringLiteral("https://host/b")));
    QVERIFY(privateHalf(task)->headers.isEmpty());
}

void TestVFetchTask::accessors_waitForTheSettingsLock_data()
{
    QTest::addColumn<Access>("access");
    const auto row = [](const char *name, const Access &access) { QTest::newRow(name) << access; };
    row("invokeInterval", [](VFetchTask &task) { task.invokeInterval(); });
    row("type", [](VFetchTask &task) { task.type(); });
    row("isOneTimeUpdate", [](VFetchTask &task) { task.isOneTimeUpdate(); });
    row("url", [](VFetchTask &task) { task.url(); });
    row("setInvokeInterval", [](VFetchTask &task) { task.setInvokeInterval(1); });
    row("setType", [](VFetchTask &task) { task.setType(VFetchTask::SingleShot); });
    row("setOneTimeUpdate", [](VFetchTask &task) { task.setOneTimeUpdate(true); });
    row("setRequestMethod", [](VFetchTask &task) { task.setRequestMethod(1); });
    row("setCustomMethod", [](VFetchTask &task) { task.setCustomMethod("X"); });
    row("setTimeout", [](VFetchTask &task) { task.setTimeout(1); });
    row("setHeader", [](VFetchTask &task) { task.setHeader(QString(), QString()); });
    row("setPostParams", [](VFetchTask &task) { task.setPostParams({}); });
    row("setPostParam", [](VFetchTask &task) { task.setPostParam(QString(), 1); });
    row("setBody", [](VFetchTask &task) { task.setBody("b"); });
    row("setFormPart", [](VFetchTask &task) { task.setFormPart(QString(), QString(), 1); });
    row("setUrl", [](VFetchTask &task) { task.setUrl(QUrl(QStringLiteral("https://host"))); });
}

void TestVFetchTask::accessors_waitForTheSettingsLock()
{
    QFETCH(Access, access);
    VFetchTask task(1);
    QMutexLocker locker(&privateHalf(task)->dataMutex);

    std::future<void> done = std::async(std::launch::async, [&task, &access] { access(task); });

    const auto grace = std::chrono::milliseconds(20);
    QCOMPARE(done.wait_for(grace), std::future_status::timeout);
    locker.unlock();
    QCOMPARE(done.wait_for(std::chrono::seconds(20)), std::future_status::ready);
}

void TestVFetchTask::isRunning_waitsForItsOwnLockOnly()
{
    VFetchTask task(1);
    const QMutexLocker settings(&privateHalf(task)->dataMutex);
    QVERIFY(!task.isRunning());
    QMutexLocker state(&privateHalf(task)->stateMutex);

    std::future<bool> done = std::async(std::launch::async, [&task] { return task.isRunning(); });

    const auto grace = std::chrono::milliseconds(20);
    QCOMPARE(done.wait_for(grace), std::future_status::timeout);
    state.unlock();
    QVERIFY(!done.get());
}

void TestVFetchTask::prepareRefused_failsWithoutTransfer()
{
    WatchingTask task(3);
    task.refuses = true;
    task.setUrl(QStringLiteral("http://127.0.0.1:1/"));
    const QSignalSpy failures(&task, &VFetchTask::failure);
    const QSignalSpy successes(&task, &VFetchTask::success);

    task.run();

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), -2);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(successes.count(), 0);
    QVERIFY(!task.isRunning());
    QVERIFY(PlatformCapture::lines().isEmpty()); // a refused connection would have written an error
}

void TestVFetchTask::hooks_doNothing()
{
    VFetchTask task(1);

    const bool isPrepared = task.prepare();
    const bool isCancelable = task.isCancelable();
    task.cancel();

    QVERIFY(isPrepared);
    QVERIFY(!isCancelable);
}

void TestVFetchTask::oneTimeUpdate_isAskedForOnce()
{
    VFetchTask task(1);
    QSignalSpy spy(&task, &VFetchTask::doUpdate);

    privateHalf(task)->scheduleOneTimeUpdateIn(10);
    const int timer = privateHalf(task)->oneTimeTimerId;
    QVERIFY(timer != 0);
    QVERIFY(spy.wait(5000));

    QVERIFY(!spy.wait(60)); // grace time: the timer is gone
    QCOMPARE(spy.count(), 1);
    QCOMPARE(privateHalf(task)->oneTimeTimerId, timer); // the id is kept
}

void TestVFetchTask::oneTimeUpdate_canBeScheduledAgainAfterIt()
{
    VFetchTask task(1);
    QSignalSpy spy(&task, &VFetchTask::doUpdate);
    privateHalf(task)->scheduleOneTimeUpdateIn(10);
    QVERIFY(spy.wait(5000));

    privateHalf(task)->scheduleOneTimeUpdateIn(10);

    QVERIFY(spy.wait(5000));
    QCOMPARE(spy.count(), 2);
}

void TestVFetchTask::oneTimeUpdate_scheduledTwiceStartsOver()
{
    VFetchTask task(1);
    QSignalSpy spy(&task, &VFetchTask::doUpdate);

    privateHalf(task)->scheduleOneTimeUpdateIn(10);
    privateHalf(task)->scheduleOneTimeUpdateIn(20);
    QVERIFY(spy.wait(5000));

    QVERIFY(!spy.wait(60)); // grace time: the first timer was killed
    QCOMPARE(spy.count(), 1);
}

void TestVFetchTask::oneTimeUpdate_canBeTakenBack()
{
    VFetchTask task(1);
    QSignalSpy spy(&task, &VFetchTask::doUpdate);

    privateHalf(task)->scheduleOneTimeUpdateIn(10);
    privateHalf(task)->scheduleOneTimeUpdateIn(0);

    QCOMPARE(privateHalf(task)->oneTimeTimerId, 0);
    QVERIFY(!spy.wait(60)); // grace time
}

void TestVFetchTask::shippedBuild_writesNoDebugLines()
{
    {
        WatchingTask task(3);
        task.refuses = true;

        task.run();
        privateHalf(task)->scheduleOneTimeUpdateIn(0);
    }

    QVERIFY(PlatformCapture::lines().isEmpty());
}

QTEST_GUILESS_MAIN(TestVFetchTask)
#include "tst_vfetchtask.moc"
