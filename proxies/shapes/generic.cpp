#include "shapes/generic.h"

#include <QCborValue>
#include <QJsonDocument>
#include <QJsonValue>
#include <QMetaType>

namespace VorletProxiesPrivate
{

QVariant Generic::unwrapped(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QJsonValue:
        return value.toJsonValue().toVariant();
    case QMetaType::QJsonDocument:
        return value.toJsonDocument().toVariant();
    case QMetaType::QCborValue:
        return value.value<QCborValue>().toVariant();
    case QMetaType::QChar:
    case QMetaType::Char:
        return value.toString();
    default:
        break;
    }
    const bool isEnumerator = QMetaType(value.userType()).flags().testFlag(QMetaType::IsEnumeration);
    return isEnumerator ? QVariant(value.toLongLong()) : value;
}

bool Generic::isNothing(const QVariant &value) { return !value.isValid() || value.userType() == QMetaType::Nullptr; }

std::optional<QVariantMap> Generic::asMap(const QVariant &value)
{
    // value(), unlike toMap(), takes maps of one type too.
    return value.canConvert<QVariantMap>() ? std::optional(value.value<QVariantMap>()) : std::nullopt;
}

std::optional<QVariantList> Generic::asList(const QVariant &value)
{
    const bool isText = value.userType() == QMetaType::QString || value.userType() == QMetaType::QByteArray;
    return !isText && value.canConvert<QVariantList>() ? std::optional(value.value<QVariantList>()) : std::nullopt;
}

} // namespace VorletProxiesPrivate
