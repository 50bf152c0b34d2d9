// The queue of remote tasks, their way to the worker and back, and their retries.

#include "descriptions.h"
#include "log.h"
#include "qwixtapplicationmanager.h"
#include "remoteappsapi.h"
#include "remoterequestworker.h"
#include "remotetaskwithdescription.h"
#include "serverhost.h"

#include <QDebug>
#include <QTimer>

#include <chrono>
#include <memory>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace std::chrono_literals;

namespace
{
constexpr auto retryDelay = 5s;
constexpr int sliceLength = 50;    // requests that are handed over before the event loop has its turn
constexpr int longQueue = 100;     // requests; each holds about 5 KB while it is under way
constexpr int shortQueue = 10;     // some of them may fail again and again
constexpr auto disposalDelay = 1s; // the last tasks go home and are deleted well within it
} // namespace

/// A task with the whole request for @p descr, owned by the caller; null for an unknown kind. The API key of
/// this moment goes into it.
RemoteTaskWithDescription *QWixtApplicationManager::createRemoteTask(const RemoteTaskDescription &descr) const
{
    auto task = std::make_unique<RemoteTaskWithDescription>(descr);
    switch (descr.type) {
    case RemoteTaskDescription::Register:
        task->setRequestMethod(VFetchTask::Post);
        break;
    case RemoteTaskDescription::Delete:
        task->setRequestMethod(VFetchTask::Delete);
        break;
    case RemoteTaskDescription::Update:
        task->setRequestMethod(VFetchTask::Put);
        break;
    case RemoteTaskDescription::GetList:
        task->setRequestMethod(VFetchTask::Get);
        break;
    default:
        // The line names another class; its text is fixed.
        logWarning("RemoteRequestWorker: Unknown task type");
        return nullptr;
    }
    const QVariantMap parameters = RemoteAppsApi::parameters(descr, remoteId);
    if (descr.type == RemoteTaskDescription::Register && debugLogEnabled()) {
        qDebug() << parameters;
    }
    task->setUrl(RemoteAppsApi::appsUrl(serverHost()));
    task->setPostParams(parameters);
    // After the URL: setting another one clears the headers.
    task->setHeader(QStringLiteral("Accept"), QStringLiteral("application/json"));
    task->setHeader(QStringLiteral("Authorization"), RemoteAppsApi::authorization(apiKey));
    return task.release();
}

/// The same, stored under its description. It replaces an earlier task of this description; a retry that
/// waits for the earlier task now waits for this one.
RemoteTaskWithDescription *QWixtApplicationManager::createStoredTask(const RemoteTaskDescription &descr)
{
    RemoteTaskWithDescription *const task = createRemoteTask(descr);
    if (task == nullptr) {
        return nullptr;
    }
    if (RemoteTaskWithDescription *const earlier = tasksByDescription.store(descr, task)) {
        if (QTimer *const timer = retryTimers.take(earlier)) {
            retryTimers.insert(task, timer);
        }
        worker->disposeTask(earlier);
    }
    return task;
}

/// Queues a description. In Ready it goes to the worker, and true is returned: at once, or when all that was
/// queued before it has gone.
bool QWixtApplicationManager::submit(const RemoteTaskDescription &descr)
{
    pendingTasks.append(descr);
    queueWasLong = queueWasLong || pendingTasks.size() >= longQueue;
    if (state != Ready) {
        return false;
    }
    if (!sliceIsPosted) {
        run(createStoredTask(descr));
    }
    return true;
}

/// Hands a task to the worker. Each run brings one result, and a request whose result is still to come is not
/// sent again.
void QWixtApplicationManager::run(RemoteTaskWithDescription *task)
{
    outstandingRuns.increase(task->description);
    worker->addTask(task);
}

void QWixtApplicationManager::processRequests()
{
    if (state != Ready) {
        return;
    }
    logDebug("QWixtApplicationManager: Start process requests");
    pendingTasks.startWalk();
    handOverSlice();
}

/// Making ten thousand tasks takes about a second, and nobody on the bus is to wait for that. So the event
/// loop has its turn after each slice. What is asked meanwhile is not handed over before what was asked
/// earlier.
void QWixtApplicationManager::handOverSlice()
{
    if (state != Ready) {
        return; // the next entry to Ready begins anew
    }
    for (int count = 0; count < sliceLength && !pendingTasks.isWalkDone(); ++count) {
        handOver(pendingTasks.walkOn());
    }
    if (!pendingTasks.isWalkDone() && !sliceIsPosted) {
        sliceIsPosted = true;
        const auto handOverNext = [this] {
            sliceIsPosted = false;
            handOverSlice();
        };
        QMetaObject::invokeMethod(this, handOverNext, Qt::QueuedConnection);
    }
}

