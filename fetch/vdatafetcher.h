#pragma once

#include <QObject>

class VDataFetcherPrivate;
class VFetchTask;

/// Runs fetch tasks one at a time, in the order they were queued, on one worker thread, and runs periodic
/// tasks again every invoke interval. The run queue holds a task only until it is handed to that thread,
/// which is at once unless another task is taken in its stead: what waits for a transfer waits in the
/// thread's own event queue. All calls belong to the thread that owns the fetcher; only the tasks' run() is
/// called on the worker thread, to which a task is moved when it is first added. Tasks are never deleted
/// here: they belong to their owner, who removes a periodic task before deleting it.
class VDataFetcher : public QObject
{
    Q_OBJECT

public:
    explicit VDataFetcher(QObject *parent = nullptr);
    /// Stops and joins the worker thread, which waits for the request that runs.
    ~VDataFetcher() override;

    /// Whether the worker thread runs.
    bool isRunning() const;
    /// Whether the task's id is among the periodic tasks or waits in the run queue; false for null. A task
    /// that was handed to the worker thread is not contained any more.
    bool containsFetchTask(VFetchTask *task) const;
    /// The periodic task of this id, or null.
    VFetchTask *fetchTaskById(int id) const;
    /// Deprecated: use fetchTaskById().
    VFetchTask *fetchTask(int id) const;

    /// Starts the worker thread. A fetcher is started once and stopped once; it cannot be started again after
    /// a stop.
    void startProcessing();
    /// Empties the run queue, ends the worker thread and waits for it without a time limit.
    void stopProcessing();

    /// Adds a task, starting the worker thread when it does not run. A null task is ignored.
    /// @param invokeInterval seconds between runs of a periodic task; below 1 means never again
    /// @param runNow         append to the run queue now rather than after the first interval
    void addFetchTask(VFetchTask *task, int invokeInterval, bool runNow);
    /// Deprecated: use addFetchTask(VFetchTask *, int, bool). @p id is only logged; the task keeps its own.
    void addFetchTask(int id, VFetchTask *task, int invokeInterval, bool runNow);

    /// Takes a periodic task out of the fetcher; a null task is ignored. The task is not deleted and stays on
    /// the worker thread. Removing an id that no periodic task has writes a warning and changes nothing.
    void removeFetchTask(VFetchTask *task);
    void removeFetchTask(int id);

    /// Queues a task now, in place of its waiting re-run; a null task is ignored, one that was never added is
    /// warned about.
    void forceUpdate(VFetchTask *task);
    /// The same for the periodic task of this id; a warning when there is none.
    void forceUpdate(int id);
    /// The same for all periodic tasks, or for those marked as one-time updates.
    void forceUpdateAll(bool onlyOneTimeUpdate);

Q_SIGNALS:
    /// A task's run ended well or badly; emitted on the owner's thread.
    void taskSuccess(int id, VFetchTask *task);
    void taskFailure(int id, VFetchTask *task);

private:
    friend class VDataFetcherPrivate;
    VDataFetcherPrivate *d;
};
