#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

/// Whether a value counts as null in a request: invalid, null, or a null string. An empty string that is not
/// null does not.
bool isNullValue(const QVariant &value);

/// The body of a request in UTF-8. The parameters become name=value pairs joined by "&" in ascending order of
/// their names; nothing is percent-encoded; a pair with an empty name or a null value is left out. A @p
/// rawBody that is not empty takes their place: it is read as 8-bit text and ends at its first zero byte,
/// which is meant.
QByteArray requestBody(const QVariantMap &parameters, const QByteArray &rawBody);
