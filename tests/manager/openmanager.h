#pragma once

#include "curlfake.h"
#include "platformcapture.h"
#include "privatebus.h"
#include "qwixtapplicationmanager.h"

#include <QSignalSpy>

#include <memory>

/// A manager whose insides a test can see and set. Its transfers are CurlFake's.
class OpenManager : public QWixtApplicationManager
{
    Q_OBJECT

public:
    /// What the manager has learnt of the device and the server.
    struct Knowledge {
        bool daemonStarted = false;
        bool widgetsListReceived = false;
        bool internetAvailable = false;
        bool remoteListReceived = false;
        QString apiKey;
        QString serial;
        QString remoteId;
        QStringList installedWidgets;
    };

    OpenManager() = default;
    /// Lets what is under way end before the thread goes.
    ~OpenManager() override;

    // What the states, the timers and the bus call.
    using QWixtApplicationManager::createRemoteTask;
    using QWixtApplicationManager::createStoredTask;
    using QWixtApplicationManager::delayedTaskTimeout;
    using QWixtApplicationManager::evaluateState;
    using QWixtApplicationManager::getListOfRemoteApps;
    using QWixtApplicationManager::localApplication;
    using QWixtApplicationManager::processRequests;
    using QWixtApplicationManager::remoteApplication;
    using QWixtApplicationManager::removeAllTasksFromWorker;
    using QWixtApplicationManager::widgetDeleted;

    // Where a test begins. None of these evaluates the state.

    /// Ready for remote work without a device: key "key", remote id "d9".
    void beReady();
    /// The same, but without the list of remote applications.
    void beWaitingForList();
    /// Ready, with one registration ("u1", "n", "t") that was answered 503 once and now waits for its retry.
    /// False when it does not come to that.
    bool beReadyWithOneRetry();
    /// @param number a ManagerState, or none of them
    void setState(int number);
    void setKnowledge(const Knowledge &knowledge);
    void setApiKey(const QString &key);
    void setRemoteId(const QString &id);
    void setWidgets(const QStringList &widgets);
    void setQueue(std::initializer_list<RemoteTaskDescription> descriptions);
    /// Puts a record where a list reply would.
    void addRemote(const RemoteApplication &application);
    /// An id of the server without a record.
    void addRemoteId(const QString &appId);

    // What happens to it.

    /// Both evaluate the state.
    void loseInternet();
    void regainInternet();
    /// Hands a result over as the worker does.
    void succeed(const RemoteTaskDescription &descr, const QByteArray &reply = {});
    void fail(const RemoteTaskDescription &descr, int code, const QByteArray &reply = {});
    /// Has the waiting retries due now.
    void retryNow();
    /// Puts a task where the worker counts it as held: into the run queue, which is empty otherwise, because
    /// what is queued goes to the thread at once. Only after a first transfer has begun.
    void holdInWorker(RemoteTaskWithDescription *task);
    void letGoInWorker();

    // What it holds.

    ManagerState currentState() const { return state; }
    Knowledge knowledge() const;
    QTimer *listTimer() const { return refreshTimer; }
    QList<RemoteTaskDescription> queue() const { return pendingTasks.inOrder(); }
    int taskCount() const { return tasksByDescription.size(); }
    /// The task stored for a description, or null.
    RemoteTaskWithDescription *taskOf(const RemoteTaskDescription &descr) const;
    /// The first of the tasks; there must be one.
    RemoteTaskWithDescription *anyTask() const;
    /// The same where it is the only one.
    RemoteTaskWithDescription *onlyTask() const;
    int retryCount() const { return static_cast<int>(retryTimers.size()); }
    /// The timer under a task, or null.
    QTimer *retryOf(RemoteTaskWithDescription *task) const { return retryTimers.value(task); }
    /// The one retry that waits, and its task.
    QTimer *onlyRetry() const;
    RemoteTaskWithDescription *taskOfOnlyRetry() const;
    bool isRunOutstanding() const { return !outstandingRuns.isEmpty(); }
    int outstandingRunsOf(const RemoteTaskDescription &descr) const { return outstandingRuns.of(descr); }
    int heldInWorker() const;
    /// Whether every request is done: nothing waits, runs or is left over.
    bool holdsNothing() const;
    /// The records, one string each: "key: app id, identifier, name, type", parted by spaces.
    QStringList localRecords() const;
    QStringList remoteRecords() const;

private:
    /// Returns when the fetch thread has done all that is queued there.
    void finishOnFetchThread();
};

/// The manager's lines among all that were captured, oldest first.
QList<QByteArray> managerLines(int priority = LogPriority::Any);

/// Descriptions from a test's strings.
namespace Descr
{
RemoteTaskDescription registration(const char *uuid, const char *name = "Clock", const char *type = "t");
RemoteTaskDescription deletion(const char *appId, const char *uuid, const char *type = "t");
RemoteTaskDescription update(const char *appId, const char *uuid, const char *name = "Clock",
                             const char *type = "t");
RemoteTaskDescription list();
} // namespace Descr

Q_DECLARE_METATYPE(RemoteTaskDescription)

/// A string of a test.
inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
