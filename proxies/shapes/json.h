#pragma once

#include <QByteArray>
#include <QVariant>

/// JSON text as the device services exchange it in byte arrays. Integers up to 2^63-1 are exact.
namespace VorletProxiesPrivate::Json
{

/// How many objects and arrays may lie in one another: as many as parse() reads.
constexpr int deepestNesting = 1023;

/// Any JSON value, objects as QVariantMap, arrays as QVariantList; invalid when @p text is no JSON.
QVariant parse(const QByteArray &text);

/// @p value as compact JSON text, also where it is no map or list: anything with keys and values as an object, any
/// sequence as an array, JSON values by what they stand for, invalid and null ones as null, an enumerator as its number,
/// a byte array as the string that it holds in UTF-8, and every other value as its string. Empty, with false in @p ok,
/// when it holds what JSON cannot carry: a number that is not finite, a type without a string form, too much nesting.
QByteArray write(const QVariant &value, bool *ok = nullptr);

} // namespace VorletProxiesPrivate::Json
