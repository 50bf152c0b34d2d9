#include "described.h"

#include <QStringList>

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
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
            parts.append(QStringLiteral("\"%1\": %2").arg(entry.key(), described(entry.value())));
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
    default:
        return QStringLiteral("%1(\"%2\")").arg(QLatin1String(value.typeName()), value.toString());
    }
}
