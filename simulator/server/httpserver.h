#pragma once

#include "httpanswer.h"
#include "httprequest.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// An HTTP or HTTPS server on 127.0.0.1 that keeps every request as it came, and answers as it is asked to:
/// late, in part, without end, or not at all. It lives in the event loop of the thread that made it; whoever
/// blocks that thread blocks the server.
class HttpServer : public QObject
{
    Q_OBJECT
public:
    /// Called for each request; when it returns nothing, the server answers by itself.
    using Script = std::function<std::optional<HttpAnswer>(const HttpRequest &)>;

    explicit HttpServer(QObject *parent = nullptr);
    ~HttpServer() override;

    /// Listens on @p port, or on any free one when it is 0. False, with errorText(), when the port is taken.
    bool start(quint16 port = 0);
    /// The same with TLS; false too when the certificate or its key (PEM files) cannot be read.
    bool start(const QString &certificatePath, const QString &keyPath, quint16 port = 0);
    /// Cuts all connections off, those with answers that are held back too; the port is free then. The list
    /// of requests stays.
    void stop();
    bool isRunning() const;
    QString errorText() const;
    quint16 port() const;
    /// "127.0.0.1:PORT"
    QString host() const;
    /// "http://127.0.0.1:PORT" or "https://..." with @p path.
    QString url(const QString &path) const;

    /// The next answer. Several calls line up; they come before the script.
    void queueAnswer(const HttpAnswer &answer);
    /// An empty function takes the script away.
    void setScript(const Script &script);
    /// Answers that are held back go out at once.
    void releaseHeldAnswers();
    /// Streamed answers go on, if they have something to send.
    void wakeStreams();
    /// From now on a new client that would be one more than @p count is cut off at once.
    void setMostConnections(int count);
    /// From now on a request with a longer body is refused with 400, for clients that come afterwards.
    void setLargestBody(int size);

    /// From now on only the newest @p count requests are on record: for a server that runs without end.
    void setMostOnRecord(int count);

    /// The requests on record, in the order of arrival, those without an answer included: all so far, unless
    /// setMostOnRecord() says otherwise.
    QList<HttpRequest> requests() const;
    int requestCount() const;
    void clearRequests();
    /// The largest number of requests that were waiting for their answers at one time.
    int maximumConcurrent() const;
    /// Now, on the clock of the requests' times.
    static qint64 nowMs();

Q_SIGNALS:
    /// A request is whole, and about to be answered.
    void received(const HttpRequest &request);
    /// The answer to this request is held back for @p delayMs.
    void held(const HttpRequest &request, int delayMs);
    /// A request was answered, or its connection was closed (status 0).
    void answered(const HttpRequest &request);
    /// A client came and no TLS connection came of it.
    void handshakeFailed(const QString &reason);

protected:
    /// What is answered when neither queueAnswer() nor the script has an answer: the connection is closed.
    virtual HttpAnswer ordinaryAnswer(const HttpRequest &request);

private:
    class Private;
    std::unique_ptr<Private> d;
};
