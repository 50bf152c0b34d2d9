#include "mqttclient/generalproxy.h"

#include "shapes/introspection.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.mqtt.client"};
const QLatin1String objectPath{"/general"};
const QLatin1String interfaceName{"com.vorlet.mqtt.client.general"};
} // namespace

namespace MQTTClient
{

GeneralProxy::GeneralProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void GeneralProxy::subscribeOnApplicationUpdate(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("subscribeOnApplicationUpdate"), appId); }
void GeneralProxy::unsubscribeOnApplicationUpdate(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("unsubscribeOnApplicationUpdate"), appId); }
void GeneralProxy::unsubscribeOnApplicationUpdate(const QString &appId, const QString &channel, QDBus::CallMode mode) { call(mode, QStringLiteral("unsubscribeOnApplicationUpdate"), appId, channel); }
void GeneralProxy::sendDataToChannel(const QString &channel, const QString &text) { call(QStringLiteral("sendDataToChannel"), channel, text.toUtf8()); }
void GeneralProxy::subscribeOnChannelUpdate(const QString &channel, QDBus::CallMode mode) { call(mode, QStringLiteral("subscribeOnChannelUpdate"), channel); }

QDBusPendingCall GeneralProxy::sendDataToChannel(const QString &channel, const QByteArray &data) { return asyncCall(QStringLiteral("sendDataToChannel"), channel, data); }

bool GeneralProxy::connectMqttClientDidStart(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("mqttClientDidStart"), receiver, slot); }
bool GeneralProxy::disconnectMqttClientDidStart(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("mqttClientDidStart"), receiver, slot); }

} // namespace MQTTClient
