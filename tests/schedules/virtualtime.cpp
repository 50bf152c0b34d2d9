#include "virtualtime.h"

#include <QCoreApplication>
#include <QTimerEvent>

#include <algorithm>

qint64 VirtualTime::now() const
{
    return clock;
}

qint64 VirtualTime::untilNextTimer() const
{
    const auto *const self = this;
    const auto next = std::min_element(self->timers.cbegin(), self->timers.cend(),
                                       [](const Timer &a, const Timer &b) { return a.due < b.due; });
    return next == self->timers.cend() ? -1 : std::max<qint64>(next->due - clock, 0);
}

QList<VirtualTime::Timer>::iterator VirtualTime::earliest()
{
    // Of those due at one moment, the one that was started first.
    return std::min_element(timers.begin(), timers.end(),
                            [](const Timer &a, const Timer &b) { return a.due < b.due; });
}

void VirtualTime::deliverPosted()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void VirtualTime::pass(qint64 ms)
{
    const qint64 end = clock + ms;
    for (auto timer = earliest(); timer != timers.end() && timer->due <= end; timer = earliest()) {
        clock = std::max(clock, timer->due);
        timer->due = clock + std::max<qint64>(timer->interval, 1);
        QTimerEvent event(timer->id);
        QCoreApplication::sendEvent(timer->object, &event);
        deliverPosted();
    }
    clock = end;
}

bool VirtualTime::processEvents(QEventLoop::ProcessEventsFlags /*flags*/)
{
    deliverPosted();
    return false;
}

// The bus library watches its sockets on a thread of its own, and nothing else here has any.
void VirtualTime::registerSocketNotifier(QSocketNotifier * /*notifier*/) {}

void VirtualTime::unregisterSocketNotifier(QSocketNotifier * /*notifier*/) {}

void VirtualTime::registerTimer(int id, int interval, Qt::TimerType type, QObject *object)
{
    registerTimer(id, static_cast<qint64>(interval), type, object);
}

void VirtualTime::registerTimer(int id, qint64 interval, Qt::TimerType type, QObject *object)
{
    timers.append({id, interval, clock + interval, type, object});
}

bool VirtualTime::unregisterTimer(int id)
{
    const auto end =
        std::remove_if(timers.begin(), timers.end(), [id](const Timer &t) { return t.id == id; });
    const bool found = end != timers.end();
    timers.erase(end, timers.end());
    return found;
}

bool VirtualTime::unregisterTimers(QObject *object)
{
    const auto end =
        std::remove_if(timers.begin(), timers.end(), [object](const Timer &t) { return t.object == object; });
    const bool found = end != timers.end();
    timers.erase(end, timers.end());
    return found;
}

QList<QAbstractEventDispatcher::TimerInfo> VirtualTime::registeredTimers(QObject *object) const
{
    QList<TimerInfo> list;
    for (const Timer &timer : timers) {
        if (timer.object == object) {
            list.append(TimerInfo(timer.id, static_cast<int>(timer.interval), timer.type));
        }
    }
    return list;
}

int VirtualTime::remainingTime(int id)
{
    const auto timer =
        std::find_if(timers.cbegin(), timers.cend(), [id](const Timer &t) { return t.id == id; });
    return timer == timers.cend() ? -1 : static_cast<int>(std::max<qint64>(timer->due - clock, 0));
}

void VirtualTime::wakeUp() {}

void VirtualTime::interrupt() {}

void VirtualTime::flush() {}

bool VirtualTime::hasPendingEvents()
{
    return false;
}
