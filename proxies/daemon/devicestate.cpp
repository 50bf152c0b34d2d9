#include "daemon/devicestate.h"

namespace Daemon
{

namespace
{

struct TextField {
    const char *key;
    QString DeviceState::*field;
};

// One table for both directions, so that they cannot differ.
constexpr TextField textFields[] = {
    {"device_name", &DeviceState::deviceName},
    {"serial_number", &DeviceState::serialNumber},
    {"hw_version", &DeviceState::hardwareVersion},
    {"sw_version", &DeviceState::softwareVersion},
    {"mode", &DeviceState::mode},
    {"server_id", &DeviceState::serverId},
    {"model", &DeviceState::model},
    {"uboot_version", &DeviceState::ubootVersion},
    {"kernel_version", &DeviceState::kernelVersion},
};

const QLatin1String autoUpdateKey{"apps_auto_update_enabled"};
const QLatin1String updateKey{"update_available"};
const QLatin1String versionKey{"version"};
const QLatin1String statusKey{"status"};

} // namespace

DeviceState DeviceState::fromMap(const QVariantMap &map)
{
    DeviceState state;
    for (const TextField &text : textFields) {
        state.*text.field = map.value(QLatin1String(text.key)).toString();
    }
    state.appsAutoUpdateEnabled = map.value(autoUpdateKey).toBool();
    const QVariant update = map.value(updateKey);
    if (update.userType() == QMetaType::QVariantMap) {
        const QVariantMap fields = update.toMap();
        state.pendingUpdate = PendingUpdate{fields.value(versionKey).toString(), fields.value(statusKey).toString()};
    }
    return state;
}

QVariantMap DeviceState::toMap() const
{
    QVariantMap map;
    for (const TextField &text : textFields) {
        map.insert(QLatin1String(text.key), this->*text.field);
    }
    map.insert(autoUpdateKey, appsAutoUpdateEnabled);
    QVariant update = QVariant::fromValue(nullptr);
    if (pendingUpdate) {
        update = QVariantMap{{versionKey, pendingUpdate->version}, {statusKey, pendingUpdate->status}};
    }
    map.insert(updateKey, update);
    return map;
}

} // namespace Daemon
