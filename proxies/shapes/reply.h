#pragma once

#include <QDBusMessage>
#include <QStringList>
#include <QVariant>

#include <type_traits>

/// What a proxy's getter makes of a reply. An error, a reply without arguments and a call that does not wait
/// for its reply all give the empty value of the result; a reply of another type gives what QVariant's own
/// conversion gives.
namespace VorletProxiesPrivate::Reply
{

/// The reply's first argument; invalid for an error and for a reply without arguments.
QVariant argument(const QDBusMessage &reply);

/// The first argument as a QString, bool, int, qlonglong, double, float or QStringList.
template <typename T>
T value(const QDBusMessage &reply)
{
    const QVariant first = argument(reply);
    if constexpr (std::is_same_v<T, QString>) {
        return first.toString();
    } else if constexpr (std::is_same_v<T, bool>) {
        return first.toBool();
    } else if constexpr (std::is_same_v<T, int>) {
        return first.toInt();
    } else if constexpr (std::is_same_v<T, qlonglong>) {
        return first.toLongLong();
    } else if constexpr (std::is_same_v<T, double>) {
        return first.toDouble();
    } else if constexpr (std::is_same_v<T, float>) {
        return first.toFloat();
    } else {
        static_assert(std::is_same_v<T, QStringList>, "no getter returns this type");
        return first.toStringList();
    }
}

/// Writes @p text and the error's message in double quotes to the debug channel when @p reply is an error,
/// and hands the reply on.
QDBusMessage logged(const QDBusMessage &reply, const char *text);

/// The JSON text in the first argument, parsed; empty when it is no JSON. A basic value of another type is
/// parsed in its string form.
QVariant json(const QDBusMessage &reply);
QVariantMap jsonMap(const QDBusMessage &reply);
/// As jsonMap(), every number in the object itself as a qlonglong.
QVariantMap jsonIntegerMap(const QDBusMessage &reply);
QVariantList jsonList(const QDBusMessage &reply);

/// The first argument read with parseDBusMap() and parseDBusList().
QVariantMap map(const QDBusMessage &reply);
QVariantList list(const QDBusMessage &reply);

/// The first argument read with convertDBusVariant().
QVariant converted(const QDBusMessage &reply);
QVariantList convertedList(const QDBusMessage &reply);

/// The first argument read with readDBusEntries().
QVariantMap entries(const QDBusMessage &reply);

} // namespace VorletProxiesPrivate::Reply
