// Requests from the bus and from the device, what replies change in the records, and which signals follow.

#include "log.h"
#include "qwixtapplicationmanager.h"
#include "remoteappsapi.h"
#include "remoterequestworker.h"
#include "remotetaskwithdescription.h"

#include <QDebug>

#include <utility>

namespace
{

const auto appIdKey = QStringLiteral("app_id");
const auto nameKey = QStringLiteral("name");
const auto typeKey = QStringLiteral("type");

void storeRecord(QMap<QString, RemoteApplication *> &records, const RemoteApplication &application)
{
    delete records.take(application.appId);
    records.insert(application.appId, new RemoteApplication(application));
}

} // namespace

/// Queues a description. In Ready it goes to the worker at once, and true is returned.
bool QWixtApplicationManager::submit(const RemoteTaskDescription &descr)
{
    pendingTasks.append(descr);
    if (state != Ready) {
        return false;
    }
    worker->addTask(createStoredTask(descr));
    return true;
}

bool QWixtApplicationManager::registerApplication(const QString &uuid, const QString &name,
                                                  const QString &type)
{
    const RemoteTaskDescription descr = {
        RemoteTaskDescription::Register, uuid, {{nameKey, name}, {typeKey, type}}};
    if (pendingTasks.contains(descr)) {
        logDebug("QWixtApplicationManager: register task already exists");
        return false;
    }
    if (submit(descr)) {
        if (debugLogEnabled()) {
            qDebug() << descr.data;
        }
        logInfo("QWixtApplicationManager: added register app task");
    }
    return true;
}

void QWixtApplicationManager::updateApplication(const QString &qwixtId, const QString &uuid,
                                                const QString &name, const QString &type)
{
    const RemoteApplication wanted = {qwixtId, uuid, name, type};
    storeRecord(localApplications, wanted);

    const RemoteApplication *const onServer = remoteApplications.value(qwixtId);
    if (onServer == nullptr) {
        logWarning("No remote info about application %s register one more time", qPrintable(qwixtId));
        registerApplication(uuid, name, type);
        return;
    }
    if (wanted == *onServer) {
        logInfo("QWixtApplicationManager: application is not changed");
        return;
    }
    const RemoteTaskDescription descr = {
        RemoteTaskDescription::Update, uuid, {{appIdKey, qwixtId}, {nameKey, name}, {typeKey, type}}};
    if (pendingTasks.contains(descr)) {
        logDebug("QWixtApplicationManager: update task already exists");
        return;
    }
    if (submit(descr)) {
        logInfo("QWixtApplicationManager: added update app task");
    }
}

void QWixtApplicationManager::deleteApplication(QString qwixtId, QString uuid, QString type)
{
    RemoteTaskDescription descr = {RemoteTaskDescription::Delete, uuid, {}};
    // Before the data are attached, on purpose: a second deletion of the same widget is queued again.
    if (pendingTasks.contains(descr)) {
        logDebug("QWixtApplicationManager: delete task already exists");
        return;
    }
    descr.data = {{appIdKey, qwixtId}, {typeKey, type}};
    if (submit(descr)) {
        logInfo("QWixtApplicationManager: added delete app task");
        logDebug("QWixtApplicationManager: added delete app %s %s task", qPrintable(qwixtId),
                 qPrintable(type));
    }
}

void QWixtApplicationManager::widgetDeleted(QString /*packageId*/, QString widgetId)
{
    for (const RemoteApplication *application : std::as_const(remoteApplications)) {
        if (application->identifier == widgetId) {
            deleteApplication(application->appId, widgetId, QStringLiteral(""));
        }
    }
    if (remoteApplications.isEmpty()) {
        logDebug("QWixtApplicationManager: no widget registered to delete");
    }
}

void QWixtApplicationManager::removeApplicationsWithoutWidget()
{
    if (debugLogEnabled()) {
        qDebug().noquote() << installedWidgets.join(QStringLiteral(", "));
    }
    for (const RemoteApplication *application : std::as_const(remoteApplications)) {
        if (!installedWidgets.contains(application->identifier)) {
            logDebug("QWixtApplicationManager: There are no widget with id %s",
                     qPrintable(application->identifier));
            deleteApplication(application->appId, application->identifier, application->type);
        }
    }
}

void QWixtApplicationManager::workerFinishedWithSuccess(QByteArray &data, RemoteTaskDescription descr)
{
    if (debugLogEnabled()) {
        qDebug() << data;
    }
    dropTask(descr);
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

void QWixtApplicationManager::applicationWasRegistered(const QByteArray &reply,
                                                       const RemoteTaskDescription &descr)
{
    const RemoteAppsApi::RegisterReply answer = RemoteAppsApi::readRegisterReply(reply);
    const RemoteApplication application = {answer.appId, descr.id, descr.data.value(nameKey).toString(),
                                           descr.data.value(typeKey).toString()};
    storeRecord(remoteApplications, application);
    logInfo("QWixtApplicationManager: Application registered with status %s", qPrintable(answer.status));
    Q_EMIT applicationRegistered(descr.id, application.appId, application.type);
}

void QWixtApplicationManager::applicationWasDeleted(const RemoteTaskDescription &descr)
{
    const QString appId = descr.data.value(appIdKey).toString();
    delete remoteApplications.take(appId);
    logInfo("QWixtApplicationManager: Application deleted");
    Q_EMIT applicationDeleted(descr.id, appId, descr.data.value(typeKey).toString());
}

void QWixtApplicationManager::applicationWasUpdated(const RemoteTaskDescription &descr)
{
    logInfo("QWixtApplicationManager: Application updated");
    RemoteApplication *const application = remoteApplications.value(descr.data.value(appIdKey).toString());
    if (application == nullptr) {
        logWarning("QWixtApplicationManager: Updated unknown application");
        return;
    }
    application->name = descr.data.value(nameKey).toString(); // type and identifier stay, on purpose
}

void QWixtApplicationManager::listWasReceived(const QByteArray &reply)
{
    remoteListReceived = true;
    qDeleteAll(remoteApplications);
    remoteApplications.clear();
    const QList<RemoteApplication> listed = RemoteAppsApi::readListReply(reply, remoteId);
    for (const RemoteApplication &application : listed) {
        if (!remoteApplications.contains(application.appId)) {
            storeRecord(remoteApplications, application);
        }
    }
    removeApplicationsWithoutWidget();
    evaluateState();
}

/// What the device asked for last for this application, or null with a warning.
const RemoteApplication *QWixtApplicationManager::localApplication(const QString &appId) const
{
    const RemoteApplication *const application = localApplications.value(appId);
    if (application == nullptr) {
        logWarning("QWixtApplicationManager: No local application with id %s", qPrintable(appId));
    }
    return application;
}

/// The server's record of this application, or null with a warning.
const RemoteApplication *QWixtApplicationManager::remoteApplication(const QString &appId) const
{
    const RemoteApplication *const application = remoteApplications.value(appId);
    if (application == nullptr) {
        logWarning("QWixtApplicationManager: No remote application with id %s", qPrintable(appId));
    }
    return application;
}
