#include "daemon/networkproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonNetworkProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::NetworkProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::NetworkProxy",
            p,
            {
                {"clearSettings", Shape::Command, "", {}, returning([p] { p->clearSettings(wait); })},
                {"forgetNetworkSettings", Shape::Command, "s", {text}, returning([p] { p->forgetNetworkSettings(text, wait); })},
                {"setWifiConfig", Shape::Command, "ay", {jsonText}, returning([p] { p->setWifiConfig(json, wait); })},
                {"getWifiApList", Shape::JsonList, "", {}, returning([p] { return p->getWifiApList(wait); })},
                {"externalIp", Shape::Text, "", {}, returning([p] { return p->externalIp(wait); })},
                {"isInternetAvailable", Shape::Flag, "", {}, returning([p] { return p->isInternetAvailable(wait); })},
                {"forceTryToRestartWifiConnection", Shape::Flag, "", {}, returning([p] { return p->forceTryToRestartWifiConnection(wait); })},
                {"getWifiState", Shape::JsonMap, "", {}, returning([p] { return p->getWifiState(wait); })},
                {"isInternetAvailable", Shape::Asynchronous, "", {}, returning([p] { return p->isInternetAvailable(); })},
            },
            {
                subscription("networkInterfaceStateChanged", {text, flag}, p, &Proxy::connectNetworkInterfaceStateChanged, &Proxy::disconnectNetworkInterfaceStateChanged),
                subscription("internetAvailabilityChanged", {flag}, p, &Proxy::connectInternetAvailabilityChanged, &Proxy::disconnectInternetAvailabilityChanged),
                subscription("networkStateChanged", {text}, p, &Proxy::connectNetworkStateChanged, &Proxy::disconnectNetworkStateChanged),
                subscription("externalIpChanged", {text}, p, &Proxy::connectExternalIpChanged, &Proxy::disconnectExternalIpChanged),
            }};
}
