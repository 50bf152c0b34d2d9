#include "daemon/networkproxy.h"

#include "shapes/introspection.h"
#include "shapes/json.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/com/vorlet/network"};
const QLatin1String interfaceName{"com.vorlet.daemon.network"};
} // namespace

namespace Daemon
{

NetworkProxy::NetworkProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void NetworkProxy::clearSettings(QDBus::CallMode mode) { call(mode, QStringLiteral("clearSettings")); }
void NetworkProxy::forgetNetworkSettings(const QString &essid, QDBus::CallMode mode) { call(mode, QStringLiteral("forgetNetworkSettings"), essid); }
void NetworkProxy::setWifiConfig(const QVariant &config, QDBus::CallMode mode) { call(mode, QStringLiteral("setWifiConfig"), Json::write(config)); }

QVariantList NetworkProxy::getWifiApList(QDBus::CallMode mode) { return Reply::jsonList(call(mode, QStringLiteral("getWifiApList"))); }
QString NetworkProxy::externalIp(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("externalIp"))); }
bool NetworkProxy::isInternetAvailable(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isInternetAvailable"))); }
bool NetworkProxy::forceTryToRestartWifiConnection(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("forceTryToRestartWifiConnection"))); }
QVariantMap NetworkProxy::getWifiState(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("getWifiState"))); }

QDBusPendingCall NetworkProxy::isInternetAvailable() { return asyncCall(QStringLiteral("isInternetAvailable")); }

bool NetworkProxy::connectNetworkInterfaceStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("networkInterfaceStateChanged"), receiver, slot); }
bool NetworkProxy::disconnectNetworkInterfaceStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("networkInterfaceStateChanged"), receiver, slot); }
bool NetworkProxy::connectInternetAvailabilityChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("internetAvailabilityChanged"), receiver, slot); }
bool NetworkProxy::disconnectInternetAvailabilityChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("internetAvailabilityChanged"), receiver, slot); }
bool NetworkProxy::connectNetworkStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("networkStateChanged"), receiver, slot); }
bool NetworkProxy::disconnectNetworkStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("networkStateChanged"), receiver, slot); }
bool NetworkProxy::connectExternalIpChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("externalIpChanged"), receiver, slot); }
bool NetworkProxy::disconnectExternalIpChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("externalIpChanged"), receiver, slot); }

} // namespace Daemon
