// Values as the device's services send them.

#include "dbusconversion.h"
#include "measures.h"
#include "privatebus.h"
#include "turns.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace
{
/// Sends a map to itself over the bus library, and keeps it as it arrives.
class Mirror : public QDBusVirtualObject
{
public:
    explicit Mirror(const QDBusConnection &connection)
        : bus(connection)
    {
        require(bus.registerVirtualObject(QStringLiteral("/"), this), QStringLiteral("no object on the bus"));
    }

    QDBusArgument arrivalOf(const QVariantMap &map)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(bus.baseService(), QStringLiteral("/"),
                                                           QStringLiteral("a.b"), QStringLiteral("take"));
        call << QVariant(map);
        bus.call(call);
        return arrived;
    }

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        arrived = message.arguments().value(0).value<QDBusArgument>();
        return connection.send(message.createReply());
    }

private:
    QDBusConnection bus;
    QDBusArgument arrived;
};

/// Three levels, as a widget's modes are told: 8 modes of 8 settings with 4 values each.
QVariantMap nestedMap()
{
    QVariantMap modes;
    for (int mode = 0; mode < 8; ++mode) {
        QVariantMap settings;
        for (int setting = 0; setting < 8; ++setting) {
            settings.insert(QStringLiteral("setting%1").arg(setting),
                            QVariantList{1, true, QStringLiteral("text"), 1.5});
        }
        modes.insert(QStringLiteral("mode%1").arg(mode), settings);
    }
    return modes;
}

void convertNestedMap(benchmark::State &state)
{
    registerDBusContainers();
    PrivateBus privateBus;
    require(privateBus.start(), QStringLiteral("no bus"));
    const auto name = QStringLiteral("micro");
    const QVariantMap sent = nestedMap();
    {
        Mirror mirror(QDBusConnection::connectToBus(privateBus.address(), name));
        const QDBusArgument argument = mirror.arrivalOf(sent);
        require(convertDBusArgument(argument).toMap() == sent, QStringLiteral("the map arrives changed"));
        measureTurns(state, [&] { return convertDBusArgument(argument); });
    }
    QDBusConnection::disconnectFromBus(name);
}
BENCHMARK(convertNestedMap)->Unit(benchmark::kMicrosecond);
} // namespace
