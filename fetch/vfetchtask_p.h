#pragma once

#include "curlrequest.h"
#include "vfetchtask.h"

#include <QList>
#include <QMap>
#include <QMutex>
#include <QPointer>

/// The private half of a VFetchTask, owned by it and living on its thread.
class VFetchTaskPrivate : public QObject
{
    Q_OBJECT

public:
    struct FormPart {
        QString kind;
        QVariant value;
    };

    VFetchTaskPrivate(VFetchTask *task, int taskId);

    /// Emits the task's doUpdate() once after @p ms milliseconds; a call before then restarts the wait, and
    /// one with less than 1 only cancels it. On the task's own thread.
    void scheduleOneTimeUpdateIn(int ms);
    void run();

    VFetchTask *q;
    const int id;
    int invokeInterval = 0;
    int status = 0;
    int oneTimeTimerId = 0;
    bool oneTimeTimerPending = false; ///< the id is kept after the timer has fired
    bool oneTimeUpdate = false;
    bool running = false;
    int timeout = 180;         ///< seconds
    mutable QMutex stateMutex; ///< guards running
    mutable QMutex dataMutex;  ///< guards the settings; never held during a transfer
    int method = VFetchTask::Get;
    VFetchTask::VFetchTaskType type = VFetchTask::Periodic;
    QString responseHeaderText;
    QByteArray responseBody;
    QUrl url;
    QMap<QString, QString> headers;
    QHttpResponseHeader responseHeader;
    QVariantMap postParams;
    QByteArray body;
    QMap<QString, FormPart> formParts;
    QByteArray customMethod;
    QList<QPointer<const QObject>> listeners; ///< used on their thread only

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void setRunning(bool isRunning);
    void transfer();

    CurlRequest prepareRequest();
    // Its steps, with dataMutex held.
    void addHeaders(CurlRequest &request) const;
    void setMethod(CurlRequest &request) const;
    void addForm(CurlRequest &request) const;
    void setBody(CurlRequest &request) const;
    void setTarget(CurlRequest &request);

    void reportAnswer(const CurlRequest &request, int httpStatus);
    void reportTransferFailure(const CurlRequest &request);
};
