#include "remoterequestworker.h"

#include "remotetaskwithdescription.h"
#include "vdatafetcher.h"

RemoteRequestWorker::RemoteRequestWorker(QObject *parent)
    : QObject(parent)
    , fetcher(new VDataFetcher(this))
{
}

RemoteRequestWorker::~RemoteRequestWorker() = default;

bool RemoteRequestWorker::containsTask(VFetchTask *task) const
{
    return fetcher->containsFetchTask(task);
}

void RemoteRequestWorker::addTask(VFetchTask *task)
{
    // Connected once however often it is added. Disconnecting first would do that too, but a task may be
    // ending an earlier run at this moment, and its result would be lost in between.
    const auto once = static_cast<Qt::ConnectionType>(Qt::AutoConnection | Qt::UniqueConnection);
    connect(task, &VFetchTask::failure, this, &RemoteRequestWorker::taskFailedSlot, once);
    connect(task, &VFetchTask::success, this, &RemoteRequestWorker::taskSuccessSlot, once);
    fetcher->addFetchTask(task, 0, true);
}

void RemoteRequestWorker::removeTask(VFetchTask *task)
{
    if (containsTask(task)) {
        fetcher->removeFetchTask(task->id());
    }
}

void RemoteRequestWorker::disposeTask(VFetchTask *task)
{
    QThread *const home = thread();
    const auto goHome = [task, home] {
        task->moveToThread(home);
        task->deleteLater();
    };
    QMetaObject::invokeMethod(task, goHome, Qt::QueuedConnection);
}

void RemoteRequestWorker::finish()
{
    Q_EMIT workerFinished();
}

void RemoteRequestWorker::taskSuccessSlot(QByteArray data)
{
    if (const auto *task = qobject_cast<RemoteTaskWithDescription *>(sender())) {
        Q_EMIT taskSuccess(data, task->description);
    }
}

void RemoteRequestWorker::taskFailedSlot(int code, QByteArray data)
{
    if (const auto *task = qobject_cast<RemoteTaskWithDescription *>(sender())) {
        Q_EMIT taskFailed(code, data, task->description);
    }
}
