#pragma once

#include <QByteArray>
#include <Qt>

/// A thread's id as the log lines write it.
inline QByteArray threadText(Qt::HANDLE thread)
{
    return QByteArray::number(static_cast<quint32>(reinterpret_cast<quintptr>(thread)), 16);
}
