#include "shapes/reply.h"

#include "dbusconversion.h"
#include "shapes/generic.h"
#include "shapes/json.h"

#include <QDebug>

namespace VorletProxiesPrivate
{

namespace
{

// Applies a reader to the first argument; without one there is nothing to read and nothing to complain of.
template <typename Result>
Result read(const QDBusMessage &reply, Result (*reader)(const QDBusArgument &))
{
    const QVariant first = Reply::argument(reply);
    return first.isValid() ? reader(first.value<QDBusArgument>()) : Result();
}

} // namespace

QVariant Reply::argument(const QDBusMessage &reply) { return reply.type() == QDBusMessage::ErrorMessage ? QVariant() : reply.arguments().value(0); }

QDBusMessage Reply::logged(const QDBusMessage &reply, const char *text)
{
    if (reply.type() == QDBusMessage::ErrorMessage) {
        // The stream puts the space between the two and the quotes around the message.
        qDebug() << text << reply.errorMessage();
    }
    return reply;
}

QVariant Reply::json(const QDBusMessage &reply) { return Json::parse(argument(reply).toByteArray()); }

QVariantMap Reply::jsonMap(const QDBusMessage &reply) { return json(reply).toMap(); }

QVariantMap Reply::jsonIntegerMap(const QDBusMessage &reply)
{
    QVariantMap map = jsonMap(reply);
    for (QVariant &value : map) {
        if (value.userType() == QMetaType::Double) {
            value = value.toLongLong();
        }
    }
    return map;
}

QVariantList Reply::jsonList(const QDBusMessage &reply) { return Generic::asList(json(reply)).value_or(QVariantList()); }

QVariantMap Reply::map(const QDBusMessage &reply) { return read(reply, parseDBusMap); }

QVariantList Reply::list(const QDBusMessage &reply) { return read(reply, parseDBusList); }

QVariant Reply::converted(const QDBusMessage &reply) { return convertDBusVariant(argument(reply)); }

QVariantList Reply::convertedList(const QDBusMessage &reply) { return Generic::asList(converted(reply)).value_or(QVariantList()); }

QVariantMap Reply::entries(const QDBusMessage &reply) { return read(reply, readDBusEntries); }

} // namespace VorletProxiesPrivate
