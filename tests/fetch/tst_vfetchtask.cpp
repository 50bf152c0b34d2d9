#include "log.h"
#include "platformcapture.h"
#include "vfetchtask.h"
#include "vfetchtask_p.h"

#include <QSignalSpy>
#include <QtTest>

namespace
{

class RefusingTask : public VFetchTask
{
public:
    using VFetchTask::VFetchTask;
    bool prepare() override { return false; }
};

QStringList signatures(const QMetaObject &meta)
{
    QStringList list;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        QStringList arguments;
        const QList<QByteArray> types = method.parameterTypes();
        const QList<QByteArray> names = method.parameterNames();
        for (int a = 0; a < types.size(); ++a) {
            arguments.append(
                QString::fromLatin1(types.at(a) + (names.at(a).isEmpty() ? "" : " ") + names.at(a)));
        }
        list.append(QStringLiteral("%1 %2(%3)")
                        .arg(QString::fromLatin1(method.typeName()), QString::fromLatin1(method.name()),
                             arguments.join(QStringLiteral(", "))));
    }
    return list;
}

} // namespace

class TestVFetchTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PlatformCapture::clear(); }

    void metaObject_listsSignalsThenMethodsInOrder();
    void typeChanged_canCrossThreads();
    void types_haveTheirNumbers();
    void newTask_hasItsDefaults();
    void setInvokeInterval_tellsChangesOnly();
    void setType_tellsChangesOnly();
    void anotherUrl_clearsTheHeaders();
    void prepareRefused_failsWithoutTransfer();
    void hooks_doNothing();
    void oneTimeUpdate_isAskedForOnce();
    void oneTimeUpdate_startsOverAndIsTakenBack();
    void shippedBuild_writesNoDebugLines();
};

void TestVFetchTask::metaObject_listsSignalsThenMethodsInOrder()
{
    QCOMPARE(VFetchTask::staticMetaObject.className(), "VFetchTask");
    QCOMPARE(signatures(VFetchTask::staticMetaObject),
             (QStringList{QStringLiteral("void doUpdate()"), QStringLiteral("void success(QByteArray body)"),
                          QStringLiteral("void failure(int code, QByteArray body)"),
                          QStringLiteral("void invokeIntervalChanged(int newInterval)"),
                          QStringLiteral("void typeChanged(VFetchTask::VFetchTaskType newType)"),
                          QStringLiteral("bool prepare()"), QStringLiteral("void run()")}));
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

void TestVFetchTask::types_haveTheirNumbers()
{
    QCOMPARE(static_cast<int>(VFetchTask::SingleShot), 0);
    QCOMPARE(static_cast<int>(VFetchTask::Periodic), 1);
    QCOMPARE(static_cast<int>(VFetchTask::Get), 0);
    QCOMPARE(static_cast<int>(VFetchTask::Post), 1);
    QCOMPARE(static_cast<int>(VFetchTask::Put), 2);
    QCOMPARE(static_cast<int>(VFetchTask::PostForm), 3);
    QCOMPARE(static_cast<int>(VFetchTask::Delete), 4);
    QCOMPARE(static_cast<int>(VFetchTask::Custom), 5);
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

void TestVFetchTask::setInvokeInterval_tellsChangesOnly()
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

void TestVFetchTask::setType_tellsChangesOnly()
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

void TestVFetchTask::anotherUrl_clearsTheHeaders()
{
    VFetchTask task(1);
    const auto *const d = task.findChild<VFetchTaskPrivate *>();
    const QString url = QStringLiteral("https://host/a");
    task.setUrl(url);
    task.setHeader(QStringLiteral("A"), QStringLiteral("b"));
    task.setUrl(QUrl(url));
    QCOMPARE(d->headers.size(), 1);
    task.setUrl(QStringLiteral("https://host/b"));
    QCOMPARE(task.url(), QUrl(QStringLiteral("https://host/b")));
    QVERIFY(d->headers.isEmpty());
}

void TestVFetchTask::prepareRefused_failsWithoutTransfer()
{
    RefusingTask task(3);
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
    QVERIFY(task.prepare());
    QVERIFY(!task.isCancelable());
    task.cancel();
}

void TestVFetchTask::oneTimeUpdate_isAskedForOnce()
{
    VFetchTask task(1);
    auto *const d = task.findChild<VFetchTaskPrivate *>();
    QSignalSpy spy(&task, &VFetchTask::doUpdate);
    d->scheduleOneTimeUpdateIn(10);
    const int timer = d->oneTimeTimerId;
    QVERIFY(timer != 0);
    QVERIFY(spy.wait(5000));
    QVERIFY(!spy.wait(60)); // grace time: the timer is gone
    QCOMPARE(spy.count(), 1);
    QCOMPARE(d->oneTimeTimerId, timer);

    // Scheduling again after it has fired works as the first time.
    d->scheduleOneTimeUpdateIn(10);
    QVERIFY(spy.wait(5000));
    QCOMPARE(spy.count(), 2);
}

void TestVFetchTask::oneTimeUpdate_startsOverAndIsTakenBack()
{
    VFetchTask task(1);
    auto *const d = task.findChild<VFetchTaskPrivate *>();
    QSignalSpy spy(&task, &VFetchTask::doUpdate);
    d->scheduleOneTimeUpdateIn(10);
    d->scheduleOneTimeUpdateIn(20);
    QVERIFY(spy.wait(5000));
    QVERIFY(!spy.wait(60)); // grace time: the first timer was killed
    QCOMPARE(spy.count(), 1);

    d->scheduleOneTimeUpdateIn(10);
    d->scheduleOneTimeUpdateIn(0);
    QCOMPARE(d->oneTimeTimerId, 0);
    QVERIFY(!spy.wait(60)); // grace time
    QCOMPARE(spy.count(), 1);
}

void TestVFetchTask::shippedBuild_writesNoDebugLines()
{
    {
        RefusingTask task(3);
        task.run();
        task.findChild<VFetchTaskPrivate *>()->scheduleOneTimeUpdateIn(0);
    }
    QVERIFY(PlatformCapture::lines().isEmpty());
}

QTEST_GUILESS_MAIN(TestVFetchTask)
#include "tst_vfetchtask.moc"
