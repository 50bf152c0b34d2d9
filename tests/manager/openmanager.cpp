#include "openmanager.h"

#include "vthread.h"

#include <QCoreApplication>
#include <QTimer>

OpenManager::~OpenManager()
{
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

namespace Descr
{

RemoteTaskDescription registration(const char *uuid, const char *name, const char *type)
{
    return {1, text(uuid), {{text("name"), text(name)}, {text("type"), text(type)}}};
}

RemoteTaskDescription deletion(const char *appId, const char *uuid, const char *type)
{
    return {2, text(uuid), {{text("app_id"), text(appId)}, {text("type"), text(type)}}};
}

RemoteTaskDescription update(const char *appId, const char *uuid, const char *name, const char *type)
{
    return {3,
            text(uuid),
            {{text("app_id"), text(appId)}, {text("name"), text(name)}, {text("type"), text(type)}}};
}

RemoteTaskDescription list()
{
    return {4, QString(), {}};
}

} // namespace Descr
