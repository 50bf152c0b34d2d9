#pragma once

#include <QDBusInterface>
#include <QDBusPendingCall>

namespace MQTTClient
{

/// Messages between the device's applications and the world outside.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class GeneralProxy : public QDBusInterface
{
    Q_OBJECT

public:
    GeneralProxy(QObject *parent, const QDBusConnection &connection);

    /// subscribeOnApplicationUpdate(s): asks for the updates of an application.
    void subscribeOnApplicationUpdate(const QString &appId, QDBus::CallMode mode);
    /// unsubscribeOnApplicationUpdate(s): ends the updates of an application.
    void unsubscribeOnApplicationUpdate(const QString &appId, QDBus::CallMode mode);
    /// unsubscribeOnApplicationUpdate(ss): ends the updates of one channel.
    void unsubscribeOnApplicationUpdate(const QString &appId, const QString &channel, QDBus::CallMode mode);
    /// sendDataToChannel(say): text, sent as UTF-8 in the interface's default mode, which waits for the reply.
    void sendDataToChannel(const QString &channel, const QString &text);
    /// The same for a literal: sendDataToChannel(channel, u"text").
    void sendDataToChannel(const QString &channel, const char16_t *text) { sendDataToChannel(channel, QString::fromUtf16(text)); }
    /// subscribeOnChannelUpdate(s): asks for the updates of a channel.
    void subscribeOnChannelUpdate(const QString &channel, QDBus::CallMode mode);

    /// sendDataToChannel(say): any bytes.
    [[nodiscard]] QDBusPendingCall sendDataToChannel(const QString &channel, const QByteArray &data);
    /// The same for a literal: sendDataToChannel(channel, "bytes"). It ends at its first zero byte.
    [[nodiscard]] QDBusPendingCall sendDataToChannel(const QString &channel, const char *data) { return sendDataToChannel(channel, QByteArray(data)); }

    /// Signal mqttClientDidStart(): the service is up again.
    bool connectMqttClientDidStart(QObject *receiver, const char *slot);
    bool disconnectMqttClientDidStart(QObject *receiver, const char *slot);
};

} // namespace MQTTClient
