#include "buscalls.h"

#include <QDBusMessage>
#include <QRegularExpression>

namespace
{

const char *const connectionName = "listener";

/// The signal that a match rule asks for; empty for the bus's own signals.
QString signalOf(const QString &rule)
{
    static const QRegularExpression member(QStringLiteral("member='([^']*)'"));
    const bool isTheBuss = rule.contains(QStringLiteral("interface='org.freedesktop.DBus"));
    return isTheBuss ? QString() : member.match(rule).captured(1);
}

} // namespace

BusCalls::BusCalls(const QString &busAddress)
    : bus(QDBusConnection::connectToBus(busAddress, QLatin1String(connectionName)))
    , listenedTo(QDBusConnection::systemBus().baseService())
{
    bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("AddMatch"));
    request << QStringLiteral("eavesdrop='true',type='method_call',sender='%1'").arg(listenedTo);
    bus.call(request);
}

BusCalls::~BusCalls()
{
    bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

QStringList BusCalls::calls() const
{
    return heard;
}

QString BusCalls::introspect(const QString & /*path*/) const
{
    return QString();
}

bool BusCalls::handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/)
{
    if (message.member() == QStringLiteral("AddMatch")) {
        const QString busSignal = signalOf(message.arguments().value(0).toString());
        if (!busSignal.isEmpty()) {
            heard.append(QStringLiteral("subscribe ") + busSignal);
        }
    } else if (!message.interface().startsWith(QStringLiteral("org.freedesktop.DBus"))) {
        heard.append(message.member());
    }
    return true; // answered by whom it is meant for
}
