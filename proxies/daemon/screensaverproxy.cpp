#include "daemon/screensaverproxy.h"

#include "shapes/argument.h"
#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/screen_saver"};
const QLatin1String interfaceName{"com.vorlet.daemon.screen_saver"};
} // namespace

namespace Daemon
{

ScreenSaverProxy::ScreenSaverProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void ScreenSaverProxy::disableScreenSaverForInterval(int seconds, QDBus::CallMode mode) { call(mode, QStringLiteral("disableScreenSaverForInterval"), seconds); }
void ScreenSaverProxy::setEnabled(bool enabled, QDBus::CallMode mode) { call(mode, QStringLiteral("setEnabled"), enabled); }
void ScreenSaverProxy::setActive(bool active, QDBus::CallMode mode) { call(mode, QStringLiteral("setActive"), active); }
void ScreenSaverProxy::setScreenSaverWidget(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("setScreenSaverWidget"), widgetId); }
void ScreenSaverProxy::setIsSnoosed(bool snoosed, QDBus::CallMode mode) { call(mode, QStringLiteral("setIsSnoosed"), snoosed); }
void ScreenSaverProxy::setScreenSaverModeSettings(const QString &saverMode, const QVariantMap &settings, QDBus::CallMode mode)
{
    call(mode, QStringLiteral("setScreenSaverModeSettings"), saverMode, Argument::map(settings));
}

bool ScreenSaverProxy::forceCheckActivator(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("forceCheckActivator"))); }
bool ScreenSaverProxy::isSnoosed(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isSnoosed"))); }
bool ScreenSaverProxy::isEnabled(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isEnabled"))); }
bool ScreenSaverProxy::isActive(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isActive"))); }
QString ScreenSaverProxy::screenSaverWidget(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("screenSaverWidget"))); }
QStringList ScreenSaverProxy::screenSaverModesList(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("screenSaverModesList"))); }
QVariantMap ScreenSaverProxy::screenSaverModeSettings(const QString &saverMode, QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("screenSaverModeSettings"), saverMode)); }
QVariantMap ScreenSaverProxy::screenSaverModesSettings(QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("screenSaverModesSettings"))); }

bool ScreenSaverProxy::connectScreenSaverWidgetChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("screenSaverWidgetChanged"), receiver, slot); }
bool ScreenSaverProxy::disconnectScreenSaverWidgetChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("screenSaverWidgetChanged"), receiver, slot); }
bool ScreenSaverProxy::connectWidgetChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("screenSaverWidgetChanged"), receiver, slot); }
bool ScreenSaverProxy::disconnectWidgetChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("screenSaverWidgetChanged"), receiver, slot); }

} // namespace Daemon
