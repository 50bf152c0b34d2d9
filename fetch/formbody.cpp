#include "formbody.h"

#include <QStringList>

bool isNullValue(const QVariant &value)
{
    if (!value.isValid() || value.isNull()) {
        return true;
    }
    // Qt 6 no longer counts a null string or byte array in a variant as a null variant.
    if (value.userType() == QMetaType::QString) {
        return value.toString().isNull();
    }
    return value.userType() == QMetaType::QByteArray && value.toByteArray().isNull();
}

QByteArray requestBody(const QVariantMap &parameters, const QByteArray &rawBody)
{
    if (!rawBody.isEmpty()) {
        return QString::fromLatin1(rawBody.constData()).toUtf8();
    }
    QStringList pairs;
    for (auto parameter = parameters.cbegin(); parameter != parameters.cend(); ++parameter) {
        if (!parameter.key().isEmpty() && !isNullValue(parameter.value())) {
            pairs.append(parameter.key() + QLatin1Char('=') + parameter.value().toString());
        }
    }
    return pairs.join(QLatin1Char('&')).toUtf8();
}
