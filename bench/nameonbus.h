#pragma once

#include "privatebus.h"

#include <QDBusServiceWatcher>
#include <QString>

/// A bus without a device, and a view of the daemon's name on it.
class NameOnBus
{
public:
    /// Throws CannotMeasure when there is no bus.
    NameOnBus();
    ~NameOnBus();
    Q_DISABLE_COPY(NameOnBus)

    QString address() const;
    /// Returns when the name is claimed, or is free. Throws CannotMeasure when that does not come.
    void waitFor(bool claimed);

private:
    PrivateBus bus;
    const QString connectionName;
    QDBusServiceWatcher watcher;
    bool isClaimed = false;
};
