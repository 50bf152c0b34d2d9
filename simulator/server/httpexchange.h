#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QPair>

/// One request that reached the developer server, and how it was answered.
struct HttpRequest {
    QByteArray method;
    /// Path and query, not decoded.
    QByteArray target;
    /// As received: order, spelling and repetitions kept.
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    int remotePort = 0;
    /// Milliseconds of a steady clock; answeredAtMs is 0 until there is an answer.
    qint64 receivedAtMs = 0;
    qint64 answeredAtMs = 0;
    /// How many other requests the server was busy with when this one arrived.
    int othersInFlight = 0;
    /// 0 when there is no answer: none yet, or the connection was closed instead.
    int status = 0;
    QByteArray answerBody;
    /// Counts the requests of one server, from 1.
    qint64 number = 0;

    /// The value of the first header of that name, in any case; empty when there is none.
    QByteArray header(const QByteArray &name) const;
};

Q_DECLARE_METATYPE(HttpRequest)

/// What the developer server answers to one request.
struct HttpAnswer {
    int status = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
    /// How long the answer is held back.
    int delayMs = 0;
    /// Close the connection and answer nothing at all.
    bool closeConnection = false;
};

/// One way in which the developer server fails. A fault that only delays is followed by the ordinary answer.
struct ServerFault {
    /// Refuse with this status, without doing what was asked; 0 does what was asked.
    int status = 0;
    int delayMs = 0;
    bool closeConnection = false;
    /// Do what was asked, and answer 200 with a body that is no JSON.
    bool notJson = false;

    static ServerFault withStatus(int status);
    static ServerFault withDelay(int delayMs);
    static ServerFault withClosedConnection();
    static ServerFault withBodyThatIsNoJson();
};