void QWixtApplicationManager::handOver(const RemoteTaskDescription &descr)
{
    RemoteTaskWithDescription *task = tasksByDescription.find(descr);
    if (task == nullptr) {
        task = createStoredTask(descr);
        if (task == nullptr) {
            logWarning("QWixtApplicationManager: unknown task description");
            return;
        }
    } else if (worker->containsTask(task) || retryTimers.contains(task)) {
        return;
    }
    // Each of several equal deletions is a request of its own; those on their way already count.
    if (outstandingRuns.of(descr) < pendingTasks.walkedCount(descr)) {
        run(task);
    }
}

void QWixtApplicationManager::getListOfRemoteApps()
{
    const RemoteTaskDescription descr = Descriptions::list();
    const bool wasPending = pendingTasks.contains(descr);
    if (!wasPending) {
        pendingTasks.append(descr);
    }
    if (state != WaitForList && state != Ready) {
        return;
    }
    if (!wasPending) {
        run(createStoredTask(descr));
    } else {
        RemoteTaskWithDescription *task = tasksByDescription.find(descr);
        if (task == nullptr) {
            task = createStoredTask(descr);
        }
        // A task that the worker does not hold is on its way, or its retry waits; one made just now waits for
        // the next entry to Ready.
        if (worker->containsTask(task)) {
            run(task);
        }
    }
    logDebug("QWixtApplicationManager: added get list task");
}

/// The queue and the waiting retries are kept: the same tasks go out at the next entry to Ready. A run that
/// was handed over is not taken back either: the worker's removal knows periodic tasks only, and says so by a
/// warning.
void QWixtApplicationManager::removeAllTasksFromWorker()
{
    logDebug("QWixtApplicationManager: Remove all tasks from worker");
    for (RemoteTaskWithDescription *task : tasksByDescription) {
        // Asked by the id that all remote tasks share: true for each as soon as one waits in the run queue.
        if (worker->containsTask(task)) {
            worker->removeTask(task);
        }
    }
}

/// The containers keep their room, and the C library keeps what was freed between blocks that are still in
/// use, for as long as the process lives.
void QWixtApplicationManager::returnFreeMemory()
{
    pendingTasks.squeeze();
    outstandingRuns.squeeze();
    tasksByDescription.squeeze();
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

/// The end of one request, done or given up. Its task and a waiting retry go with it, unless an equal request
/// is still pending, which then keeps both.
void QWixtApplicationManager::dropRequest(const RemoteTaskDescription &descr)
{
    pendingTasks.removeOne(descr);
    if (queueWasLong && pendingTasks.size() <= shortQueue) {
        queueWasLong = false;
        QTimer::singleShot(disposalDelay, this, &QWixtApplicationManager::returnFreeMemory);
    }
    if (pendingTasks.contains(descr)) {
        return;
    }
    RemoteTaskWithDescription *const task = tasksByDescription.take(descr);
    if (task == nullptr) {
        return;
    }
    if (QTimer *const timer = retryTimers.take(task)) {
        timer->stop();
        timer->deleteLater();
    }
    worker->disposeTask(task);
}

/// @p task is null when a result came in for a task that is gone; its timer then finds nothing to do.
void QWixtApplicationManager::scheduleRetry(RemoteTaskWithDescription *task)
{
    QTimer *timer = retryTimers.value(task);
    if (timer == nullptr) {
        timer = new QTimer(this);
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer); // a coarse one may be early
        timer->setInterval(retryDelay);
        connect(timer, &QTimer::timeout, this, &QWixtApplicationManager::delayedTaskTimeout);
        retryTimers.insert(task, timer);
    }
    logDebug("QWixtApplicationManager: Task rescheduler after fail");
    timer->start();
}

void QWixtApplicationManager::delayedTaskTimeout()
{
    auto *const timer = qobject_cast<QTimer *>(sender());
    if (timer == nullptr) {
        logWarning("QWixtApplicationManager: Unknown timer finished working");
        return;
    }
    RemoteTaskWithDescription *const task = retryTimers.key(timer);
    retryTimers.remove(task);
    if (task == nullptr) {
        logWarning("QWixtApplicationManager: Unknown task for timer finished working");
    } else if (worker->containsTask(task)) {
        logDebug("QWixtApplicationManager: not ready to do request %d", 1);
    } else if (state == Ready || task->description.type == RemoteTaskDescription::GetList) {
        runWhatIsDue(task);
    } else {
        logDebug("QWixtApplicationManager: not ready to do request %d", 0);
    }
    timer->deleteLater();
}

/// Equal deletions share a task and a timer, so more than one request may have waited for this retry.
void QWixtApplicationManager::runWhatIsDue(RemoteTaskWithDescription *task)
{
    const RemoteTaskDescription &descr = task->description;
    for (int due = pendingTasks.count(descr) - outstandingRuns.of(descr); due > 0; --due) {
        run(task);
    }
}
