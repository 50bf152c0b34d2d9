#include "descriptions.h"

#include "wirekeys.h"

namespace Descriptions
{

RemoteTaskDescription registration(const QString &uuid, const QString &name, const QString &type)
{
    return {RemoteTaskDescription::Register, uuid, {{WireKey::name, name}, {WireKey::type, type}}};
}

RemoteTaskDescription deletion(const QString &appId, const QString &uuid, const QString &type)
{
    return {RemoteTaskDescription::Delete, uuid, {{WireKey::appId, appId}, {WireKey::type, type}}};
}

RemoteTaskDescription update(const QString &appId, const QString &uuid, const QString &name,
                             const QString &type)
{
    return {RemoteTaskDescription::Update,
            uuid,
            {{WireKey::appId, appId}, {WireKey::name, name}, {WireKey::type, type}}};
}

RemoteTaskDescription list()
{
    return {RemoteTaskDescription::GetList, QString(), {}};
}

} // namespace Descriptions
