// What follows from a task's own signals, and the re-runs that wait under a timer.

#include "vdatafetcher_p.h"

#include "log.h"
#include "threadnumber.h"

#include <QTimerEvent>

#include <algorithm>
#include <limits>

VFetchTask *VDataFetcherPrivate::senderTask() const
{
    return qobject_cast<VFetchTask *>(sender());
}

void VDataFetcherPrivate::taskFinishedSuccess(QByteArray /*body*/)
{
    VFetchTask *const task = results.sender();
    if (task == nullptr) {
        logWarning("DataFetcher: Task finished ignored as sender is deleted");
        return;
    }
    Q_EMIT q->taskSuccess(task->id(), task);
    if (task->type() == VFetchTask::Periodic && task->invokeInterval() >= 1) {
        scheduleRerun(task);
    }
}

// Unlike a success, a failure takes no notice of a deleted sender and wakes the queue; both are meant.
void VDataFetcherPrivate::taskFinishedFailure(int /*code*/, QByteArray /*body*/)
{
    VFetchTask *const task = results.sender();
    if (task == nullptr) {
        return;
    }
    Q_EMIT q->taskFailure(task->id(), task);
    if (task->type() == VFetchTask::Periodic) {
        scheduleRerun(task);
        processNextTask();
    }
}

void VDataFetcherPrivate::taskInvokeIntervalChanged()
{
    if (VFetchTask *task = senderTask()) {
        cancelRerun(task);
        scheduleRerun(task);
    }
}

void VDataFetcherPrivate::taskTypeChanged()
{
    VFetchTask *const task = senderTask();
    if (task == nullptr) {
        return;
    }
    if (task->type() == VFetchTask::SingleShot) {
        cancelRerun(task);
        removeTaskFromExecQueue(task);
        if (!isReplaced(task)) {
            tasksById.remove(task->id());
        }
    } else if (!tasksById.contains(task->id())) {
        tasksById.insert(task->id(), task);
        scheduleRerun(task);
    }
}

bool VDataFetcherPrivate::isReplaced(VFetchTask *task) const
{
    VFetchTask *const known = tasksById.value(task->id());
    if (task->type() == VFetchTask::Periodic) {
        return known != task; // also when the one that replaced it has left
    }
    return known != nullptr && known != task;
}

void VDataFetcherPrivate::scheduleRerun(VFetchTask *task)
{
    if (stopped || !isThreadRunning() || task->invokeInterval() < 1 || isReplaced(task)) {
        return;
    }
    cancelRerun(task); // a task queued twice finishes twice and still waits under one timer
    logDebug("DataFetcher: Scheduling task %d to start again in %d seconds. Thread: %x", task->id(),
             task->invokeInterval(), currentThreadNumber());
    // In whole seconds: a timer rounds up to the next one, beyond which its milliseconds would overflow.
    constexpr int longestSeconds = std::numeric_limits<int>::max() / 1000;
    const int timer = startTimer(std::min(task->invokeInterval(), longestSeconds) * 1000);
    taskByTimer.insert(timer, task);
    timerByTask.insert(task, timer);
}

void VDataFetcherPrivate::cancelRerun(VFetchTask *task)
{
    if (timerByTask.contains(task)) {
        const int timer = timerByTask.take(task);
        killTimer(timer);
        taskByTimer.remove(timer);
    }
}

void VDataFetcherPrivate::timerEvent(QTimerEvent *event)
{
    VFetchTask *const task = taskByTimer.take(event->timerId());
    timerByTask.remove(task);
    killTimer(event->timerId());
    if (task != nullptr) {
        addTaskToExecQueue(task);
    }
}
