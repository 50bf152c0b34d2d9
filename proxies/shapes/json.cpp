#include "shapes/json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <cmath>
#include <limits>
#include <optional>

namespace
{

std::optional<QJsonValue> toJson(const QVariant &value);

std::optional<QJsonValue> listToJson(const QVariantList &list)
{
    QJsonArray array;
    for (const QVariant &element : list) {
        const std::optional<QJsonValue> json = toJson(element);
        if (!json) {
            return {};
        }
        array.append(*json);
    }
    return array;
}

std::optional<QJsonValue> mapToJson(const QVariantMap &map)
{
    QJsonObject object;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        const std::optional<QJsonValue> json = toJson(entry.value());
        if (!json) {
            return {};
        }
        object.insert(entry.key(), *json);
    }
    return object;
}

std::optional<QJsonValue> numberToJson(double number) { return std::isfinite(number) ? std::optional<QJsonValue>(number) : std::nullopt; }

// JSON's exact integers end at 2^63-1 here; what is larger keeps its first 53 bits.
QJsonValue unsignedToJson(qulonglong number)
{
    constexpr auto largest = qulonglong(std::numeric_limits<qlonglong>::max());
    return number <= largest ? QJsonValue(qlonglong(number)) : QJsonValue(double(number));
}

// Written out, because the document class stores what it cannot carry as null and does not say so.
std::optional<QJsonValue> toJson(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return QJsonValue(QJsonValue::Null);
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return listToJson(value.toList());
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return mapToJson(value.toMap());
    case QMetaType::Double:
    case QMetaType::Float:
        return numberToJson(value.toDouble());
    case QMetaType::ULongLong:
        return unsignedToJson(value.toULongLong());
    default:
        break;
    }
    if (value.canConvert<qlonglong>()) {
        return QJsonValue(value.toLongLong());
    }
    if (value.canConvert<QString>()) {
        return value.toString();
    }
    return {};
}

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
    const std::optional<QJsonValue> json = toJson(value);
    if (ok) {
        *ok = json.has_value();
    }
    if (!json) {
        return {};
    }
    const QByteArray text = QJsonDocument(QJsonArray{*json}).toJson(QJsonDocument::Compact);
    return text.mid(1, text.size() - 2);
}
