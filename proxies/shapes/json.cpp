#include "shapes/json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <cmath>
#include <optional>

namespace
{

// NOLINTBEGIN(misc-no-recursion): values nest.

std::optional<QByteArray> toText(const QVariant &value);

// A text or a number that is no integer, as the document class writes it.
QByteArray scalarToText(const QJsonValue &value)
{
    const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return text.mid(1, text.size() - 2);
}

std::optional<QByteArray> listToText(const QVariantList &list)
{
    QByteArray text;
    for (const QVariant &element : list) {
        const std::optional<QByteArray> written = toText(element);
        if (!written) {
            return {};
        }
        text += (text.isEmpty() ? "" : ",") + *written;
    }
    return '[' + text + ']';
}

std::optional<QByteArray> mapToText(const QVariantMap &map)
{
    QByteArray text;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        const std::optional<QByteArray> written = toText(entry.value());
        if (!written) {
            return {};
        }
        text += (text.isEmpty() ? "" : ",") + scalarToText(entry.key()) + ':' + *written;
    }
    return '{' + text + '}';
}

std::optional<QByteArray> realToText(double number) { return std::isfinite(number) ? std::optional(scalarToText(number)) : std::nullopt; }

// Written out, because the document class stores what it cannot carry as null without a word, and in Qt 5 it
// rounds integers beyond 2^53.
std::optional<QByteArray> toText(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return QByteArrayLiteral("null");
    case QMetaType::Bool:
        return value.toBool() ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
    case QMetaType::QByteArray:
        return scalarToText(QString::fromUtf8(value.toByteArray()));
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return listToText(value.toList());
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return mapToText(value.toMap());
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
        break;
    }
    return value.canConvert<QString>() ? std::optional(scalarToText(value.toString())) : std::nullopt;
}

// NOLINTEND(misc-no-recursion)

} // namespace

QVariant Json::parse(const QByteArray &text)
{
    // Inside an array, because the document class takes no number or text on its own.
    const QJsonDocument document = QJsonDocument::fromJson('[' + text + ']');
    const QJsonArray values = document.array();
    return values.size() == 1 ? values.first().toVariant() : QVariant();
}

QByteArray Json::write(const QVariant &value, bool *ok)
{
    const std::optional<QByteArray> text = toText(value);
    if (ok) {
        *ok = text.has_value();
    }
    return text.value_or(QByteArray());
}
