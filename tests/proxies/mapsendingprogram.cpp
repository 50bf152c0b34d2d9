#include "awkwardvalues.h"
#include "mapsenders.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QTextStream>

namespace
{

void say(const QString &line)
{
    QTextStream(stderr) << line << '\n';
}

// A call that every service of the test answers, behind whatever was sent before.
QDBusMessage ask(const QDBusConnection &connection, const char *service)
{
    return connection.call(QDBusMessage::createMethodCall(
        QLatin1String(service), QStringLiteral("/"), QStringLiteral("test.device"), QStringLiteral("ask")));
}

QVariant valueOf(const QString &name, int levels, const QDBusConnection &connection)
{
    if (name == QStringLiteral("maps")) {
        return nestedMaps(levels);
    }
    if (name == QStringLiteral("lists")) {
        return nestedLists(levels);
    }
    if (name == QStringLiteral("variants")) {
        return nestedVariants(levels);
    }
    const QVariantList received = ask(connection, "vorlet.daemon").arguments();
    const auto nests = qdbus_cast<QVariantMap>(received.value(1));
    if (nests.contains(name)) {
        return nests.value(name);
    }
    for (const AwkwardValue &each : awkwardValues(qdbus_cast<QVariantMap>(received.value(0)))) {
        if (name == QLatin1String(each.name)) {
            return each.value;
        }
    }
    qFatal("no value is named %s", qPrintable(name));
    return {};
}

bool wentWell(const MapSender &sender, const QString &error)
{
    if (!error.isEmpty()) {
        say(QStringLiteral("%1 failed: %2").arg(QLatin1String(sender.member), error));
    }
    return error.isEmpty();
}

// Sends the value with every member, waiting for the reply and not.
bool sendEverywhere(const QDBusConnection &connection, const QVariantMap &map)
{
    bool well = true;
    for (const MapSender &sender : mapSenders(connection)) {
        for (const QDBus::CallMode mode : {QDBus::Block, QDBus::NoBlock}) {
            say(QStringLiteral("sending with %1, mode %2").arg(QLatin1String(sender.member)).arg(mode));
            well = wentWell(sender, sender.send(map, mode)) && well;
        }
    }
    return well;
}

bool readAndWriteBack(const QDBusConnection &connection, const QString &member)
{
    for (const MapSender &sender : mapSenders(connection)) {
        if (member == QLatin1String(sender.member)) {
            QVariantMap map = sender.read();
            map.insert(QStringLiteral("changed"), true);
            return wentWell(sender, sender.send(map, QDBus::Block));
        }
    }
    say(QStringLiteral("no member is named ") + member);
    return false;
}

bool isAlive(const QDBusConnection &connection)
{
    bool alive = connection.isConnected();
    for (const char *service : {"vorlet.daemon", "widget.manager", "com.btnotifications"}) {
        alive = ask(connection, service).type() == QDBusMessage::ReplyMessage && alive;
    }
    return alive;
}

bool didAsAsked(const QStringList &words)
{
    const auto connection = QDBusConnection::connectToBus(words.value(1), QStringLiteral("sender"));
    bool well = false;
    if (words.value(2) == QStringLiteral("write-back")) {
        well = readAndWriteBack(connection, words.value(3));
    } else {
        const QVariant value = valueOf(words.value(2), words.value(3).toInt(), connection);
        well = sendEverywhere(connection, placed(value, Position(words.value(4).toInt())));
    }
    return isAlive(connection) && well;
}

} // namespace

// mapsendingprogram BUS write-back MEMBER
// mapsendingprogram BUS VALUE LEVELS POSITION
// Ends with 0 when every call was answered and the connection still stands.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const bool well = didAsAsked(application.arguments());
    QDBusConnection::disconnectFromBus(QStringLiteral("sender"));
    return well ? 0 : 1;
}
