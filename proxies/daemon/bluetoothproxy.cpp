#include "daemon/bluetoothproxy.h"

#include "shapes/introspection.h"
#include "shapes/json.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/bluetooth"};
const QLatin1String interfaceName{"com.vorlet.daemon.bluetooth"};
} // namespace

namespace Daemon
{

BluetoothProxy::BluetoothProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void BluetoothProxy::playbackStop(QDBus::CallMode mode) { call(mode, QStringLiteral("playbackStop")); }
void BluetoothProxy::playbackStart(QDBus::CallMode mode) { call(mode, QStringLiteral("playbackStart")); }
void BluetoothProxy::trackNext(QDBus::CallMode mode) { call(mode, QStringLiteral("trackNext")); }
void BluetoothProxy::trackPrevious(QDBus::CallMode mode) { call(mode, QStringLiteral("trackPrevious")); }
void BluetoothProxy::setBluetoothActive(bool active, QDBus::CallMode mode) { call(mode, QStringLiteral("setBluetoothActive"), active); }
void BluetoothProxy::setBluetoothName(const QString &name, QDBus::CallMode mode) { call(mode, QStringLiteral("setBluetoothName"), name); }
void BluetoothProxy::setBluetoothConfig(const QVariant &config, QDBus::CallMode mode) { call(mode, QStringLiteral("setBluetoothConfig"), Json::write(config)); }

QStringList BluetoothProxy::connectedDevices(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("connectedDevices"))); }
bool BluetoothProxy::isDeviceConnected(const QString &address, QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isDeviceConnected"), address)); }
QVariantMap BluetoothProxy::playerState(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("playerState"))); }
QVariantMap BluetoothProxy::currentTrackInfo(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("currentTrackInfo"))); }
QString BluetoothProxy::playerPlaybackState(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("playerPlaybackState"))); }
QString BluetoothProxy::mediaTransportState(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("mediaTransportState"))); }
QVariantMap BluetoothProxy::deviceConnectionType(const QString &address, QDBus::CallMode mode) { return Reply::converted(call(mode, QStringLiteral("deviceConnectionType"), address)).toMap(); }
QVariantMap BluetoothProxy::getAdapterState(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("getAdapterState"))); }

QDBusPendingCall BluetoothProxy::deviceConnectionType(const QString &address) { return asyncCall(QStringLiteral("deviceConnectionType"), address); }
QDBusPendingCall BluetoothProxy::setBluetoothConfig(const QVariant &config) { return asyncCall(QStringLiteral("setBluetoothConfig"), Json::write(config)); }

bool BluetoothProxy::connectBTDeviceConnectionStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTDeviceConnectionStateChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTDeviceConnectionStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTDeviceConnectionStateChanged"), receiver, slot); }
bool BluetoothProxy::connectBTDevicePlayerPlaybackStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTDevicePlayerPlaybackStateChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTDevicePlayerPlaybackStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTDevicePlayerPlaybackStateChanged"), receiver, slot); }
bool BluetoothProxy::connectBTDeviceMediaTransportStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTDeviceMediaTransportStateChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTDeviceMediaTransportStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTDeviceMediaTransportStateChanged"), receiver, slot); }
bool BluetoothProxy::connectBTDevicePlayerTrackChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTDevicePlayerTrackChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTDevicePlayerTrackChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTDevicePlayerTrackChanged"), receiver, slot); }
bool BluetoothProxy::connectBTActiveStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTActiveStateChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTActiveStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTActiveStateChanged"), receiver, slot); }
bool BluetoothProxy::connectBTLEStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTLEStateChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTLEStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTLEStateChanged"), receiver, slot); }
bool BluetoothProxy::connectBTBREDRStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("BTBREDRStateChanged"), receiver, slot); }
bool BluetoothProxy::disconnectBTBREDRStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("BTBREDRStateChanged"), receiver, slot); }
bool BluetoothProxy::connectDeviceConnectedStateChangedWithType(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("deviceConnectedStateChangedWithType"), receiver, slot); }
bool BluetoothProxy::disconnectDeviceConnectedStateChangedWithType(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("deviceConnectedStateChangedWithType"), receiver, slot); }

} // namespace Daemon
