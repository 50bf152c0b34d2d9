#pragma once

#include "curlfake.h"

#include <QObject>
#include <QThread>

/// A thread that a test's task lives on, to the end of its scope at the latest. The task outlives it.
class TaskThread
{
public:
    explicit TaskThread(QObject &object)
        : task(object)
    {
        task.moveToThread(&thread);
        thread.start();
    }
    ~TaskThread() { finish(); }
    Q_DISABLE_COPY(TaskThread)

    /// Returns when the thread has done what was queued for the task and has ended.
    void finish()
    {
        CurlFake::release();
        QMetaObject::invokeMethod(
            &task, [this] { thread.quit(); }, Qt::QueuedConnection);
        thread.wait();
    }

private:
    QObject &task;
    QThread thread;
};
