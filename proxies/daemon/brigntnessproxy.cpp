#include "daemon/brigntnessproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/brightness"};
const QLatin1String interfaceName{"com.vorlet.daemon.brightness"};
} // namespace

namespace Daemon
{

BrigntnessProxy::BrigntnessProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void BrigntnessProxy::setBrightness(int brightness, QDBus::CallMode mode) { call(mode, QStringLiteral("setBrightness"), brightness); }
void BrigntnessProxy::setAutoBrightnessMode(bool enabled, QDBus::CallMode mode) { call(mode, QStringLiteral("setAutoBrightnessMode"), enabled); }
void BrigntnessProxy::setScreenOn(bool on, QDBus::CallMode mode) { call(mode, QStringLiteral("setScreenOn"), on); }

int BrigntnessProxy::getBrightness(QDBus::CallMode mode) { return Reply::value<int>(call(mode, QStringLiteral("getBrightness"))); }
bool BrigntnessProxy::isAutoBrigtness(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isAutoBrigtness"))); }
bool BrigntnessProxy::isScreenOn(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isScreenOn"))); }
QVariantMap BrigntnessProxy::getSpec(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("getSpec"))); }
QVariantMap BrigntnessProxy::getState(QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("getState"))); }

} // namespace Daemon
