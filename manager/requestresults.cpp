// The end of a request, good or bad: what it changes in the queue and the records, and which signals follow.

#include "log.h"
#include "qwixtapplicationmanager.h"
#include "remoteappsapi.h"
#include "wirekeys.h"

#include <QDebug>

namespace
{
constexpr int httpBadRequest = 400;
constexpr int httpNotFound = 404;
} // namespace

void QWixtApplicationManager::workerFinishedWithSuccess(QByteArray &data, RemoteTaskDescription descr)
{
    if (debugLogEnabled()) {
        qDebug() << data;
    }
    outstandingRuns.decrease(descr);
    dropRequest(descr);
    switch (descr.type) {
    case RemoteTaskDescription::Register:
        applicationWasRegistered(data, descr);
        break;
    case RemoteTaskDescription::Delete:
        applicationWasDeleted(descr);
        break;
    case RemoteTaskDescription::Update:
        applicationWasUpdated(descr);
        break;
    case RemoteTaskDescription::GetList:
        listWasReceived(data);
        break;
    default:
        logWarning("QWixtApplicationManager: unknown type");
    }
}

void QWixtApplicationManager::workerFinishedWithFail(int code, QByteArray &data, RemoteTaskDescription descr)
{
    if (debugLogEnabled()) {
        qDebug() << code << data;
    }
    outstandingRuns.decrease(descr);
    if (code == httpNotFound && descr.type == RemoteTaskDescription::Delete) {
        // Gone from the server already. The record stays as it is, on purpose.
        dropRequest(descr);
        announceDeletion(descr);
    } else if (code == httpBadRequest || code == httpNotFound) {
        dropRequest(descr);
    } else {
        scheduleRetry(tasksByDescription.find(descr));
    }
}

void QWixtApplicationManager::applicationWasRegistered(const QByteArray &reply,
                                                       const RemoteTaskDescription &descr)
{
    const RemoteAppsApi::RegisterReply answer = RemoteAppsApi::readRegisterReply(reply);
    const RemoteApplication application = {answer.appId, descr.id, descr.data.value(WireKey::name).toString(),
                                           descr.data.value(WireKey::type).toString()};
    storeRemoteApplication(application);
    logInfo("QWixtApplicationManager: Application registered with status %s", qPrintable(answer.status));
    Q_EMIT applicationRegistered(descr.id, application.appId, application.type);
}

void QWixtApplicationManager::applicationWasDeleted(const RemoteTaskDescription &descr)
{
    delete remoteApplications.take(descr.data.value(WireKey::appId).toString());
    logInfo("QWixtApplicationManager: Application deleted");
    announceDeletion(descr);
}

void QWixtApplicationManager::applicationWasUpdated(const RemoteTaskDescription &descr)
{
    logInfo("QWixtApplicationManager: Application updated");
    RemoteApplication *const application =
        remoteApplications.value(descr.data.value(WireKey::appId).toString());
    if (application == nullptr) {
        logWarning("QWixtApplicationManager: Updated unknown application");
        return;
    }
    application->name = descr.data.value(WireKey::name).toString(); // type and identifier stay, on purpose
}

void QWixtApplicationManager::listWasReceived(const QByteArray &reply)
{
    remoteListReceived = true;
    qDeleteAll(remoteApplications);
    remoteApplications.clear();
    const QList<RemoteApplication> listed = RemoteAppsApi::readListReply(reply, remoteId);
    for (const RemoteApplication &application : listed) {
        RemoteApplication *&record = remoteApplications[application.appId];
        if (record == nullptr) { // of two with one id the first counts
            record = new RemoteApplication(application);
        }
    }
    removeApplicationsWithoutWidget();
    evaluateState();
}

void QWixtApplicationManager::announceDeletion(const RemoteTaskDescription &descr)
{
    Q_EMIT applicationDeleted(descr.id, descr.data.value(WireKey::appId).toString(),
                              descr.data.value(WireKey::type).toString());
}
