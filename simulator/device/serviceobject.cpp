#include "serviceobject.h"

#include "busservice.h"

#include <QDBusConnection>
#include <QDBusMessage>

ServiceObject::ServiceObject(BusService &owner)
    : service(owner)
{
}

QString ServiceObject::introspect(const QString &path) const
{
    return service.introspection(path);
}

bool ServiceObject::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (message.interface().startsWith(QStringLiteral("org.freedesktop.DBus."))) {
        return false;
    }
    const bool takesNoArguments = message.arguments().isEmpty();
    const std::optional<BusService::Reply> reply =
        takesNoArguments ? service.answerFor(message.path(), message.interface(), message.member())
                         : std::nullopt;
    if (!reply) {
        // A strict service: what it does not have, arguments it does not take included, is refused.
        connection.send(message.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"),
                                                 QStringLiteral("No such method '%1' in interface '%2'")
                                                     .arg(message.member(), message.interface())));
        return true;
    }
    if (reply->errorName.isEmpty()) {
        connection.send(message.createReply(reply->values));
    } else {
        connection.send(message.createErrorReply(reply->errorName, reply->errorText));
    }
    return true;
}
