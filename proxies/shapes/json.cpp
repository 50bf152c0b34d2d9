#include "shapes/json.h"

#include "shapes/generic.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <cmath>
#include <optional>

namespace VorletProxiesPrivate
{

namespace
{

// A string or a number that is no integer, as the document class writes it.
QByteArray scalarToText(const QJsonValue &value)
{
    const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return text.mid(1, text.size() - 2);
}

std::optional<QByteArray> realToText(double number) { return std::isfinite(number) ? std::optional(scalarToText(number)) : std::nullopt; }

// Integers are written out, because Qt 5 rounds those beyond 2^53. The size of a byte array is named, because Qt 5
// would read it up to its first zero byte.
std::optional<QByteArray> basicToText(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
        return value.toBool() ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return scalarToText(QString::fromUtf8(bytes.constData(), bytes.size()));
    }
    case QMetaType::Double:
    case QMetaType::Float:
        return realToText(value.toDouble());
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return QByteArray::number(value.toULongLong());
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return QByteArray::number(value.toLongLong());
    default:
        return value.canConvert<QString>() ? std::optional(scalarToText(value.toString())) : std::nullopt;
    }
}

// NOLINTBEGIN(misc-no-recursion): values nest.

std::optional<QByteArray> toText(const QVariant &original, int room);

std::optional<QByteArray> listToText(const QVariantList &list, int room)
{
    QByteArray text;
    for (const QVariant &element : list) {
        const std::optional<QByteArray> written = toText(element, room - 1);
        if (!written) {
            return {};
        }
        text += (text.isEmpty() ? "" : ",") + *written;
    }
    return '[' + text + ']';
}

std::optional<QByteArray> mapToText(const QVariantMap &map, int room)
{
    QByteArray text;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        const std::optional<QByteArray> written = toText(entry.value(), room - 1);
        if (!written) {
            return {};
        }
        text += (text.isEmpty() ? "" : ",") + scalarToText(entry.key()) + ':' + *written;
    }
    return '{' + text + '}';
}

// Written here, because the document class stores what it cannot carry as null without a word.
std::optional<QByteArray> toText(const QVariant &original, int room)
{
    const QVariant value = Generic::unwrapped(original);
    if (Generic::isNothing(value)) {
        return QByteArrayLiteral("null");
    }
    if (const std::optional<QVariantMap> map = Generic::asMap(value)) {
        return room > 0 ? mapToText(*map, room) : std::nullopt;
    }
    if (const std::optional<QVariantList> list = Generic::asList(value)) {
        return room > 0 ? listToText(*list, room) : std::nullopt;
    }
    return basicToText(value);
}

// NOLINTEND(misc-no-recursion)

} // namespace

QVariant Json::parse(const QByteArray &text)
{
    // Inside an array, because the document class takes no number or string on its own.
    const QJsonDocument document = QJsonDocument::fromJson('[' + text + ']');
    const QJsonArray values = document.array();
    return values.size() == 1 ? values.first().toVariant() : QVariant();
}

QByteArray Json::write(const QVariant &value, bool *ok)
{
    const std::optional<QByteArray> text = toText(value, Json::deepestNesting);
    if (ok) {
        *ok = text.has_value();
    }
    return text.value_or(QByteArray());
}

} // namespace VorletProxiesPrivate
