// The queue of remote tasks, their way to the worker and back, and their retries.

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
#include <utility>

using namespace std::chrono_literals;

namespace
{
constexpr auto retryDelay = 5s;
constexpr int httpBadRequest = 400;
constexpr int httpNotFound = 404;
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

/// The same, stored under its description in place of an earlier task.
RemoteTaskWithDescription *QWixtApplicationManager::createStoredTask(const RemoteTaskDescription &descr)
{
    RemoteTaskWithDescription *const task = createRemoteTask(descr);
    if (task != nullptr) {
        disposeTask(storeTask(tasksByDescription, descr, task));
    }
    return task;
}

void QWixtApplicationManager::processRequests()
{
    if (state != Ready) {
        return;
    }
    logDebug("QWixtApplicationManager: Start process requests");
    const QList<RemoteTaskDescription> descriptions = pendingTasks;
    for (const RemoteTaskDescription &descr : descriptions) {
        RemoteTaskWithDescription *task = findTask(tasksByDescription, descr);
        if (task != nullptr) {
            if (!worker->containsTask(task) && !retryTimers.contains(task)) {
                worker->addTask(task);
            }
            continue;
        }
        task = createStoredTask(descr);
        if (task == nullptr) {
            logWarning("QWixtApplicationManager: unknown task description");
            continue;
        }
        worker->addTask(task);
    }
}

void QWixtApplicationManager::getListOfRemoteApps()
{
    RemoteTaskDescription descr;
    descr.type = RemoteTaskDescription::GetList;
    const bool wasPending = pendingTasks.contains(descr);
    if (!wasPending) {
        pendingTasks.append(descr);
    }
    if (state != WaitForList && state != Ready) {
        return;
    }
    if (!wasPending) {
        worker->addTask(createStoredTask(descr));
    } else {
        RemoteTaskWithDescription *task = findTask(tasksByDescription, descr);
        if (task == nullptr) {
            task = createStoredTask(descr);
        }
        // A task that the worker does not hold is on its way, or its retry waits; one made just now waits for
        // the next entry to Ready.
        if (worker->containsTask(task)) {
            worker->addTask(task);
        }
    }
    logDebug("QWixtApplicationManager: added get list task");
}

/// The queue and the waiting retries are kept: the same tasks go out at the next entry to Ready.
void QWixtApplicationManager::removeAllTasksFromWorker()
{
    logDebug("QWixtApplicationManager: Remove all tasks from worker");
    for (RemoteTaskWithDescription *task : std::as_const(tasksByDescription)) {
        if (worker->containsTask(task)) {
            worker->removeTask(task);
        }
    }
}

void QWixtApplicationManager::workerFinishedWithFail(int code, QByteArray &data, RemoteTaskDescription descr)
{
    if (debugLogEnabled()) {
        qDebug() << code << data;
    }
    const bool isDelete = descr.type == RemoteTaskDescription::Delete;
    if (code == httpNotFound && isDelete) {
        // Gone from the server already. The record stays as it is.
        dropTask(descr);
        Q_EMIT applicationDeleted(descr.id, descr.data.value(QStringLiteral("app_id")).toString(),
                                  descr.data.value(QStringLiteral("type")).toString());
    } else if (code == httpBadRequest || code == httpNotFound) {
        dropTask(descr);
    } else {
        scheduleRetry(findTask(tasksByDescription, descr));
    }
}

/// The end of a request, done or given up: its description leaves the queue and its task goes.
void QWixtApplicationManager::dropTask(const RemoteTaskDescription &descr)
{
    pendingTasks.removeOne(descr);
    disposeTask(takeTask(tasksByDescription, descr));
}

/// Gives up a task that is stored nowhere any more, and the retry that may wait for it; null is ignored.
void QWixtApplicationManager::disposeTask(RemoteTaskWithDescription *task)
{
    if (task == nullptr) {
        return;
    }
    if (QTimer *timer = retryTimers.take(task)) {
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
        worker->addTask(task);
    } else {
        logDebug("QWixtApplicationManager: not ready to do request %d", 0);
    }
    timer->deleteLater();
}
