#pragma once

#include <QDBusInterface>

namespace VorletProxiesPrivate
{

/// Attaches @p slot, written with SLOT(), to the bus signal @p name of the proxy's service, object and
/// interface. The slot's arguments must match the signal's. False when the connection refuses.
bool subscribe(const QDBusInterface &proxy, const QString &name, QObject *receiver, const char *slot);

/// Takes back subscribe() with the same arguments; false when there was no such subscription.
bool unsubscribe(const QDBusInterface &proxy, const QString &name, QObject *receiver, const char *slot);

} // namespace VorletProxiesPrivate
