#include "dbusconversion.h"

#include "shapes/generic.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDebug>

using namespace VorletProxiesPrivate;

namespace
{

bool isA(const QVariant &value, int typeId) { return value.userType() == typeId; }

bool isObjectPath(const QVariant &value) { return isA(value, qMetaTypeId<QDBusObjectPath>()); }

QString pathText(const QVariant &value) { return value.value<QDBusObjectPath>().path(); }

// The next element, taken out of its D-Bus variant. It is read as whatever it is: asking for a variant where
// another type stands would not move the reader on, and its loop would never end.
QVariant nextElement(const QDBusArgument &reader)
{
    const QVariant element = reader.asVariant();
    return isA(element, qMetaTypeId<QDBusVariant>()) ? element.value<QDBusVariant>().variant() : element;
}

// NOLINTBEGIN(misc-no-recursion): values nest.

template <typename Entry>
void forEachEntry(const QDBusArgument &argument, Entry entry)
{
    // A copy, so that the caller's argument keeps its place; reading moves it on though it is const.
    const QDBusArgument reader = argument; // NOLINT(performance-unnecessary-copy-initialization)
    reader.beginMap();
    while (!reader.atEnd()) {
        reader.beginMapEntry();
        const QVariant key = reader.asVariant();
        const QVariant value = nextElement(reader);
        reader.endMapEntry();
        entry(isObjectPath(key) ? pathText(key) : key.toString(), value);
    }
    reader.endMap();
}

template <typename Element>
void forEachElement(const QDBusArgument &argument, Element element)
{
    const QDBusArgument reader = argument; // NOLINT(performance-unnecessary-copy-initialization)
    reader.beginArray();
    while (!reader.atEnd()) {
        element(nextElement(reader));
    }
    reader.endArray();
}

// One value of the flattening family; an array stays a list here, its parent decides what becomes of it.
QVariant parseDBusValue(const QVariant &value)
{
    if (isObjectPath(value)) {
        return pathText(value);
    }
    const auto argument = value.value<QDBusArgument>();
    switch (argument.currentType()) {
    case QDBusArgument::MapType:
        return parseDBusMap(argument);
    case QDBusArgument::ArrayType:
        return parseDBusList(argument);
    default:
        return value;
    }
}

bool isUndecodedArray(const QVariant &value) { return value.value<QDBusArgument>().currentType() == QDBusArgument::ArrayType; }

} // namespace

QVariant convertDBusArgument(const QDBusArgument &argument)
{
    switch (argument.currentType()) {
    case QDBusArgument::MapType: {
        QVariantMap map;
        forEachEntry(argument, [&map](const QString &key, const QVariant &value) { map.insert(key, convertDBusVariant(value)); });
        return map;
    }
    case QDBusArgument::ArrayType: {
        QVariantList list;
        forEachElement(argument, [&list](const QVariant &element) { list.append(convertDBusVariant(element)); });
        // Spelled out: a list made of a list would be that list, not one that holds it.
        return QVariant(list);
    }
    default:
        qDebug() << "DBusNotificationContext: unsupported dbus argument type";
        return {};
    }
}

QVariant convertDBusVariant(const QVariant &value)
{
    if (std::optional<QVariantMap> map = Generic::asMap(value)) {
        for (QVariant &entry : *map) {
            entry = convertDBusVariant(entry);
        }
        return *map;
    }
    if (isA(value, QMetaType::QStringList)) {
        return value;
    }
    if (std::optional<QVariantList> list = Generic::asList(value)) {
        for (QVariant &element : *list) {
            element = convertDBusVariant(element);
        }
        return QVariant(*list);
    }
    if (isA(value, qMetaTypeId<QDBusArgument>())) {
        return convertDBusArgument(value.value<QDBusArgument>());
    }
    if (isObjectPath(value)) {
        return pathText(value);
    }
    return value;
}

QVariantMap parseDBusMap(const QDBusArgument &argument)
{
    QVariantMap map;
    if (argument.currentType() != QDBusArgument::MapType) {
        qDebug() << "WindowManagerDbusGeneralProxy: expected map argument but passed non map";
        return map;
    }
    forEachEntry(argument, [&map](const QString &key, const QVariant &value) { map.insert(key, parseDBusValue(value)); });
    return map;
}

QVariantList parseDBusList(const QDBusArgument &argument)
{
    QVariantList list;
    if (argument.currentType() != QDBusArgument::ArrayType) {
        // "non map" is meant: it is what the line has always said.
        qDebug() << "WindowManagerDbusGeneralProxy: expected list argument but passed non map";
        return list;
    }
    forEachElement(argument, [&list](const QVariant &element) {
        if (isUndecodedArray(element)) {
            // Flattened on purpose: the widget manager's clients read one level.
            list += parseDBusValue(element).toList();
        } else {
            list.append(parseDBusValue(element));
        }
    });
    return list;
}

// NOLINTEND(misc-no-recursion)

QVariantMap readDBusEntries(const QDBusArgument &argument)
{
    QVariantMap map;
    if (argument.currentType() == QDBusArgument::MapType) {
        forEachEntry(argument, [&map](const QString &key, const QVariant &value) { map.insert(key, value); });
    }
    return map;
}

void registerDBusContainers()
{
    qDBusRegisterMetaType<QVariantMap>();
    qDBusRegisterMetaType<QVariantList>();
}
