// Requests from the bus and from the device, and the records that they are checked against.

#include "descriptions.h"
#include "log.h"
#include "qwixtapplicationmanager.h"

#include <QDebug>
#include <QSet>

#include <utility>

namespace
{

void storeRecord(QMap<QString, RemoteApplication *> &records, const RemoteApplication &application)
{
    delete records.take(application.appId);
    records.insert(application.appId, new RemoteApplication(application));
}

} // namespace

bool QWixtApplicationManager::registerApplication(const QString &uuid, const QString &name,
                                                  const QString &type)
{
    const RemoteTaskDescription descr = Descriptions::registration(uuid, name, type);
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
        // The one line without the class's name in front; its text is fixed.
        logWarning("No remote info about application %s register one more time", qPrintable(qwixtId));
        registerApplication(uuid, name, type);
        return;
    }
    if (wanted == *onServer) {
        logInfo("QWixtApplicationManager: application is not changed");
        return;
    }
    const RemoteTaskDescription descr = Descriptions::update(qwixtId, uuid, name, type);
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
    // Looked up without the data, on purpose: a queued description has data, so a second deletion is queued
    // again.
    if (pendingTasks.contains({RemoteTaskDescription::Delete, uuid, {}})) {
        logDebug("QWixtApplicationManager: delete task already exists");
        return;
    }
    if (submit(Descriptions::deletion(qwixtId, uuid, type))) {
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
    // On purpose: no line for a widget without an application while there are records of others.
    if (remoteApplications.isEmpty()) {
        logDebug("QWixtApplicationManager: no widget registered to delete");
    }
}

void QWixtApplicationManager::removeApplicationsWithoutWidget()
{
    if (debugLogEnabled()) {
        qDebug().noquote() << installedWidgets.join(QStringLiteral(", "));
    }
    const QSet<QString> installed(installedWidgets.cbegin(), installedWidgets.cend());
    for (const RemoteApplication *application : std::as_const(remoteApplications)) {
        if (!installed.contains(application->identifier)) {
            logDebug("QWixtApplicationManager: There are no widget with id %s",
                     qPrintable(application->identifier));
            deleteApplication(application->appId, application->identifier, application->type);
        }
    }
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

void QWixtApplicationManager::storeRemoteApplication(const RemoteApplication &application)
{
    storeRecord(remoteApplications, application);
}
