#include "scriptedtask.h"

#include <QList>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>

namespace
{

QMutex mutex;
QList<int> noted;
QThread *notedThread = nullptr;

void note(int id)
{
    const QMutexLocker locker(&mutex);
    noted.append(id);
    notedThread = QThread::currentThread();
}

} // namespace

ScriptedTask::ScriptedTask(int id, Ending howItEnds)
    : VFetchTask(id)
    , ending(howItEnds)
{
}

void ScriptedTask::run()
{
    ++begun;
    if (held) {
        gate.tryAcquire(1, 20000); // a test that fails early releases nobody
    }
    if (duringRun) {
        duringRun();
    }
    note(id());
    if (ending == Succeeds) {
        Q_EMIT success(QByteArray("good"));
    } else {
        Q_EMIT failure(500, QByteArray("bad"));
    }
}

int ScriptedTask::connections() const
{
    return receivers(SIGNAL(doUpdate())) + receivers(SIGNAL(success(QByteArray))) +
           receivers(SIGNAL(failure(int, QByteArray))) + receivers(SIGNAL(invokeIntervalChanged(int))) +
           receivers(SIGNAL(typeChanged(VFetchTask::VFetchTaskType)));
}

SingleShotTask::SingleShotTask(int id, Ending howItEnds)
    : ScriptedTask(id, howItEnds)
{
    setType(SingleShot);
}

namespace Runs
{

void clear()
{
    const QMutexLocker locker(&mutex);
    noted.clear();
    notedThread = nullptr;
}

QList<int> ids()
{
    const QMutexLocker locker(&mutex);
    QList<int> copy = noted;
    copy.detach(); // shared, it would be read while the next run is noted
    return copy;
}

QThread *lastThread()
{
    const QMutexLocker locker(&mutex);
    return notedThread;
}

} // namespace Runs
