#pragma once

#include "vdatafetcher_p.h"

#include <QAbstractEventDispatcher>
#include <QMutexLocker>

/// Shows a test what waits inside a fetcher, and makes what no call from outside can: a task that waits in
/// the run queue instead of being handed to the worker thread at once. For the thread that owns the fetcher.
class FetcherProbe
{
public:
    /// @param owner the fetcher, or whoever has one; it outlives the probe
    explicit FetcherProbe(const QObject &owner)
        : d(owner.findChild<VDataFetcherPrivate *>())
    {
    }

    /// The object that takes the fetcher's timer events.
    QObject *receiver() const { return d; }

    /// Leaves the task waiting in the run queue.
    void leaveInQueue(VFetchTask *task) const
    {
        const QMutexLocker locker(&d->queueMutex);
        d->execQueue.append(task);
    }
    void emptyQueue() const
    {
        const QMutexLocker locker(&d->queueMutex);
        d->execQueue.clear();
    }
    int queued() const
    {
        const QMutexLocker locker(&d->queueMutex);
        return static_cast<int>(d->execQueue.size());
    }
    /// Hands the next task of the queue to the worker thread, as each append does.
    void takeNext() const { QMetaObject::invokeMethod(d, "processNextTask"); }

    /// Whether the task waits for its next run; the two maps must agree.
    bool waitsForRerun(VFetchTask *task) const
    {
        return d->timerByTask.contains(task) && d->taskByTimer.value(d->timerByTask.value(task)) == task;
    }
    /// How many tasks wait for their next run, or -1 when the two maps do not agree.
    int waitingReruns() const
    {
        return d->timerByTask.size() == d->taskByTimer.size() ? static_cast<int>(d->timerByTask.size()) : -1;
    }
    /// Milliseconds until the task's next run, or -1.
    int millisecondsToRerun(VFetchTask *task) const
    {
        return QAbstractEventDispatcher::instance()->remainingTime(d->timerByTask.value(task, -1));
    }

    /// Enters a null task among the periodic ones.
    void enterNothing(int id) const { d->tasksById.insert(id, nullptr); }
    bool threadIsGone() const { return d->thread.isNull(); }

private:
    VDataFetcherPrivate *d;
};
