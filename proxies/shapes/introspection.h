#pragma once

#include <QDBusConnection>
#include <QString>

namespace VorletProxiesPrivate
{

/// Gives @p connection back after telling it that @p interface has no members to ask the service for.
///
/// QDBusInterface's constructor introspects the remote object unless its connection knows the interface
/// already. That call starts an absent service and waits for one that hangs, and a proxy needs none of its
/// answer: it names its members itself. Only where one object of the program stands for every path of the
/// connection does the constructor ask as it always did. A plain QDBusInterface made later for the same interface
/// on the same connection finds no members either. One thread at a time for a connection, as for the proxies.
const QDBusConnection &withoutIntrospection(const QDBusConnection &connection, const QString &interface);

} // namespace VorletProxiesPrivate
