#include "shapes/subscription.h"

namespace VorletProxiesPrivate
{

bool subscribe(const QDBusInterface &proxy, const QString &name, QObject *receiver, const char *slot)
{
    return proxy.connection().connect(proxy.service(), proxy.path(), proxy.interface(), name, receiver, slot);
}

bool unsubscribe(const QDBusInterface &proxy, const QString &name, QObject *receiver, const char *slot)
{
    return proxy.connection().disconnect(proxy.service(), proxy.path(), proxy.interface(), name, receiver, slot);
}

} // namespace VorletProxiesPrivate
