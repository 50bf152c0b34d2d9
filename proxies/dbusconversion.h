#pragma once

#include <QDBusArgument>
#include <QVariant>

/// Readers of what the device services send: nested D-Bus containers become plain maps and lists. Maps are
/// a{sv} and arrays av on the wire; a container of other types is read element by element all the same. The
/// argument handed over stays readable. Use them from the thread that owns the proxy.
///
/// There are two families. convertDBusArgument() and convertDBusVariant() keep an array inside an array
/// nested; parseDBusMap() and parseDBusList() flatten it into the outer one, and their users rely on that.

/// A QVariantMap for a map, a QVariantList for an array; otherwise invalid, with a debug line.
QVariant convertDBusArgument(const QDBusArgument &argument);

/// @p value with every container in it decoded and an object path turned into its string. String lists, byte
/// arrays and basic values come back as they are.
QVariant convertDBusVariant(const QVariant &value);

/// The entries of a map; empty, with a debug line, when @p argument holds none. A structure stays undecoded.
QVariantMap parseDBusMap(const QDBusArgument &argument);

/// The elements of an array; empty, with a debug line, when @p argument holds none. A structure stays undecoded.
QVariantList parseDBusList(const QDBusArgument &argument);

/// The entries of a map exactly as they were received, nothing inside them decoded; empty, without a line,
/// when @p argument holds no map.
QVariantMap readDBusEntries(const QDBusArgument &argument);

/// Makes QVariantMap (a{sv}) and QVariantList (av) known to the bus library as arguments. Repeating it is harmless.
void registerDBusContainers();
