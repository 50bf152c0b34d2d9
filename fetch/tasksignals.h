#pragma once

#include "vfetchtask.h"

#include <QPointer>

/// Connects tasks to the slots of one receiver, and knows in a slot which task's signal it is.
/// QObject::sender() knows that too, but goes through the connections of all tasks to find out: milliseconds
/// for each result when ten thousand tasks wait. Main thread only, which has to be the receiver's.
template <typename Receiver>
class TaskSignals
{
    Q_DISABLE_COPY(TaskSignals)

public:
    explicit TaskSignals(Receiver *owner)
        : receiver(owner)
    {
    }

    /// Has the slot called at each signal of the task. Twice connected is twice called: see
    /// VFetchTask::addListener().
    template <typename... Arguments>
    void connect(VFetchTask *task, void (VFetchTask::*signal)(Arguments...),
                 void (Receiver::*slot)(Arguments...))
    {
        const auto deliver = [this, slot, from = QPointer<VFetchTask>(task)](Arguments... arguments) {
            sendingTask = from;
            (receiver->*slot)(arguments...);
            sendingTask.clear();
        };
        QObject::connect(task, signal, receiver, deliver);
    }

    /// In a slot, the task whose signal it is; null when that task has been deleted since.
    VFetchTask *sender() const { return sendingTask; }

private:
    Receiver *const receiver;
    QPointer<VFetchTask> sendingTask;
};
