#pragma once

#include <QVariant>

/// What a proxy may send. The bus library ends the process when an argument holds what D-Bus cannot carry, and the
/// bus ends the connection when an argument nests too deeply; everything that is a map passes here first.
namespace VorletProxiesPrivate::Argument
{

/// How many containers may lie in one another. Each array, map entry, structure and variant is one, so that a map
/// of variants counts three. The protocol's own limit is 64; the rest is for a service that passes the value on
/// inside a map of its own.
constexpr int deepestNesting = 60;

/// @p map with every value in a form that D-Bus carries; what needs no change is sent as it always was.
/// - JSON and CBOR values are sent by what they stand for, maps and lists of any type that D-Bus does not know as
///   maps and lists of variants, float as double, enumerators and long as 64-bit integers, and every other value that
///   has a string form, such as a QUrl, as that string.
/// - Left out are invalid and null values, unfinished arguments, values that nest too deeply, and values of other
///   types. So are empty object paths and signatures and closed descriptors, and with them a whole map or list of a
///   type that D-Bus knows when one lies in it.
/// - Left out is also a registered type of the program's own that writes variants, object paths, signatures or
///   descriptors, because nothing can be known of what it will write. Written into a QDBusArgument, object paths and
///   the like are sent, variants are not.
QVariantMap map(const QVariantMap &map);

} // namespace VorletProxiesPrivate::Argument
