#pragma once

#include <QByteArray>
#include <QVariant>

/// JSON text as the device services exchange it in byte arrays. Integers up to 2^63-1 are exact.
namespace Json
{

/// Any JSON value, objects as QVariantMap, arrays as QVariantList; invalid when @p text is no JSON.
QVariant parse(const QByteArray &text);

/// @p value as compact JSON text, also where it is no map or list. Empty, with false in @p ok, when it holds
/// something that JSON cannot carry: a number that is not finite, or a type without a text of its own.
QByteArray write(const QVariant &value, bool *ok = nullptr);

} // namespace Json
