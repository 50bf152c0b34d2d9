#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QObject>

#include <deque>

/// All that has happened, as numbered JSON objects, oldest first. Holds the newest ones, as many as fit into
/// its size. What is appended must hold no secret: it goes out as it is.
class EventLog : public QObject
{
    Q_OBJECT
public:
    /// @p largestSize_ counts the bytes of the events' JSON.
    explicit EventLog(qint64 largestSize_ = 64LL * 1024 * 1024, QObject *parent = nullptr);

    /// Numbers the event ("n", from 1) and gives it its time ("t", milliseconds since 1970); returns the
    /// number.
    qint64 append(QJsonObject event);

    /// Differs from run to run of the program, so that numbers of two runs are not taken for each other.
    QByteArray run() const;
    /// The number of the oldest event that is held; one more than last() when there is none.
    qint64 first() const;
    /// The number of the newest event; 0 when there was none.
    qint64 last() const;
    /// One event as JSON on one line; empty when it is not held.
    QByteArray at(qint64 number) const;

    /// Milliseconds since 1970 at the program's start, counted on by a clock that is never set.
    static qint64 nowMs();

Q_SIGNALS:
    void appended(const QJsonObject &event);

private:
    const qint64 largestSize;
    const QByteArray runId;
    std::deque<QByteArray> events;
    qint64 size = 0;
    qint64 newest = 0;
};
