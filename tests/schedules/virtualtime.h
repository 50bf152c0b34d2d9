#pragma once

#include <QAbstractEventDispatcher>
#include <QList>

/// The main thread's event dispatcher in a time that passes only when asked to: a timer of five seconds costs
/// no more than its event. Set it before the application object is made.
class VirtualTime : public QAbstractEventDispatcher
{
    Q_OBJECT

public:
    /// Milliseconds since the start.
    qint64 now() const;
    /// How long until the next timer is due; -1 when none runs.
    qint64 untilNextTimer() const;
    /// Delivers what has been posted to this thread, deletions included.
    void deliverPosted();
    /// Lets @p ms pass: timers fire in the order in which they become due, and what they post is delivered.
    void pass(qint64 ms);

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void registerSocketNotifier(QSocketNotifier *notifier) override;
    void unregisterSocketNotifier(QSocketNotifier *notifier) override;
    // The two majors of Qt differ in the type of the interval; each takes the one that is its own.
    void registerTimer(int id, int interval, Qt::TimerType type, QObject *object);
    void registerTimer(int id, qint64 interval, Qt::TimerType type, QObject *object);
    bool unregisterTimer(int id) override;
    bool unregisterTimers(QObject *object) override;
    QList<TimerInfo> registeredTimers(QObject *object) const override;
    int remainingTime(int id) override;
    void wakeUp() override;
    void interrupt() override;
    // Pure in one major of Qt, absent in the other.
    void flush();
    bool hasPendingEvents();

private:
    struct Timer {
        int id;
        qint64 interval;
        qint64 due;
        Qt::TimerType type;
        QObject *object;
    };

    QList<Timer>::iterator earliest();

    QList<Timer> timers;
    qint64 clock = 0;
};
