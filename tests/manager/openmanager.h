#pragma once

#include "curlfake.h"
#include "daemonservice.h"
#include "privatebus.h"
#include "qwixtapplicationmanager.h"
#include "widgetmanagerservice.h"

#include <QSignalSpy>

#include <memory>

/// A manager whose insides a test can see and set. Its transfers are CurlFake's.
class OpenManager : public QWixtApplicationManager
{
    Q_OBJECT

public:
    OpenManager() = default;
    /// Lets what is under way end before the thread goes.
    ~OpenManager() override;

    using QWixtApplicationManager::createRemoteTask;
    using QWixtApplicationManager::delayedTaskTimeout;
    using QWixtApplicationManager::evaluateState;
    using QWixtApplicationManager::getListOfRemoteApps;
    using QWixtApplicationManager::localApplication;
    using QWixtApplicationManager::processRequests;
    using QWixtApplicationManager::remoteApplication;
    using QWixtApplicationManager::removeAllTasksFromWorker;
    using QWixtApplicationManager::widgetDeleted;

    using QWixtApplicationManager::apiKey;
    using QWixtApplicationManager::daemonStarted;
    using QWixtApplicationManager::installedWidgets;
    using QWixtApplicationManager::internetAvailable;
    using QWixtApplicationManager::localApplications;
    using QWixtApplicationManager::outstandingRuns;
    using QWixtApplicationManager::pendingTasks;
    using QWixtApplicationManager::refreshTimer;
    using QWixtApplicationManager::remoteApplications;
    using QWixtApplicationManager::remoteId;
    using QWixtApplicationManager::remoteListReceived;
    using QWixtApplicationManager::retryTimers;
    using QWixtApplicationManager::serial;
    using QWixtApplicationManager::state;
    using QWixtApplicationManager::tasksByDescription;
    using QWixtApplicationManager::widgetsListReceived;

    /// Ready for remote work without a device: key "key", remote id "d9".
    void beReady();
    /// Puts a record where a list reply would.
    void addRemote(const RemoteApplication &application);
    /// Hands a result over as the worker does.
    void succeed(const RemoteTaskDescription &descr, const QByteArray &reply = {});
    void fail(const RemoteTaskDescription &descr, int code, const QByteArray &reply = {});
    /// Has the waiting retries due now.
    void retryNow();
    /// The one task that exists.
    RemoteTaskWithDescription *onlyTask() const;
    /// Puts a task where the worker counts it as held: into the run queue, which is empty otherwise, since
    /// what is queued goes to the thread at once.
    void holdInWorker(RemoteTaskWithDescription *task);
    int heldInWorker() const;
    void letGoInWorker();

private:
    /// Returns when the fetch thread has done all that is queued there.
    void finishOnFetchThread();
};

/// Descriptions from a test's texts.
namespace Descr
{
RemoteTaskDescription registration(const char *uuid, const char *name = "Clock", const char *type = "t");
RemoteTaskDescription deletion(const char *appId, const char *uuid, const char *type = "t");
RemoteTaskDescription update(const char *appId, const char *uuid, const char *name = "Clock",
                             const char *type = "t");
RemoteTaskDescription list();
} // namespace Descr

/// Text of a test.
inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
