#pragma once

#include "tasksignals.h"
#include "vdatafetcher.h"
#include "vfetchtask.h"
#include "vthread.h"

#include <QList>
#include <QMap>
#include <QMutex>
#include <QPointer>

/// The private half of a VDataFetcher: its queue, its timers and its worker thread. Lives on the owner's
/// thread. The part about re-runs has a source file of its own, vdatafetcherreruns_p.cpp.
class VDataFetcherPrivate : public QObject
{
    Q_OBJECT

public:
    explicit VDataFetcherPrivate(VDataFetcher *fetcher);
    ~VDataFetcherPrivate() override;

    bool isThreadRunning() const;
    bool isQueued(int id) const;
    void start();
    void stop();
    void add(VFetchTask *task, int invokeInterval, bool runNow);
    void remove(int id);
    void force(VFetchTask *task);

    VDataFetcher *q;
    QMap<int, VFetchTask *> tasksById;     ///< the periodic tasks
    QMap<int, VFetchTask *> taskByTimer;   ///< waiting re-runs
    QMap<VFetchTask *, int> timerByTask;   ///< the same pairs in reverse
    QList<QPointer<VFetchTask>> execQueue; ///< tasks not yet handed to the thread, oldest first
    mutable QMutex queueMutex;             ///< guards execQueue
    QPointer<VThread> thread;
    bool stopped = false;

protected:
    void timerEvent(QTimerEvent *event) override;

private Q_SLOTS:
    void processNextTask();
    void addTaskToExecQueue();
    void addTaskToExecQueue(VFetchTask *task);
    void removeTaskFromExecQueue(VFetchTask *task);
    void taskFinishedSuccess(QByteArray body);
    void taskFinishedFailure(int code, QByteArray body);
    void taskInvokeIntervalChanged();
    void taskTypeChanged();

private:
    VFetchTask *senderTask() const;
    /// Whether another task has taken this one's place among the periodic tasks. Such a task still reports
    /// its results; nothing else of it counts any more.
    bool isReplaced(VFetchTask *task) const;
    void reportNotRun(VFetchTask *task);
    void connectTask(VFetchTask *task);
    void disconnectTask(VFetchTask *task);
    void scheduleRerun(VFetchTask *task);
    void cancelRerun(VFetchTask *task);

    TaskSignals<VDataFetcherPrivate> results;
};
