// The worker thread, the tasks that are known, and the run queue.

#include "vdatafetcher_p.h"

#include "log.h"
#include "threadnumber.h"

#include <QMutexLocker>

#include <algorithm>

VDataFetcherPrivate::VDataFetcherPrivate(VDataFetcher *fetcher)
    : QObject(fetcher)
    , q(fetcher)
    , thread(new VThread(this))
    , results(this)
{
    connect(thread.data(), &QThread::started, this, &VDataFetcherPrivate::processNextTask);
    connect(thread.data(), &QThread::finished, thread.data(), &QObject::deleteLater);
}

VDataFetcherPrivate::~VDataFetcherPrivate()
{
    if (isThreadRunning()) {
        stop();
    }
}

bool VDataFetcherPrivate::isThreadRunning() const
{
    return !thread.isNull() && thread->isRunning();
}

bool VDataFetcherPrivate::isQueued(int id) const
{
    const QMutexLocker locker(&queueMutex);
    return std::any_of(execQueue.cbegin(), execQueue.cend(),
                       [id](const QPointer<VFetchTask> &task) { return !task.isNull() && task->id() == id; });
}

void VDataFetcherPrivate::start()
{
    stopped = false;
    if (isThreadRunning()) {
        logWarning("DataFetcher: Fetcher already running");
        return;
    }
    if (thread.isNull() || thread->isFinished()) {
        // The thread deletes itself when it has finished.
        logWarning("DataFetcher: Fetcher can not be started again");
        return;
    }
    logDebug("VDataFetcher: start processing");
    thread->start(QThread::InheritPriority);
}

void VDataFetcherPrivate::stop()
{
    stopped = true;
    if (thread.isNull() || thread->isFinished()) {
        logWarning("DataFetcher: Fetcher already stopped");
        return;
    }
    logDebug("VDataFetcher: stop processing");
    {
        const QMutexLocker locker(&queueMutex);
        execQueue.clear();
    }
    thread->quit();
    thread->wait();
}

void VDataFetcherPrivate::add(VFetchTask *task, int invokeInterval, bool runNow)
{
    if (task->type() == VFetchTask::SingleShot && invokeInterval >= 1) {
        logWarning("DataFetcher: Single shot task id=%d contains invoke interval %d", task->id(),
                   invokeInterval);
    }
    task->setInvokeInterval(invokeInterval);

    if (stopped || !isThreadRunning()) {
        start();
    }
    // Neither changes anything for a task that was added before.
    connectTask(task);
    if (isThreadRunning() && task->thread() != thread.data()) {
        task->moveToThread(thread.data());
    }
    const bool periodic = task->type() == VFetchTask::Periodic;
    if (periodic) {
        VFetchTask *const replaced = tasksById.value(task->id());
        if (replaced != task) {
            cancelRerun(replaced);
        }
        tasksById.insert(task->id(), task);
    }
    if (!runNow) {
        if (periodic) {
            scheduleRerun(task);
        }
    } else if (isThreadRunning()) {
        addTaskToExecQueue(task);
    } else {
        reportNotRun(task);
    }
}

/// A run that no thread can take brings a result all the same, so that nobody waits for it.
void VDataFetcherPrivate::reportNotRun(VFetchTask *task)
{
    logWarning("DataFetcher: Task id=%d can not be run, there is no thread. It counts as failed.",
               task->id());
    const auto report = [task] { Q_EMIT task->failure(VFetchTask::NoCurlHandle, QByteArray()); };
    // Delivered after this call; not at all when the task is deleted first.
    QMetaObject::invokeMethod(task, report, Qt::QueuedConnection);
}

void VDataFetcherPrivate::connectTask(VFetchTask *task)
{
    // Asked of the task, because a single-shot task that is handed over again stands in none of the lists
    // here.
    if (!task->addListener(this)) {
        return;
    }
    connect(task, &VFetchTask::doUpdate, this, qOverload<>(&VDataFetcherPrivate::addTaskToExecQueue));
    results.connect(task, &VFetchTask::success, &VDataFetcherPrivate::taskFinishedSuccess);
    results.connect(task, &VFetchTask::failure, &VDataFetcherPrivate::taskFinishedFailure);
    connect(task, &VFetchTask::invokeIntervalChanged, this, &VDataFetcherPrivate::taskInvokeIntervalChanged);
    connect(task, &VFetchTask::typeChanged, this, &VDataFetcherPrivate::taskTypeChanged);
}

void VDataFetcherPrivate::disconnectTask(VFetchTask *task)
{
    task->disconnect(this);
    task->removeListener(this);
}

void VDataFetcherPrivate::remove(int id)
{
    VFetchTask *const task = tasksById.value(id);
    if (!tasksById.contains(id)) {
        logWarning("DataFetcher: Wrong task id");
        return;
    }
    cancelRerun(task);
    removeTaskFromExecQueue(task);
    tasksById.remove(id);
    disconnectTask(task);
    logDebug("DataFetcher: removed task with id %d", id);
}

void VDataFetcherPrivate::force(VFetchTask *task)
{
    if (task->thread() != thread.data()) {
        // Never added: its run would hold up this thread.
        logWarning("DataFetcher: Unable force uptate task id=%d. Task not found.", task->id());
        return;
    }
    cancelRerun(task);
    addTaskToExecQueue(task);
}

void VDataFetcherPrivate::processNextTask()
{
    if (stopped || !isThreadRunning()) {
        return;
    }
    QPointer<VFetchTask> task;
    {
        const QMutexLocker locker(&queueMutex);
        while (task.isNull() && !execQueue.isEmpty()) {
            task = execQueue.takeFirst();
        }
    }
    if (task.isNull()) {
        logDebug("DataFetcher: No tasks to run. Sleeping.");
        return;
    }
    logDebug("DataFetcher: Woke up. Got some work here. Task id=%d, thread: %x", task->id(),
             currentThreadNumber());
    // The task lives on the worker thread: the call waits there behind the runs that were queued before.
    QMetaObject::invokeMethod(task.data(), "run");
}

void VDataFetcherPrivate::addTaskToExecQueue()
{
    if (VFetchTask *task = senderTask()) {
        addTaskToExecQueue(task);
    }
}

void VDataFetcherPrivate::addTaskToExecQueue(VFetchTask *task)
{
    if (stopped || !isThreadRunning()) {
        return; // nobody would ever take it out
    }
    {
        const QMutexLocker locker(&queueMutex);
        execQueue.append(task);
    }
    processNextTask();
}

void VDataFetcherPrivate::removeTaskFromExecQueue(VFetchTask *task)
{
    {
        const QMutexLocker locker(&queueMutex);
        execQueue.removeAll(task);
    }
    processNextTask();
}
