#pragma once

#include "appsendpoint.h"
#include "httpexchange.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// The developer server: the apps endpoint over HTTPS on 127.0.0.1, with its records in memory. It serves on
/// threads of its own; every function may be called from any thread, start() and stop() from the thread that
/// made it. Its signals come queued, on that thread.
class DeveloperServer : public QObject
{
    Q_OBJECT
public:
    /// Asked first for an answer to each request, on a thread of the server; none gives the ordinary answer.
    using Script = std::function<std::optional<HttpAnswer>(const HttpRequest &)>;

    explicit DeveloperServer(QObject *parent = nullptr);
    ~DeveloperServer() override;

    /// Listens on @p port, or on any free one when it is 0. False, with errorText(), when the port is taken
    /// or the certificate or its key cannot be used.
    bool start(const QString &certificatePath, const QString &keyPath, quint16 port = 0);
    /// Cuts all connections off, with answers that are held back, and returns when the port is free again.
    /// Records, faults and the list of requests stay.
    void stop();
    bool isRunning() const;
    QString errorText() const;
    quint16 port() const;
    /// "127.0.0.1:PORT"
    QString host() const;

    /// The key that requests must carry; without one, all are refused.
    void setApiKey(const QString &key);

    QList<ServerApplication> applications() const;
    /// Adds a record as if another client had made it; under a new app id when it has none. Returns the app
    /// id.
    QString addApplication(const ServerApplication &application);
    bool removeApplication(const QString &appId);
    void removeAllApplications();

    /// The next @p count answers fail so. Several calls line up.
    void failNext(int count, const ServerFault &fault);
    /// Answers fail so when nothing of failNext() is left, until clearFaults().
    void failAlways(const ServerFault &fault);
    /// No more faults; answers that are held back go out at once.
    void clearFaults();
    /// Faults do not touch what the script answers. An empty function takes the script away.
    void setScript(const Script &script);

    /// Every request so far, in the order of arrival, those without an answer included.
    QList<HttpRequest> requests() const;
    int requestCount() const;
    void clearRequests();
    /// The largest number of requests that were being served at one time.
    int maximumConcurrent() const;
    /// Now, on the clock of the requests' times.
    static qint64 nowMs();

Q_SIGNALS:
    /// The answer to this request is held back for @p delayMs.
    void held(const HttpRequest &request, int delayMs);
    /// A request was answered, or its connection was closed (status 0).
    void answered(const HttpRequest &request);

private:
    class Private;
    std::unique_ptr<Private> d;
};
