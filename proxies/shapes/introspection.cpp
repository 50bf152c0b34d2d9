#include "shapes/introspection.h"

#include <QDBusInterface>
#include <QDBusVirtualObject>

namespace VorletProxiesPrivate
{

namespace
{

// Describes an interface without members to whoever introspects it.
class EmptyInterface : public QDBusVirtualObject
{
public:
    explicit EmptyInterface(const QString &name)
        : interfaceName(name)
    {
    }

    QString introspect(const QString & /*path*/) const override { return QStringLiteral("<interface name=\"%1\"/>").arg(interfaceName); }
    bool handleMessage(const QDBusMessage & /*message*/, const QDBusConnection & /*connection*/) override { return false; }

private:
    QString interfaceName;
};

} // namespace

const QDBusConnection &withoutIntrospection(const QDBusConnection &connection, const QString &interface)
{
    // A connection keeps every interface it has seen. It asks its own objects inside the process, so this
    // costs no message on the bus, and nothing at all once the interface is known.
    const QString path = QStringLiteral("/com/vorlet/proxies/introspection");
    EmptyInterface description(interface);
    QDBusConnection self(connection);
    if (self.registerVirtualObject(path, &description)) {
        const QDBusInterface remembered(self.baseService(), path, interface, self);
        self.unregisterObject(path);
    }
    return connection;
}

} // namespace VorletProxiesPrivate
