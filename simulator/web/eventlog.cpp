#include "eventlog.h"

#include "httpserver.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QUuid>

EventLog::EventLog(qint64 largestSize_, QObject *parent)
    : QObject(parent)
    , largestSize(largestSize_)
    , runId(QUuid::createUuid().toByteArray(QUuid::Id128).left(8))
{
}

qint64 EventLog::append(QJsonObject event)
{
    event.insert(QStringLiteral("n"), ++newest);
    event.insert(QStringLiteral("t"), nowMs());
    events.push_back(QJsonDocument(event).toJson(QJsonDocument::Compact));
    size += events.back().size();
    while (size > largestSize && events.size() > 1) {
        size -= events.front().size();
        events.pop_front();
    }
    Q_EMIT appended(event);
    return newest;
}

QByteArray EventLog::run() const
{
    return runId;
}

qint64 EventLog::first() const
{
    return newest - static_cast<qint64>(events.size()) + 1;
}

qint64 EventLog::last() const
{
    return newest;
}

QByteArray EventLog::at(qint64 number) const
{
    if (number < first() || number > newest) {
        return {};
    }
    return events.at(static_cast<std::size_t>(number - first()));
}

qint64 EventLog::nowMs()
{
    static const qint64 offset = QDateTime::currentMSecsSinceEpoch() - HttpServer::nowMs();
    return offset + HttpServer::nowMs();
}
