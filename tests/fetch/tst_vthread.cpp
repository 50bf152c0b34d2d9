#include "vthread.h"

#include <QPointer>
#include <QtTest>

#include <pthread.h>

namespace
{

/// Notes on which thread and in what order it is called.
class Recorder : public QObject
{
    Q_OBJECT

public:
    QList<int> numbers;
    QThread *calledOn = nullptr;
    std::size_t stackBytes = 0;

    Q_INVOKABLE void note(int number)
    {
        numbers.append(number);
        calledOn = QThread::currentThread();
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        pthread_attr_getstacksize(&attributes, &stackBytes);
        pthread_attr_destroy(&attributes);
    }
};

} // namespace

class TestVThread : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void neverStarted_canBeDestroyedAtOnce();
    void metaObject_hasItsClassNameAndNothingElse();
    void stack_is256KiB();
    void finishedThread_deletesItself();
    void movedObject_isCalledInOrderOnTheThread();
};

void TestVThread::neverStarted_canBeDestroyedAtOnce()
{
    auto *const thread = new VThread(nullptr);
    QCOMPARE(thread->children().size(), 1);
    const QPointer<QObject> privateHalf = thread->children().constFirst();
    QCOMPARE(privateHalf->metaObject()->className(), "VThreadPrivate");

    delete thread;

    QVERIFY(privateHalf.isNull());
}

void TestVThread::metaObject_hasItsClassNameAndNothingElse()
{
    const VThread thread(nullptr);

    const QMetaObject &meta = *thread.metaObject();

    QCOMPARE(meta.className(), "VThread");
    QCOMPARE(meta.methodCount(), meta.methodOffset());
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QVERIFY(thread.inherits("QThread"));
}

void TestVThread::stack_is256KiB()
{
    const VThread thread(nullptr);

    const uint bytes = thread.stackSize();

    QCOMPARE(bytes, 262144U);
}

void TestVThread::finishedThread_deletesItself()
{
    auto *const thread = new VThread(nullptr);
    const QPointer<VThread> guarded = thread;
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start(QThread::InheritPriority);
    QVERIFY(thread->isRunning());

    thread->quit();

    QVERIFY(thread->wait());
    QTRY_VERIFY(guarded.isNull());
}

void TestVThread::movedObject_isCalledInOrderOnTheThread()
{
    VThread thread(nullptr);
    Recorder recorder;
    recorder.moveToThread(&thread);
    thread.start(QThread::InheritPriority);

    for (int i = 0; i < 100; ++i) {
        QMetaObject::invokeMethod(&recorder, "note", Qt::QueuedConnection, Q_ARG(int, i));
    }
    QMetaObject::invokeMethod(&recorder, "note", Qt::BlockingQueuedConnection, Q_ARG(int, 100));
    thread.quit();
    QVERIFY(thread.wait());

    QCOMPARE(recorder.numbers.size(), 101);
    QVERIFY(std::is_sorted(recorder.numbers.cbegin(), recorder.numbers.cend()));
    QCOMPARE(recorder.calledOn, static_cast<QThread *>(&thread));
    QVERIFY(recorder.stackBytes >= 262144);
    QVERIFY(recorder.stackBytes < 2 * 262144);
}

QTEST_GUILESS_MAIN(TestVThread)
#include "tst_vthread.moc"
