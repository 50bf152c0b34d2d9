#include "daemon/restserverproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/web"};
const QLatin1String interfaceName{"com.vorlet.daemon.rest"};
} // namespace

namespace Daemon
{

RestServerProxy::RestServerProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void RestServerProxy::setAuth(const QString &user, const QString &password, QDBus::CallMode mode) { call(mode, QStringLiteral("setAuth"), user, password); }

QString RestServerProxy::baseUrl(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("baseUrl"))); }
bool RestServerProxy::isServerRunning(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isServerRunning"))); }
bool RestServerProxy::isSecureConnection(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isSecureConnection"))); }

bool RestServerProxy::connectRestServerDidStart(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("restServerDidStart"), receiver, slot); }
bool RestServerProxy::disconnectRestServerDidStart(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("restServerDidStart"), receiver, slot); }

} // namespace Daemon
