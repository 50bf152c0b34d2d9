#include "daemon/lightsensorproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/lightsensor"};
const QLatin1String interfaceName{"com.vorlet.daemon.light.sensor"};
} // namespace

namespace Daemon
{

namespace
{
// Made once, when the program starts.
namespace Name
{
const QString sensorData = QStringLiteral("sensorData");
const QString sensorDataChanged = QStringLiteral("sensorDataChanged");
} // namespace Name
} // namespace

LightSensorProxy::LightSensorProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

float LightSensorProxy::sensorData(QDBus::CallMode mode) { return Reply::value<float>(call(mode, Name::sensorData)); }

QDBusPendingCall LightSensorProxy::sensorData() { return asyncCall(Name::sensorData); }

bool LightSensorProxy::connectSensorDataChanged(QObject *receiver, const char *slot) { return subscribe(*this, Name::sensorDataChanged, receiver, slot); }
bool LightSensorProxy::disconnectSensorDataChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, Name::sensorDataChanged, receiver, slot); }

} // namespace Daemon
