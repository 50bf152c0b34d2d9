#include "openmanager.h"

#include "descriptions.h"
#include "remotetaskwithdescription.h"
#include "vdatafetcher_p.h"
#include "vthread.h"

#include <QCoreApplication>
#include <QTimer>

OpenManager::~OpenManager()
{
    letGoInWorker();
    // Results that still come in lead to no further requests.
    state = WaitForDaemonsToStart;
    daemonStarted = false;
    CurlFake::release();
    finishOnFetchThread();                // the runs
    QCoreApplication::sendPostedEvents(); // their results, which dispose of their tasks
    finishOnFetchThread();                // the tasks' way home
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void OpenManager::finishOnFetchThread()
{
    auto *const thread = findChild<VThread *>();
    if (thread == nullptr || !thread->isRunning()) {
        return;
    }
    // An event of our own, behind those that are there.
    QObject last;
    last.moveToThread(thread);
    QThread *const home = QThread::currentThread();
    QMetaObject::invokeMethod(
        &last, [&last, home] { last.moveToThread(home); }, Qt::BlockingQueuedConnection);
}

void OpenManager::beReady()
{
    daemonStarted = true;
    widgetsListReceived = true;
    internetAvailable = true;
    remoteListReceived = true;
    apiKey = QStringLiteral("key");
    remoteId = QStringLiteral("d9");
    state = Ready;
}

void OpenManager::addRemote(const RemoteApplication &application)
{
    remoteApplications.insert(application.appId, new RemoteApplication(application));
}

void OpenManager::succeed(const RemoteTaskDescription &descr, const QByteArray &reply)
{
    QByteArray data = reply;
    workerFinishedWithSuccess(data, descr);
}

void OpenManager::fail(const RemoteTaskDescription &descr, int code, const QByteArray &reply)
{
    QByteArray data = reply;
    workerFinishedWithFail(code, data, descr);
}

void OpenManager::retryNow()
{
    const QList<QTimer *> timers = retryTimers.values();
    for (QTimer *timer : timers) {
        timer->start(0);
    }
}

RemoteTaskWithDescription *OpenManager::onlyTask() const
{
    Q_ASSERT(tasksByDescription.size() == 1);
    return *tasksByDescription.begin();
}

void OpenManager::holdInWorker(RemoteTaskWithDescription *task)
{
    findChild<VDataFetcherPrivate *>()->execQueue.append(task);
}

void OpenManager::letGoInWorker()
{
    findChild<VDataFetcherPrivate *>()->execQueue.clear();
}

int OpenManager::heldInWorker() const
{
    return static_cast<int>(findChild<VDataFetcherPrivate *>()->execQueue.size());
}

namespace Descr
{

RemoteTaskDescription registration(const char *uuid, const char *name, const char *type)
{
    return Descriptions::registration(text(uuid), text(name), text(type));
}

RemoteTaskDescription deletion(const char *appId, const char *uuid, const char *type)
{
    return Descriptions::deletion(text(appId), text(uuid), text(type));
}

RemoteTaskDescription update(const char *appId, const char *uuid, const char *name, const char *type)
{
    return Descriptions::update(text(appId), text(uuid), text(name), text(type));
}

RemoteTaskDescription list()
{
    return Descriptions::list();
}

} // namespace Descr
