#include "busmessage.h"

#include <QJsonObject>

#include <dbus/dbus.h>

namespace
{
constexpr int deepest = 64;

template <typename Value>
Value basic(DBusMessageIter *iterator)
{
    Value value{};
    dbus_message_iter_get_basic(iterator, &value);
    return value;
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// Larger numbers than JSON's are exact as strings only.
QJsonValue number(qint64 value)
{
    constexpr qint64 largest = 1LL << 53;
    return value > -largest && value < largest ? QJsonValue(value) : QJsonValue(QString::number(value));
}

QJsonValue unsignedNumber(quint64 value)
{
    constexpr quint64 largest = 1ULL << 53;
    return value < largest ? QJsonValue(static_cast<qint64>(value)) : QJsonValue(QString::number(value));
}

// NOLINTBEGIN(misc-no-recursion): values nest, and no deeper than the bus lets them.
QJsonValue valueAt(DBusMessageIter *iterator, int depth);

QJsonArray listAt(DBusMessageIter *iterator, int depth)
{
    DBusMessageIter inner;
    dbus_message_iter_recurse(iterator, &inner);
    QJsonArray list;
    for (; dbus_message_iter_get_arg_type(&inner) != DBUS_TYPE_INVALID; dbus_message_iter_next(&inner)) {
        list.append(valueAt(&inner, depth + 1));
    }
    return list;
}

QJsonObject mapAt(DBusMessageIter *iterator, int depth)
{
    DBusMessageIter entries;
    dbus_message_iter_recurse(iterator, &entries);
    QJsonObject map;
    for (; dbus_message_iter_get_arg_type(&entries) != DBUS_TYPE_INVALID; dbus_message_iter_next(&entries)) {
        const QJsonArray pair = listAt(&entries, depth + 1);
        map.insert(pair.at(0).toVariant().toString(), pair.at(1));
    }
    return map;
}

QJsonValue arrayAt(DBusMessageIter *iterator, int depth)
{
    switch (dbus_message_iter_get_element_type(iterator)) {
    case DBUS_TYPE_DICT_ENTRY:
        return mapAt(iterator, depth);
    case DBUS_TYPE_BYTE: {
        DBusMessageIter bytes;
        const char *data = nullptr;
        int size = 0;
        dbus_message_iter_recurse(iterator, &bytes);
        dbus_message_iter_get_fixed_array(&bytes, static_cast<void *>(&data), &size);
        return QString::fromLatin1(QByteArray(data, size).toHex());
    }
    default:
        return listAt(iterator, depth);
    }
}

QJsonValue plainValueAt(DBusMessageIter *iterator)
{
    switch (dbus_message_iter_get_arg_type(iterator)) {
    case DBUS_TYPE_STRING:
    case DBUS_TYPE_OBJECT_PATH:
    case DBUS_TYPE_SIGNATURE:
        return text(basic<const char *>(iterator));
    case DBUS_TYPE_BOOLEAN:
        return basic<dbus_bool_t>(iterator) != 0;
    case DBUS_TYPE_DOUBLE:
        return basic<double>(iterator);
    case DBUS_TYPE_BYTE:
        return basic<quint8>(iterator);
    case DBUS_TYPE_INT16:
        return basic<qint16>(iterator);
    case DBUS_TYPE_UINT16:
        return basic<quint16>(iterator);
    case DBUS_TYPE_INT32:
        return basic<qint32>(iterator);
    case DBUS_TYPE_UINT32:
        return number(basic<quint32>(iterator));
    case DBUS_TYPE_INT64:
        return number(basic<dbus_int64_t>(iterator));
    case DBUS_TYPE_UINT64:
        return unsignedNumber(basic<dbus_uint64_t>(iterator));
    default:
        return QStringLiteral("(a file descriptor)");
    }
}

QJsonValue valueAt(DBusMessageIter *iterator, int depth)
{
    if (depth > deepest) {
        return QStringLiteral("...");
    }
    switch (dbus_message_iter_get_arg_type(iterator)) {
    case DBUS_TYPE_ARRAY:
        return arrayAt(iterator, depth);
    case DBUS_TYPE_VARIANT:
        return listAt(iterator, depth).at(0);
    case DBUS_TYPE_STRUCT:
    case DBUS_TYPE_DICT_ENTRY:
        return listAt(iterator, depth);
    default:
        return plainValueAt(iterator);
    }
}
// NOLINTEND(misc-no-recursion)

BusMessage::Type typeOf(DBusMessage *message)
{
    switch (dbus_message_get_type(message)) {
    case DBUS_MESSAGE_TYPE_METHOD_CALL:
        return BusMessage::Type::Call;
    case DBUS_MESSAGE_TYPE_METHOD_RETURN:
        return BusMessage::Type::Answer;
    case DBUS_MESSAGE_TYPE_ERROR:
        return BusMessage::Type::Error;
    default:
        return BusMessage::Type::Signal;
    }
}
} // namespace

BusMessage BusMessage::read(DBusMessage *message)
{
    BusMessage result;
    result.type = typeOf(message);
    result.sender = text(dbus_message_get_sender(message));
    result.destination = text(dbus_message_get_destination(message));
    result.path = text(dbus_message_get_path(message));
    result.interface = text(dbus_message_get_interface(message));
    result.member = text(dbus_message_get_member(message));
    result.errorName = text(dbus_message_get_error_name(message));
    result.serial = dbus_message_get_serial(message);
    result.replySerial = dbus_message_get_reply_serial(message);
    result.isAnswerWanted = dbus_message_get_no_reply(message) == 0;
    DBusMessageIter iterator;
    if (dbus_message_iter_init(message, &iterator) != 0) {
        for (; dbus_message_iter_get_arg_type(&iterator) != DBUS_TYPE_INVALID;
             dbus_message_iter_next(&iterator)) {
            result.arguments.append(valueAt(&iterator, 0));
        }
    }
    return result;
}
