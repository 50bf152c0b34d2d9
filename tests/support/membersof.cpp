#include "membersof.h"

#include <QMetaMethod>

namespace
{

QByteArray kindOf(const QMetaMethod &method)
{
    switch (method.methodType()) {
    case QMetaMethod::Signal:
        return "signal";
    case QMetaMethod::Slot:
        return "slot";
    default:
        return "method";
    }
}

} // namespace

QStringList membersOf(const QMetaObject &meta)
{
    QStringList members;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const QList<QByteArray> types = method.parameterTypes();
        const QList<QByteArray> names = method.parameterNames();
        QByteArrayList arguments;
        for (int a = 0; a < types.size(); ++a) {
            arguments.append((types.at(a) + ' ' + names.at(a)).trimmed());
        }
        members.append(QString::fromLatin1(kindOf(method) + ' ' + method.typeName() + ' ' + method.name() +
                                           '(' + arguments.join(", ") + ')'));
    }
    return members;
}
