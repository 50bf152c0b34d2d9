#pragma once

#include "vfetchtask.h"

#include <QThread>

/// A task that notes what its hook finds at the start of a run, and refuses the run when it is to.
class WatchingTask : public VFetchTask
{
public:
    using VFetchTask::VFetchTask;

    bool prepare() override
    {
        wasRunning = isRunning();
        lastBody = responseBody();
        ranOn = QThread::currentThreadId();
        return !refuses;
    }

    bool refuses = false;
    bool wasRunning = false;
    QByteArray lastBody;
    Qt::HANDLE ranOn = nullptr;
};
