#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QPair>

/// One request that reached a server, and how it was answered.
struct HttpRequest {
    /// All that had come when the request was whole: its head and body, and what the client sent behind them.
    QByteArray bytes;
    QByteArray method;
    /// Path and query, not decoded.
    QByteArray target;
    /// As received: order, spelling and repetitions kept; spaces around the values taken off.
    QList<QPair<QByteArray, QByteArray>> headers;
    /// As long as Content-Length says.
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
    /// The answer's head and body as they went out, or the first 64 KiB of them.
    QByteArray answerBytes;
    /// Counts the requests of one server, from 1.
    qint64 number = 0;

    /// The value of the first header of that name, in any case; empty when there is none.
    QByteArray header(const QByteArray &name) const;
    /// "GET /path HTTP/1.1"
    QByteArray firstLine() const;
};

Q_DECLARE_METATYPE(HttpRequest)
