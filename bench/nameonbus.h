#pragma once

#include "privatebus.h"

#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QString>

#include <chrono>

/// A bus without a device, and a view of the daemon's name on it.
class NameOnBus
{
public:
    /// Throws CannotMeasure when there is no bus.
    NameOnBus();
    ~NameOnBus();
    Q_DISABLE_COPY(NameOnBus)

    QString address() const;
    /// Returns when the name is claimed, or is free, with the moment at which that was seen. Throws
    /// CannotMeasure when it does not come.
    std::chrono::steady_clock::time_point waitFor(bool claimed);
    /// Returns when the main thread of the name's owner answers calls. Throws CannotMeasure when it does not.
    void waitForAnswer();

private:
    void noteOwner(const QString &owner);

    PrivateBus bus;
    const QString connectionName;
    QDBusServiceWatcher watcher;
    QEventLoop change; ///< runs until the name is claimed or freed
    bool isClaimed = false;
    std::chrono::steady_clock::time_point changedAt;
};
