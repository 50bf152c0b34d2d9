#include "serviceobject.h"

#include "busservice.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTimer>

ServiceObject::ServiceObject(BusService &owner)
    : service(owner)
{
}

ServiceObject::~ServiceObject()
{
    for (const auto &held : heldCalls) {
        held.second.connection.send(
            held.second.call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
                                              QStringLiteral("The service went without an answer")));
    }
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
    const QDBusMessage answer = reply->errorName.isEmpty()
                                    ? message.createReply(reply->values)
                                    : message.createErrorReply(reply->errorName, reply->errorText);
    if (reply->delayMs > 0) {
        hold(message, connection, answer, reply->delayMs);
    } else {
        connection.send(answer);
    }
    return true;
}

void ServiceObject::hold(const QDBusMessage &call, const QDBusConnection &connection,
                         const QDBusMessage &answer, int delayMs)
{
    const int number = ++callsHeld;
    heldCalls.insert({number, {call, connection}});
    QTimer::singleShot(delayMs, this, [this, number, answer] {
        heldCalls.at(number).connection.send(answer);
        heldCalls.erase(number);
    });
}
