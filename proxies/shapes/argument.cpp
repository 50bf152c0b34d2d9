#include "shapes/argument.h"

#include "shapes/generic.h"

#include <QAssociativeIterable>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>

#include <algorithm>

namespace VorletProxiesPrivate
{

namespace
{

// How many containers stand around what lies directly in one.
constexpr int mapContainers = 3;  // array, entry, variant
constexpr int listContainers = 2; // array, variant

bool isA(const QVariant &value, int typeId) { return value.userType() == typeId; }

// Qt 5 names a type by its number, Qt 6 by an object made from that number.
template <typename Id>
QByteArray signatureOf(const char *(*typeToSignature)(Id), int typeId)
{
    return typeToSignature(Id(typeId));
}

// The D-Bus type that the bus library sends @p value as; empty when it knows none.
QByteArray signatureOf(const QVariant &value) { return signatureOf(&QDBusMetaType::typeToSignature, value.userType()); }

// At least as many containers as lie in one another in a value of this type, which holds no variant.
int containersIn(const QByteArray &signature) { return int(signature.count('a') + signature.count('(') + signature.count('{')); }

// Whether the signature is one type and no more.
bool isSingleType(const QByteArray &signature)
{
    int open = 0;
    for (int i = 0; i < signature.size(); ++i) {
        const char letter = signature.at(i);
        open += (letter == '(' || letter == '{' ? 1 : 0) - (letter == ')' || letter == '}' ? 1 : 0);
        if (open == 0 && letter != 'a') {
            return i + 1 == signature.size();
        }
    }
    return false;
}

// NOLINTBEGIN(misc-no-recursion): values nest.

int nestingOf(const QDBusArgument &argument);

int nestingOf(const QVariant &value)
{
    if (isA(value, qMetaTypeId<QDBusVariant>())) {
        return 1 + nestingOf(value.value<QDBusVariant>().variant());
    }
    return isA(value, qMetaTypeId<QDBusArgument>()) ? nestingOf(value.value<QDBusArgument>()) : containersIn(signatureOf(value));
}

int nestingOfElements(const QDBusArgument &reader)
{
    int deepest = 0;
    while (!reader.atEnd()) {
        deepest = std::max(deepest, nestingOf(reader.asVariant()));
    }
    return deepest;
}

int nestingOfEntries(const QDBusArgument &reader)
{
    int deepest = 0; // an empty map is an array without an entry
    while (!reader.atEnd()) {
        reader.beginMapEntry();
        deepest = std::max(deepest, 1 + nestingOfElements(reader));
        reader.endMapEntry();
    }
    return deepest;
}

// How many containers lie in one another in a received value.
int nestingOf(const QDBusArgument &argument)
{
    // A copy, so that the caller's argument keeps its place; reading moves it on though it is const. Only asVariant()
    // would move both. Each container is left again, because an argument abandoned inside one leaks.
    const QDBusArgument reader = argument; // NOLINT(performance-unnecessary-copy-initialization)
    int nesting = 0;
    QDBusVariant variant;
    switch (reader.currentType()) {
    case QDBusArgument::MapType:
        reader.beginMap();
        nesting = 1 + nestingOfEntries(reader);
        reader.endMap();
        break;
    case QDBusArgument::ArrayType:
        reader.beginArray();
        nesting = 1 + nestingOfElements(reader);
        reader.endArray();
        break;
    case QDBusArgument::StructureType:
        reader.beginStructure();
        nesting = 1 + nestingOfElements(reader);
        reader.endStructure();
        break;
    case QDBusArgument::VariantType:
        reader >> variant;
        nesting = 1 + nestingOf(variant.variant());
        break;
    default:
        break;
    }
    return nesting;
}

bool fits(const QDBusArgument &argument, int room)
{
    switch (argument.currentType()) {
    case QDBusArgument::MapEntryType:
        return false; // a map that is being read; an entry is no value
    case QDBusArgument::UnknownType:
        break;
    default:
        return nestingOf(argument) <= room;
    }
    // Written by the program, and not to be read back: only its type can be judged.
    const QByteArray signature = argument.currentSignature().toLatin1();
    return isSingleType(signature) && !signature.contains('v') && containersIn(signature) <= room;
}

// What the bus library refuses when it is empty or closed: path, signature, descriptor.
bool isRefusedWhenEmpty(const QByteArray &signature) { return signature.contains('o') || signature.contains('g') || signature.contains('h'); }

bool mayHoldEmptyOne(const QVariant &value);

bool mayHoldEmptyOne(const QAssociativeIterable &map)
{
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        if (mayHoldEmptyOne(entry.key()) || mayHoldEmptyOne(entry.value())) {
            return true;
        }
    }
    return false;
}

// Whether a value of a type that holds no variant contains an empty path or signature or a closed descriptor, or may
// contain one unseen. The bus library drops the whole call for one in a list, and ends the process for one in a map or
// a structure.
bool mayHoldEmptyOne(const QVariant &value)
{
    if (isA(value, qMetaTypeId<QDBusObjectPath>())) {
        return value.value<QDBusObjectPath>().path().isEmpty();
    }
    if (isA(value, qMetaTypeId<QDBusSignature>())) {
        return value.value<QDBusSignature>().signature().isEmpty();
    }
    if (isA(value, qMetaTypeId<QDBusUnixFileDescriptor>())) {
        return !value.value<QDBusUnixFileDescriptor>().isValid();
    }
    if (!isRefusedWhenEmpty(signatureOf(value))) {
        return false;
    }
    if (value.canConvert<QVariantMap>()) {
        return mayHoldEmptyOne(value.value<QAssociativeIterable>());
    }
    const std::optional<QVariantList> list = Generic::asList(value);
    // What is no container is of the program's own, and only its writer knows what it will write.
    return !list || std::any_of(list->cbegin(), list->cend(), [](const QVariant &each) { return mayHoldEmptyOne(each); });
}

QVariant carried(const QVariant &original, int room);

QVariantMap carriedMap(const QVariantMap &map, int room)
{
    QVariantMap result;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        const QVariant value = carried(entry.value(), room - mapContainers);
        if (value.isValid()) {
            result.insert(entry.key(), value);
        }
    }
    return result;
}

