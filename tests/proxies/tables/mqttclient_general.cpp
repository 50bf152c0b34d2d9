#include "mqttclient/generalproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable mqttClientGeneralProxy(const QDBusConnection &connection)
{
    using Proxy = MQTTClient::GeneralProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"MQTTClient::GeneralProxy",
            p,
            {
                {"subscribeOnApplicationUpdate", Shape::Command, "s", {text}, returning([p] { p->subscribeOnApplicationUpdate(text, wait); })},
                {"unsubscribeOnApplicationUpdate", Shape::Command, "s", {text}, returning([p] { p->unsubscribeOnApplicationUpdate(text, wait); })},
                {"unsubscribeOnApplicationUpdate", Shape::Command, "ss", {text, second}, returning([p] { p->unsubscribeOnApplicationUpdate(text, second, wait); })},
                {"sendDataToChannel", Shape::Command, "say", {text, QByteArray("second text")}, returning([p] { p->sendDataToChannel(text, second); })},
                {"subscribeOnChannelUpdate", Shape::Command, "s", {text}, returning([p] { p->subscribeOnChannelUpdate(text, wait); })},
                {"sendDataToChannel", Shape::Asynchronous, "say", {text, bytes}, returning([p] { return p->sendDataToChannel(text, bytes); })},
            },
            {
                subscription("mqttClientDidStart", {}, p, &Proxy::connectMqttClientDidStart, &Proxy::disconnectMqttClientDidStart),
            }};
}
