#pragma once

#include "eventlog.h"

#include <functional>

/// One page's stream of server-sent events: what the log holds from a position on, each event under its
/// number, and the device's state whenever it has changed. Where events are missing, it says so.
class EventStream
{
public:
    using State = std::function<QByteArray()>;

    /// @p lastId is the id of the last event that the page has ("RUN-NUMBER"), or empty. @p state_ gives the
    /// state as one line of JSON.
    EventStream(const EventLog &log_, State state_, const QByteArray &lastId);

    /// What is new since the last call, as much as is sent at a time; empty when nothing is.
    QByteArray next();

private:
    const EventLog &log;
    const State state;
    QByteArray opening;
    QByteArray lastState;
    qint64 sent = 0;
};
