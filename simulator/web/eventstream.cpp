#include "eventstream.h"

#include <utility>

namespace
{
constexpr int largestBlock = 256 * 1024;

QByteArray message(const char *type, const QByteArray &data)
{
    return QByteArray("event: ") + type + "\ndata: " + data + "\n\n";
}
} // namespace

EventStream::EventStream(const EventLog &log_, State state_, const QByteArray &lastId)
    : log(log_)
    , state(std::move(state_))
{
    const QList<QByteArray> parts = lastId.split('-');
    const qint64 number = parts.value(1).toLongLong();
    if (parts.value(0) == log.run() && number >= 0 && number <= log.last()) {
        sent = number;
    }
    // The first word of every stream: a page that has events of another run sees that they are.
    opening = "retry: 500\n" + message("run", '"' + log.run() + '"');
}

QByteArray EventStream::next()
{
    QByteArray block = std::exchange(opening, {});
    if (sent + 1 < log.first()) {
        block += message("missing", '[' + QByteArray::number(sent + 1) + ',' +
                                        QByteArray::number(log.first() - 1) + ']');
        sent = log.first() - 1;
    }
    while (sent < log.last() && block.size() < largestBlock) {
        ++sent;
        block += "id: " + log.run() + '-' + QByteArray::number(sent) + "\ndata: " + log.at(sent) + "\n\n";
    }
    const QByteArray now = state();
    if (now != lastState) {
        lastState = now;
        block += message("state", now);
    }
    return block;
}
