#pragma once

#include "qhttpresponseheader.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>

class VFetchTaskPrivate;

/// One HTTP request that can be run, once or again and again, on the thread the task lives on. Its settings
/// may be changed from any thread, also during a transfer; they hold from the next run on. Read the results
/// of the last run on the thread that runs the task, or on another one while the task does not run.
class VFetchTask : public QObject
{
    Q_OBJECT

public:
    enum VFetchTaskType {
        SingleShot = 0, ///< run once, then leave the fetcher's queue
        Periodic = 1    ///< run again every invoke interval
    };
    Q_ENUM(VFetchTaskType)

    enum VFetchTaskMethod { Get = 0, Post = 1, Put = 2, PostForm = 3, Delete = 4, Custom = 5 };

    /// Failure codes that are neither a curl result (1-99) nor an HTTP status.
    enum FailureCode { PrepareRefused = -2, NoCurlHandle = -1 };

    /// A periodic GET without parent. The task belongs to its creator, also while a fetcher runs it.
    explicit VFetchTask(int id);
    ~VFetchTask() override;

    int id() const;
    /// Seconds between runs of a periodic task; below 1 means that it is not run again.
    int invokeInterval() const;
    VFetchTaskType type() const;
    bool isOneTimeUpdate() const;
    QUrl url() const;
    /// Whether run() executes now; any thread.
    bool isRunning() const;

    /// The HTTP status of the last run; 0 after a transfer that failed.
    int status() const;
    QByteArray responseBody() const;
    QHttpResponseHeader responseHeader() const;

    /// Emits invokeIntervalChanged() on a change.
    void setInvokeInterval(int seconds);
    /// Emits typeChanged() on a change.
    void setType(VFetchTaskType type);
    /// Marks the task for VDataFetcher::forceUpdateAll(true).
    void setOneTimeUpdate(bool oneTime);
    /// @param method one of VFetchTaskMethod
    void setRequestMethod(int method);
    /// The method's word on the wire when the method is Custom.
    void setCustomMethod(const QByteArray &word);
    /// Seconds, both for the connection and for the whole transfer; 180 unless set.
    void setTimeout(int seconds);
    /// Inserts or replaces one header.
    void setHeader(const QString &name, const QString &value);
    /// Replaces all parameters of the body.
    void setPostParams(const QVariantMap &parameters);
    /// Inserts or replaces one parameter of the body.
    void setPostParam(const QString &name, const QVariant &value);
    /// A body that is sent instead of the parameters when it is not empty; see requestBody().
    void setBody(const QByteArray &body);
    /// Inserts or replaces one part of a PostForm request. @p kind is "text" or "file" (a part of another
    /// kind is not sent), @p value the text or the file's path.
    void setFormPart(const QString &name, const QString &kind, const QVariant &value);

    /// Notes who is connected to the task's signals; false when it was noted before. On the listener's
    /// thread, which has to be the same for all listeners.
    bool addListener(const QObject *listener);
    void removeListener(const QObject *listener);
    bool hasListener(const QObject *listener) const;

    /// Setting another URL clears the headers.
    virtual void setUrl(const QUrl &url);
    virtual void setUrl(const QString &url);
    /// For subclasses that can end a run early: whether cancel() does so. Never called from here.
    virtual bool isCancelable() const;
    /// Called at the start of each run, on the running thread. A subclass fills in its request, or returns
    /// false to skip this run, which is then reported as failure(PrepareRefused).
    Q_INVOKABLE virtual bool prepare();
    /// Performs the request and returns when it is over. Ends in exactly one of success() and failure(),
    /// emitted on the calling thread.
    Q_INVOKABLE virtual void run();
    /// For subclasses that can end a run early. Does nothing here.
    virtual void cancel();

Q_SIGNALS:
    /// Asks the fetcher to run the task now.
    void doUpdate();
    /// The answer's status was 200 to 299.
    void success(QByteArray body);
    /// @param code a FailureCode, a curl result (1-99) or an HTTP status
    void failure(int code, QByteArray body);
    void invokeIntervalChanged(int newInterval);
    void typeChanged(VFetchTask::VFetchTaskType newType);

private:
    friend class VFetchTaskPrivate;
    VFetchTaskPrivate *d;
};
