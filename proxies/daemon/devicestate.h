#pragma once

#include <QString>
#include <QVariant>

#include <optional>

namespace Daemon
{

/// What the device says of itself in one JSON object.
struct DeviceState {
    struct PendingUpdate {
        QString version;
        QString status;
    };

    QString deviceName;
    QString serialNumber;
    QString hardwareVersion;
    QString softwareVersion;
    QString mode;
    QString serverId;
    QString model;
    QString ubootVersion;
    QString kernelVersion;
    bool appsAutoUpdateEnabled = false;
    /// Nothing when the device knows of no newer firmware.
    std::optional<PendingUpdate> pendingUpdate;

    /// Reads the parsed JSON object; a missing key leaves its field empty.
    static DeviceState fromMap(const QVariantMap &map);
    /// The same keys again, the update as a map of its own, or null when there is none.
    QVariantMap toMap() const;
};

} // namespace Daemon
