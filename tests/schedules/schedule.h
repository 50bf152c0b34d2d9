#pragma once

#include <QList>
#include <QString>

class DeviceStub;
class VirtualTime;

/// One thing that happens. What its numbers mean depends on its kind; any numbers are valid.
struct Event {
    enum Kind {
        Register,
        Update,
        Delete,
        WidgetCreated,
        WidgetDeleted,
        InternetChanged,
        ApiKeySet,
        DaemonStarted,
        WidgetManagerStarted,
        ListAsked,
        TransferEnds,
        ResultsArrive,
        TimePasses,
        DeviceChanges
    };

    Kind kind;
    int a;
    int b;
    int c;
};

using Schedule = QList<Event>;

/// The schedule of @p length events that follows from @p seed.
Schedule scheduleOf(quint32 seed, int length);

/// An event as a line of a report.
QString textOf(const Event &event);

/// Carries a schedule out on a manager of its own, then a calm in which all that waits must end well. Returns
/// an empty string, or what went wrong.
QString carryOut(const Schedule &schedule, VirtualTime &time, DeviceStub &stub);

/// The schedule without the events that its failure does not need.
Schedule shortened(Schedule schedule, VirtualTime &time, DeviceStub &stub);
