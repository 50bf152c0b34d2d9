#include "openmanager.h"

#include "remotetaskwithdescription.h"

#include <QTimer>
#include <QtTest>

OpenManager::~OpenManager()
{
    CurlFake::release();
    // Each run that is queued, and each way home behind it, is an event of the fetch thread.
    QTest::qWait(20);
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
