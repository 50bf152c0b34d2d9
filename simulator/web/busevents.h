#pragma once

#include "busmonitor.h"
#include "eventlog.h"

#include <map>
#include <utility>

/// Makes events of what passes on the bus between widgets, the daemon and the device's services: calls,
/// answers, signals, and names that come and go. The API key is left out of them.
class BusEvents : public QObject
{
    Q_OBJECT
public:
    /// Both must outlive this object.
    BusEvents(BusMonitor &monitor_, EventLog &log_, QObject *parent = nullptr);

private:
    /// A call that waits for its answer.
    struct Call {
        qint64 number;
        qint64 time;
        QString member;
        QString from;
        QString to;
        QString widget;
    };

    void take(const BusMessage &message);
    void takeCall(const BusMessage &message);
    void awaitAnswer(const BusMessage &message, const Call &call);
    void takeAnswer(const BusMessage &message);
    void takeSignal(const BusMessage &message);
    void takeOwner(const QString &name, bool isOwned);
    /// The name that says most of the connection @p busName; empty when it has none.
    QString nameOf(const QString &busName) const;
    QString laneOf(const QString &busName) const;

    BusMonitor &monitor;
    EventLog &log;
    std::map<std::pair<QString, quint32>, Call> waiting; // by the caller's name and number
};
