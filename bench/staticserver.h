#pragma once

#include "nginx.h"

#include <QTemporaryDir>
#include <QVector>

/// One request that the server has answered.
struct AnsweredRequest {
    double endMs = 0; ///< milliseconds since the epoch
    int bytes = 0;    ///< what came of its head and body, as HTTP/2 carries it
    int status = 0;
    QByteArray method;
};

/// A real nginx that ends TLS and HTTP/2 and answers by itself: a list request with a file, any other with
/// the answer to a registration. It costs as little as a server can.
class StaticServer
{
public:
    /// Starts it with an empty list. Throws CannotMeasure.
    StaticServer();

    /// "127.0.0.1:PORT"
    QString host() const;
    qint64 processId() const;
    /// The reply to list requests from now on.
    void setList(const QByteArray &reply);

    /// Has it take connections and answer nobody, or go on where it was.
    void freeze();
    void thaw();

    /// Forgets the requests so far.
    void clear();
    /// Waits until @p count requests have been answered since clear(), and returns them. Throws CannotMeasure
    /// when one was not answered with 200, or when they take too long.
    QVector<AnsweredRequest> waitForAnswered(int count);
    /// Those answered so far since clear().
    int answeredCount();

private:
    void collect();

    const QTemporaryDir directory;
    Nginx nginx;
    QVector<AnsweredRequest> answered;
};
