#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <vector>

class QDBusArgument;

/// A value that a program may put into a map, and what of it reaches the service, in the words of
/// described(); empty when it is left out.
struct AwkwardValue {
    const char *name;
    QVariant value;
    QByteArray arrives;
};

/// Where in a map the value stands.
enum class Position { Top, InMap, InList };
QVariantMap placed(const QVariant &value, Position position);

/// What a service must send for the values below to have something received among them.
QVariantMap receivedMap();
/// As much nesting as a proxy lets through at the top of a map.
QVariantMap receivedNests();
/// @p received is what came of receivedMap(); where only the names are asked for, it may be empty.
std::vector<AwkwardValue> awkwardValues(const QVariantMap &received);

/// @p argument as a value. An argument that is destroyed within a container leaks in the bus library; so a
/// copy of this one stays until the end.
QVariant kept(const QDBusArgument &argument);

/// Maps, lists, structures of one variant, or variants of @p levels, one in the other, around the number 7 or
/// what is given.
QVariant nestedMaps(int levels);
QVariant nestedLists(int levels, const QVariant &innermost = 7);
QVariant nestedStructures(int levels);
QVariant nestedVariants(int levels);
