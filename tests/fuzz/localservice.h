#pragma once

#include "privatebus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVirtualObject>

/// A service on the program's own connection. A call of it passes the bus library's real writer and reader,
/// which end the process over what D-Bus does not carry, but no socket and no other thread: tens of thousands
/// fit in a second. The bus behind it only gives the connection its name.
class LocalService : public QDBusVirtualObject
{
    Q_OBJECT

public:
    /// Starts the bus and stands on it; false when it cannot be started.
    bool start();
    /// Sends @p map as the argument of a call, and returns what arrived. Empty when the call failed.
    QDBusArgument carry(const QVariantMap &map);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    PrivateBus bus;
    QDBusArgument arrived;
};
