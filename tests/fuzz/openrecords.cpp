#include "openrecords.h"

#include <QTimer>

OpenRecords::OpenRecords()
{
    const auto announce = [this](const char *what) {
        return [this, what](const QString &uuid, const QString &appId, const QString &type) {
            announced.append(
                QStringList{QString::fromLatin1(what), uuid, appId, type}.join(QLatin1Char('|')));
        };
    };
    connect(this, &QWixtApplicationManager::applicationRegistered, this, announce("registered"));
    connect(this, &QWixtApplicationManager::applicationDeleted, this, announce("deleted"));
    connect(this, &QWixtApplicationManager::readyToWork, this,
            [this] { announced.append(QStringLiteral("ready")); });
}

void OpenRecords::setIdentity(const QString &key, const QString &deviceId)
{
    apiKey = key;
    remoteId = deviceId;
}

void OpenRecords::begin(const QString &deviceId, const QStringList &widgets, const RemoteApplication &record,
                        const RemoteTaskDescription &request)
{
    qDeleteAll(remoteApplications);
    remoteApplications.clear();
    qDeleteAll(retryTimers);
    retryTimers.clear();
    announced.clear();
    remoteListReceived = false;
    remoteId = deviceId;
    installedWidgets = widgets;
    storeRemoteApplication(record);
    pendingTasks = {request};
    outstandingRuns = DescriptionCounts();
    outstandingRuns.increase(request);
}

void OpenRecords::succeed(const RemoteTaskDescription &descr, const QByteArray &reply)
{
    QByteArray data = reply;
    workerFinishedWithSuccess(data, descr);
}

void OpenRecords::fail(const RemoteTaskDescription &descr, int code, const QByteArray &reply)
{
    QByteArray data = reply;
    workerFinishedWithFail(code, data, descr);
}

QMap<QString, RemoteApplication> OpenRecords::records() const
{
    QMap<QString, RemoteApplication> values;
    for (auto record = remoteApplications.cbegin(); record != remoteApplications.cend(); ++record) {
        if (record.value() != nullptr) {
            values.insert(record.key(), *record.value());
        }
    }
    return values;
}

bool OpenRecords::isAnythingSent() const
{
    return !tasksByDescription.isEmpty() || !outstandingRuns.isEmpty();
}
