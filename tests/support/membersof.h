#pragma once

#include <QMetaObject>
#include <QStringList>

/// The signals, slots and invokable methods that the class itself declares, in their order, each as
/// "signal void failure(int code, QByteArray body)".
QStringList membersOf(const QMetaObject &meta);
