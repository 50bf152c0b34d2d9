#pragma once

#include "developerserver.h"
#include "nginx.h"

#include <QTemporaryDir>
#include <QVector>

/// One request as the front of the server saw it.
struct FleetRequest {
    double startMs = 0; ///< milliseconds since the epoch
    qint64 connection = 0;
    bool isResumed = false; ///< the client came with a session of an earlier connection
    int status = 0;
    QByteArray method;
};

/// The developer server behind a real nginx that ends TLS and HTTP/2.
class FleetServer
{
public:
    /// @p apiKey is what requests must carry. Throws CannotMeasure.
    explicit FleetServer(const QString &apiKey);

    quint16 port() const;
    /// "127.0.0.1:PORT"
    QString host() const;
    /// Nanoseconds of processor time of the front so far.
    qint64 processorNs() const;

    /// From now on every request fails: with 502 at once because the developer server is away, or when
    /// @p holdSeconds is above 0, with 503 after that time.
    void fail(int holdSeconds);
    void recover();
    /// How many applications the developer server holds.
    int applicationCount() const;

    /// All requests answered so far.
    QVector<FleetRequest> requests();

private:
    const QTemporaryDir directory;
    DeveloperServer developer;
    Nginx front;
    quint16 developerPort = 0;
    QVector<FleetRequest> seen;
};
