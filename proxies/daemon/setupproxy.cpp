#include "daemon/setupproxy.h"

#include "shapes/introspection.h"
#include "shapes/json.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/device_setup"};
const QLatin1String interfaceName{"com.vorlet.daemon.device_setup"};
} // namespace

namespace Daemon
{

SetupProxy::SetupProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void SetupProxy::keyReceived(const QString &key, QDBus::CallMode mode) { call(mode, QStringLiteral("keyReceived"), key); }
void SetupProxy::devicePingReceived(QDBus::CallMode mode) { call(mode, QStringLiteral("devicePingReceived")); }
void SetupProxy::confirmErrors(QDBus::CallMode mode) { call(mode, QStringLiteral("confirmErrors")); }
void SetupProxy::cancel(QDBus::CallMode mode) { call(mode, QStringLiteral("cancel")); }
void SetupProxy::networkConfigReceived(const QVariant &config, QDBus::CallMode mode) { call(mode, QStringLiteral("networkConfigReceived"), Json::write(config)); }

int SetupProxy::setupStatus(QDBus::CallMode mode) { return Reply::value<int>(call(mode, QStringLiteral("setupStatus"))); }
QString SetupProxy::setupConfirmation(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("setupConfirmation"))); }
QString SetupProxy::state(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("state"))); }
bool SetupProxy::setupInProgress(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("setupInProgress"))); }

bool SetupProxy::connectSetupStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("setupStateChanged"), receiver, slot); }
bool SetupProxy::disconnectSetupStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("setupStateChanged"), receiver, slot); }
bool SetupProxy::connectSetupErrorOccured(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("setupErrorOccured"), receiver, slot); }
bool SetupProxy::disconnectSetupErrorOccured(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("setupErrorOccured"), receiver, slot); }

} // namespace Daemon
