#pragma once

#include <QString>
#include <QVariant>

/// A list as one value: QVariantList{QVariantList{}} would be the inner list.
inline QVariant list(const QVariantList &values)
{
    return QVariant(values);
}

/// A value with the types of everything in it, for comparing. QVariant's own comparison converts first in Qt
/// 5, so that 1, 1.0, "1" and true can be equal there.
QString described(const QVariant &value);
