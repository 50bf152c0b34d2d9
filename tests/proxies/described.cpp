#include "described.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusVariant>
#include <QStringList>

namespace
{

QString entry(const QString &key, const QVariant &value)
{
    return QStringLiteral("\"%1\": %2").arg(key, described(value));
}

QString listed(const QDBusArgument &reader)
{
    QStringList parts;
    while (!reader.atEnd()) {
        parts.append(described(reader.asVariant()));
    }
    return parts.join(QStringLiteral(", "));
}

// A key that is no string is put as a value is.
QString keyOf(const QVariant &key)
{
    return key.userType() == QMetaType::QString ? key.toString() : described(key);
}

QString entries(const QDBusArgument &reader)
{
    QStringList parts;
    while (!reader.atEnd()) {
        reader.beginMapEntry();
        const QString key = keyOf(reader.asVariant());
        parts.append(entry(key, reader.asVariant()));
        reader.endMapEntry();
    }
    return parts.join(QStringLiteral(", "));
}

// A container as it lies in a message; one of variants looks as the plain one does.
QString describedArgument(const QDBusArgument &argument)
{
    const QDBusArgument reader = argument;
    QString signature = reader.currentSignature();
    if (signature == QStringLiteral("a{sv}") || signature == QStringLiteral("av")) {
        signature.clear();
    }
    QString text = QStringLiteral("argument without a container");
    switch (reader.currentType()) {
    case QDBusArgument::MapType:
        reader.beginMap();
        text = QStringLiteral("%1{%2}").arg(signature, entries(reader));
        reader.endMap();
        break;
    case QDBusArgument::ArrayType:
        reader.beginArray();
        text = QStringLiteral("%1[%2]").arg(signature, listed(reader));
        reader.endArray();
        break;
    case QDBusArgument::StructureType:
        reader.beginStructure();
        text = QStringLiteral("(%1)").arg(listed(reader));
        reader.endStructure();
        break;
    default:
        break;
    }
    return text;
}

// What the bus library has a class of its own for.
QString describedWireValue(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        return describedArgument(value.value<QDBusArgument>());
    }
    if (value.userType() == qMetaTypeId<QDBusVariant>()) {
        // The wrapping that each element of a list and each value of a map has shows no more than in plain
        // ones.
        return described(value.value<QDBusVariant>().variant());
    }
    if (value.userType() == qMetaTypeId<QDBusObjectPath>()) {
        return QStringLiteral("path(\"%1\")").arg(value.value<QDBusObjectPath>().path());
    }
    if (value.userType() == qMetaTypeId<QDBusSignature>()) {
        return QStringLiteral("signature(\"%1\")").arg(value.value<QDBusSignature>().signature());
    }
    return QStringLiteral("%1(\"%2\")").arg(QLatin1String(value.typeName()), value.toString());
}

} // namespace

QString described(const QVariant &value)
{
    QStringList parts;
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return QStringLiteral("nothing");
    case QMetaType::Nullptr:
        return QStringLiteral("null");
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        for (auto each = map.cbegin(); each != map.cend(); ++each) {
            parts.append(entry(each.key(), each.value()));
        }
        return QStringLiteral("{%1}").arg(parts.join(QStringLiteral(", ")));
    }
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        for (const QVariant &element : list) {
            parts.append(described(element));
        }
        return QStringLiteral("[%1]").arg(parts.join(QStringLiteral(", ")));
    }
    case QMetaType::QStringList:
        return QStringLiteral("texts(\"%1\" of %2)")
            .arg(value.toStringList().join(QStringLiteral("\", \"")))
            .arg(value.toStringList().size());
    case QMetaType::QByteArray:
        return QStringLiteral("bytes(%1)").arg(QString::fromLatin1(value.toByteArray().toHex()));
    case QMetaType::UChar:
        return QStringLiteral("uchar(\"%1\")").arg(value.toUInt());
    default:
        return describedWireValue(value);
    }
}
