#pragma once

#include <QString>

/// The keys of the apps endpoint's request bodies and replies, and of a task description's data.
namespace WireKey
{

inline const QString appId = QStringLiteral("app_id");
inline const QString apps = QStringLiteral("apps");
inline const QString deviceId = QStringLiteral("device_id");
inline const QString id = QStringLiteral("id"); ///< the device's id, in a registration
inline const QString identifier = QStringLiteral("identifier");
inline const QString name = QStringLiteral("name");
inline const QString status = QStringLiteral("status");
inline const QString type = QStringLiteral("type");

} // namespace WireKey
