#include "remoterequestworker.h"

#include "remotetaskwithdescription.h"
#include "vdatafetcher.h"

RemoteRequestWorker::RemoteRequestWorker(QObject *parent)
    : QObject(parent)
    , fetcher(new VDataFetcher(this))
    , results(this)
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
    if (task != nullptr && task->addListener(this)) {
        results.connect(task, &VFetchTask::failure, &RemoteRequestWorker::taskFailedSlot);
        results.connect(task, &VFetchTask::success, &RemoteRequestWorker::taskSuccessSlot);
    }
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
    if (const auto *task = qobject_cast<RemoteTaskWithDescription *>(results.sender())) {
        Q_EMIT taskSuccess(data, task->description);
    }
}

void RemoteRequestWorker::taskFailedSlot(int code, QByteArray data)
{
    if (const auto *task = qobject_cast<RemoteTaskWithDescription *>(results.sender())) {
        Q_EMIT taskFailed(code, data, task->description);
    }
}
