#pragma once

#include "vfetchtask.h"

#include <QSemaphore>

#include <atomic>
#include <functional>

class QThread;

/// A task whose run notes its id and ends as scripted, without a transfer.
class ScriptedTask : public VFetchTask
{
public:
    enum Ending { Succeeds, Fails };

    explicit ScriptedTask(int id, Ending howItEnds = Succeeds);

    void run() override;

    /// What is connected to one of the task's signals.
    int connectionsOf(const char *signal) const { return receivers(signal); }
    /// What is connected to all of them.
    int connections() const;

    QSemaphore gate; ///< a held task waits here in its run
    std::atomic<bool> held = false;
    std::atomic<int> begun = 0;      ///< runs
    std::function<void()> duringRun; ///< called on the worker thread

private:
    const Ending ending;
};

/// The same as a single-shot task.
class SingleShotTask : public ScriptedTask
{
public:
    explicit SingleShotTask(int id, Ending howItEnds = Succeeds);
};

/// What the tasks of a test did; any thread.
namespace Runs
{
void clear();
/// The ids of the tasks in the order of their runs.
QList<int> ids();
/// Where the last run happened.
QThread *lastThread();
} // namespace Runs
