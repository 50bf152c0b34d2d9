#include "windowmanager/sharedscreenproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"widget.manager"};
const QLatin1String objectPath{"/sharedscreen"};
const QLatin1String interfaceName{"com.vorlet.widget_manager.sharedscreen"};
} // namespace

namespace WindowManager
{

SharedScreenProxy::SharedScreenProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void SharedScreenProxy::setScanRateEnterBufferingMode(int scanRate, QDBus::CallMode mode) { call(mode, QStringLiteral("setScanRateEnterBufferingMode"), scanRate); }
void SharedScreenProxy::restoreScanRate(QDBus::CallMode mode) { call(mode, QStringLiteral("restoreScanRate")); }
void SharedScreenProxy::setCurrentPrivilegedApp(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("setCurrentPrivilegedApp"), appId); }

int SharedScreenProxy::scanRate(QDBus::CallMode mode) { return Reply::value<int>(call(mode, QStringLiteral("scanRate"))); }

} // namespace WindowManager
