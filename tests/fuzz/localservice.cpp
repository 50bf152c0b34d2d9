#include "localservice.h"

#include <QDBusMessage>

bool LocalService::start()
{
    return bus.startAsSystemBus() &&
           QDBusConnection::systemBus().registerVirtualObject(QStringLiteral("/"), this);
}

QDBusArgument LocalService::carry(const QVariantMap &map)
{
    const QDBusConnection connection = QDBusConnection::systemBus();
    QDBusMessage call = QDBusMessage::createMethodCall(connection.baseService(), QStringLiteral("/"),
                                                       QStringLiteral("a.b"), QStringLiteral("carry"));
    call << QVariant(map);
    arrived = QDBusArgument();
    connection.call(call);
    return arrived;
}

QString LocalService::introspect(const QString & /*path*/) const
{
    return {};
}

bool LocalService::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    arrived = message.arguments().value(0).value<QDBusArgument>();
    return connection.send(message.createReply());
}
