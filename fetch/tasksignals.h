#pragma once

#include "vfetchtask.h"

#include <QPointer>

#include <utility>

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
            // A slot may end in the deletion of the receiver, or in another signal.
            const QPointer<Receiver> alive(receiver);
            const bool isListener = !from.isNull() && from->hasListener(receiver);
            const QPointer<VFetchTask> outer = std::exchange(sendingTask, isListener ? from : nullptr);
            (receiver->*slot)(arguments...);
            if (!alive.isNull()) {
                sendingTask = outer;
            }
        };
        QObject::connect(task, signal, receiver, deliver);
    }

    /// In a slot, the task whose signal it is; null when that task has been deleted since, or the receiver is
    /// no listener of it any more.
    VFetchTask *sender() const { return sendingTask; }

private:
    Receiver *const receiver;
    QPointer<VFetchTask> sendingTask;
};
