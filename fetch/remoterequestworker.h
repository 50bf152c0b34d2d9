#pragma once

#include "remotetaskdescription.h"
#include "tasksignals.h"

#include <QByteArray>
#include <QObject>

class VDataFetcher;

/// Carries out the manager's requests: takes tasks, has them run one at a time on a thread of their own, and
/// reports each outcome with the task's description. Main thread only; a task belongs to its maker until
/// disposeTask().
class RemoteRequestWorker : public QObject
{
    Q_OBJECT

public:
    explicit RemoteRequestWorker(QObject *parent);
    ~RemoteRequestWorker() override;

    /// Whether a task of this task's id waits in the run queue. A task that was taken from the queue to run
    /// is not held, and all remote tasks have the same id.
    bool containsTask(VFetchTask *task) const;

    /// Queues the task to run behind those added before. A task added again is connected once and runs again.
    void addTask(VFetchTask *task);
    /// Asks the fetcher to drop the task. It knows periodic tasks only: a remote task's run stays queued.
    void removeTask(VFetchTask *task);
    /// Deletes the task once it has run as often as it was added and its results have been delivered. It
    /// leaves its thread first and is deleted on this one, so that no slot here ever reads a task that is
    /// being destroyed there.
    void disposeTask(VFetchTask *task);
    /// Emits workerFinished().
    void finish();

Q_SIGNALS:
    void workerFinished();
    /// Emitted and received on the main thread: the connection must be direct.
    void taskSuccess(QByteArray &data, RemoteTaskDescription descr);
    /// @param code VFetchTask::FailureCode, a curl result (1-99) or an HTTP status
    void taskFailed(int code, QByteArray &data, RemoteTaskDescription descr);
    /// Part of the interface; nothing emits it.
    void workerThreadFinished();

public Q_SLOTS:
    void taskSuccessSlot(QByteArray data);
    void taskFailedSlot(int code, QByteArray data);

private:
    VDataFetcher *fetcher;
    TaskSignals<RemoteRequestWorker> results;
};
