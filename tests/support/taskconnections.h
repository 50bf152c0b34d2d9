#pragma once

#include "vfetchtask.h"

/// How many slots the task's signals call.
inline int connectionsOf(const VFetchTask *task)
{
    // receivers() is protected; a derived class may name it.
    struct Counter : VFetchTask {
        static int (QObject::*receiversOf())(const char *) const { return &Counter::receivers; }
    };
    const auto receivers = Counter::receiversOf();
    return (task->*receivers)(SIGNAL(success(QByteArray))) +
           (task->*receivers)(SIGNAL(failure(int, QByteArray))) + (task->*receivers)(SIGNAL(doUpdate())) +
           (task->*receivers)(SIGNAL(invokeIntervalChanged(int))) +
           (task->*receivers)(SIGNAL(typeChanged(VFetchTask::VFetchTaskType)));
}