QVariantList carriedList(const QVariantList &list, int room)
{
    QVariantList result;
    for (const QVariant &element : list) {
        const QVariant value = carried(element, room - listContainers);
        if (value.isValid()) {
            result.append(value);
        }
    }
    return result;
}

QVariant carriedVariant(const QDBusVariant &variant, int room)
{
    const QVariant value = carried(variant.variant(), room - 1);
    return value.isValid() ? QVariant::fromValue(QDBusVariant(value)) : QVariant();
}

// A single value of a type that the bus library does not know.
QVariant carriedScalar(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Float:
        return value.toDouble();
    case QMetaType::SChar:
        return value.toInt();
    case QMetaType::Long:
        return value.toLongLong();
    case QMetaType::ULong:
        return value.toULongLong();
    default:
        return value.canConvert<QString>() ? QVariant(value.toString()) : QVariant();
    }
}

// The form of a value that D-Bus carries with at most @p room containers in one another; invalid when there is none.
QVariant carried(const QVariant &original, int room)
{
    const QVariant value = Generic::unwrapped(original);
    if (room < 0 || Generic::isNothing(value)) {
        return {};
    }
    if (isA(value, qMetaTypeId<QDBusArgument>())) {
        return fits(value.value<QDBusArgument>(), room) ? value : QVariant();
    }
    if (isA(value, qMetaTypeId<QDBusVariant>())) {
        return carriedVariant(value.value<QDBusVariant>(), room);
    }
    const QByteArray signature = signatureOf(value);
    if (!signature.isEmpty() && !signature.contains('v')) {
        return containersIn(signature) <= room && !mayHoldEmptyOne(value) ? value : QVariant();
    }
    if (const std::optional<QVariantMap> map = Generic::asMap(value)) {
        return room > 0 ? QVariant(carriedMap(*map, room)) : QVariant();
    }
    if (const std::optional<QVariantList> list = Generic::asList(value)) {
        return room > 0 ? QVariant(carriedList(*list, room)) : QVariant();
    }
    return signature.isEmpty() ? carriedScalar(value) : QVariant();
}

// NOLINTEND(misc-no-recursion)

} // namespace

QVariantMap Argument::map(const QVariantMap &map) { return carriedMap(map, deepestNesting); }

} // namespace VorletProxiesPrivate
