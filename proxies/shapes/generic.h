#pragma once

#include <QByteArray>
#include <QVariant>

#include <optional>

/// What a value is, whichever class holds it and whichever Qt is asked.
namespace VorletProxiesPrivate::Generic
{

/// @p value without the class that holds it: what a JSON or CBOR value stands for, an enumerator's number, a
/// character's string. Every other value comes back as it is.
QVariant unwrapped(const QVariant &value);

/// Whether @p value is invalid or a null pointer; a null string is a string.
bool isNothing(const QVariant &value);

/// The entries of anything that has keys and values; the keys as strings.
std::optional<QVariantMap> asMap(const QVariant &value);

/// The elements of any sequence. A string and a byte array are no sequences here, though Qt 6 offers to convert them.
std::optional<QVariantList> asList(const QVariant &value);

} // namespace VorletProxiesPrivate::Generic
