#pragma once

#include "remotetaskdescription.h"

/// Makers of task descriptions, one for each kind of remote operation.
namespace Descriptions
{

RemoteTaskDescription registration(const QString &uuid, const QString &name, const QString &type);
RemoteTaskDescription deletion(const QString &appId, const QString &uuid, const QString &type);
RemoteTaskDescription update(const QString &appId, const QString &uuid, const QString &name,
                             const QString &type);
/// Takes nothing, so that all of them are equal.
RemoteTaskDescription list();

} // namespace Descriptions
