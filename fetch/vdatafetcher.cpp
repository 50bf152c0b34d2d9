#include "vdatafetcher.h"

#include "log.h"
#include "threadnumber.h"
#include "vdatafetcher_p.h"

VDataFetcher::VDataFetcher(QObject *parent)
    : QObject(parent)
    , d(new VDataFetcherPrivate(this))
{
}

VDataFetcher::~VDataFetcher() = default;

bool VDataFetcher::isRunning() const
{
    return d->isThreadRunning();
}

bool VDataFetcher::containsFetchTask(VFetchTask *task) const
{
    return task != nullptr && (d->tasksById.contains(task->id()) || d->isQueued(task->id()));
}

VFetchTask *VDataFetcher::fetchTaskById(int id) const
{
    return d->tasksById.value(id);
}

VFetchTask *VDataFetcher::fetchTask(int id) const
{
    logWarning("DataFetcher: deprecated API. Use fetchTaskById(int) instead");
    return fetchTaskById(id);
}

void VDataFetcher::startProcessing()
{
    logDebug("DataFetcher: Processing started from thread %x", currentThreadNumber());
    d->start();
}

void VDataFetcher::stopProcessing()
{
    d->stop();
    logDebug("DataFetcher: Processing stopped.");
}

void VDataFetcher::addFetchTask(VFetchTask *task, int invokeInterval, bool runNow)
{
    if (task == nullptr) {
        return;
    }
    d->add(task, invokeInterval, runNow);
    logDebug("DataFetcher: Task id=%d has been added to processing queue.", task->id());
}

void VDataFetcher::addFetchTask(int id, VFetchTask *task, int invokeInterval, bool runNow)
{
    logWarning("DataFetcher: deprecated api. Use addFetchTask(VFetchTask, int, bool)");
    if (task == nullptr) {
        return;
    }
    d->add(task, invokeInterval, runNow);
    logDebug("DataFetcher: Task id=%d, invoke interval: %d has been added to processing queue.", id,
             invokeInterval);
}

void VDataFetcher::removeFetchTask(VFetchTask *task)
{
    if (task != nullptr) {
        d->remove(task->id());
    }
}

void VDataFetcher::removeFetchTask(int id)
{
    d->remove(id);
}

void VDataFetcher::forceUpdate(VFetchTask *task)
{
    if (task != nullptr) {
        d->force(task);
    }
}

void VDataFetcher::forceUpdate(int id)
{
    VFetchTask *const task = fetchTaskById(id);
    if (task == nullptr) {
        logWarning("DataFetcher: Unable force uptate task id=%d. Task not found.", id);
        return;
    }
    d->force(task);
}

void VDataFetcher::forceUpdateAll(bool onlyOneTimeUpdate)
{
    const QMap<int, VFetchTask *> tasks = d->tasksById;
    for (auto task = tasks.cbegin(); task != tasks.cend(); ++task) {
        if (task.value() == nullptr) {
            logDebug("DataFetcher: Unable to force update task id=%d. Task not found.", task.key());
        } else if (!onlyOneTimeUpdate || task.value()->isOneTimeUpdate()) {
            d->force(task.value());
        }
    }
}
