#pragma once

#include "qwixtapplicationmanager.h"

/// The real manager of a device that it knows nothing of yet, so that it sends nothing: what replies make of
/// its records and its queue can be seen.
class OpenRecords : public QWixtApplicationManager
{
    Q_OBJECT

public:
    OpenRecords();

    using QWixtApplicationManager::createRemoteTask;

    void setIdentity(const QString &key, const QString &deviceId);
    /// Forgets all that was, and begins with one record and one request, whose run is outstanding.
    void begin(const QString &deviceId, const QStringList &widgets, const RemoteApplication &record,
               const RemoteTaskDescription &request);
    /// Hands a result over as the worker does.
    void succeed(const RemoteTaskDescription &descr, const QByteArray &reply);
    void fail(const RemoteTaskDescription &descr, int code, const QByteArray &reply);

    /// Null records are left out.
    QMap<QString, RemoteApplication> records() const;
    QList<RemoteTaskDescription> queue() const { return pendingTasks.inOrder(); }
    bool isListKnown() const { return remoteListReceived; }
    /// Whether there are tasks, or runs whose results are still to come.
    bool isAnythingSent() const;

    /// One string each: "registered|uuid|app id|type" and the like.
    QStringList announced;
};
