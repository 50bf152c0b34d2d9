#pragma once

#include <QObject>

class QDBusConnection;

/// Ends the event loop, with status 1 and a warning, when the bus goes away: the daemon would live on deaf,
/// and its supervisor starts it again.
class BusWatch : public QObject
{
    Q_OBJECT

public:
    static constexpr int lostBusStatus = 1;

    /// A @p connection that is lost already is reported as soon as the event loop runs.
    explicit BusWatch(QDBusConnection connection);

private Q_SLOTS:
    void busWasLost();
};
