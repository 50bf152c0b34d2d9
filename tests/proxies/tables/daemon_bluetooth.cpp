#include "daemon/bluetoothproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonBluetoothProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::BluetoothProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::BluetoothProxy",
            p,
            {
                {"playbackStop", Shape::Command, "", {}, returning([p] { p->playbackStop(wait); })},
                {"playbackStart", Shape::Command, "", {}, returning([p] { p->playbackStart(wait); })},
                {"trackNext", Shape::Command, "", {}, returning([p] { p->trackNext(wait); })},
                {"trackPrevious", Shape::Command, "", {}, returning([p] { p->trackPrevious(wait); })},
                {"setBluetoothActive", Shape::Command, "b", {flag}, returning([p] { p->setBluetoothActive(flag, wait); })},
                {"setBluetoothName", Shape::Command, "s", {text}, returning([p] { p->setBluetoothName(text, wait); })},
                {"setBluetoothConfig", Shape::Command, "ay", {jsonText}, returning([p] { p->setBluetoothConfig(json, wait); })},
                {"connectedDevices", Shape::Texts, "", {}, returning([p] { return p->connectedDevices(wait); })},
                {"isDeviceConnected", Shape::Flag, "s", {text}, returning([p] { return p->isDeviceConnected(text, wait); })},
                {"playerState", Shape::JsonMap, "", {}, returning([p] { return p->playerState(wait); })},
                {"currentTrackInfo", Shape::JsonMap, "", {}, returning([p] { return p->currentTrackInfo(wait); })},
                {"playerPlaybackState", Shape::Text, "", {}, returning([p] { return p->playerPlaybackState(wait); })},
                {"mediaTransportState", Shape::Text, "", {}, returning([p] { return p->mediaTransportState(wait); })},
                {"deviceConnectionType", Shape::ConvertedMap, "s", {text}, returning([p] { return p->deviceConnectionType(text, wait); })},
                {"getAdapterState", Shape::JsonMap, "", {}, returning([p] { return p->getAdapterState(wait); })},
                {"deviceConnectionType", Shape::Asynchronous, "s", {text}, returning([p] { return p->deviceConnectionType(text); })},
                {"setBluetoothConfig", Shape::Asynchronous, "ay", {jsonText}, returning([p] { return p->setBluetoothConfig(json); })},
            },
            {
                subscription("BTDeviceConnectionStateChanged", {text, flag}, p, &Proxy::connectBTDeviceConnectionStateChanged, &Proxy::disconnectBTDeviceConnectionStateChanged),
                subscription("BTDevicePlayerPlaybackStateChanged", {text, second}, p, &Proxy::connectBTDevicePlayerPlaybackStateChanged, &Proxy::disconnectBTDevicePlayerPlaybackStateChanged),
                subscription("BTDeviceMediaTransportStateChanged", {text, second}, p, &Proxy::connectBTDeviceMediaTransportStateChanged, &Proxy::disconnectBTDeviceMediaTransportStateChanged),
                subscription("BTDevicePlayerTrackChanged", {text}, p, &Proxy::connectBTDevicePlayerTrackChanged, &Proxy::disconnectBTDevicePlayerTrackChanged),
                subscription("BTActiveStateChanged", {flag}, p, &Proxy::connectBTActiveStateChanged, &Proxy::disconnectBTActiveStateChanged),
                subscription("BTLEStateChanged", {flag}, p, &Proxy::connectBTLEStateChanged, &Proxy::disconnectBTLEStateChanged),
                subscription("BTBREDRStateChanged", {flag}, p, &Proxy::connectBTBREDRStateChanged, &Proxy::disconnectBTBREDRStateChanged),
                subscription("deviceConnectedStateChangedWithType", {text, flag, second}, p, &Proxy::connectDeviceConnectedStateChangedWithType, &Proxy::disconnectDeviceConnectedStateChangedWithType),
            }};
}
