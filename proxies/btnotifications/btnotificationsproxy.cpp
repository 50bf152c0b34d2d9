#include "btnotifications/btnotificationsproxy.h"

#include "shapes/argument.h"
#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"com.btnotifications"};
const QLatin1String objectPath{"/"};
const QLatin1String interfaceName{"com.vorlet.btnotifications"};
} // namespace

namespace BtNotifications
{

BTNotificationsProxy::BTNotificationsProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void BTNotificationsProxy::addToWhitelist(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("addToWhitelist"), appId); }
void BTNotificationsProxy::removeFromWhitelist(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("removeFromWhitelist"), appId); }
void BTNotificationsProxy::saveDevice(const QVariantMap &device, QDBus::CallMode mode) { call(mode, QStringLiteral("saveDevice"), Argument::map(device)); }
void BTNotificationsProxy::updateSettings(const QString &address, const QVariantMap &settings, QDBus::CallMode mode) { call(mode, QStringLiteral("updateSettings"), address, Argument::map(settings)); }
void BTNotificationsProxy::setGeneralOptions(const QVariantMap &options, QDBus::CallMode mode) { call(mode, QStringLiteral("setGeneralOptions"), Argument::map(options)); }
void BTNotificationsProxy::setStatsSendingServerPermission(bool allowed, QDBus::CallMode mode) { call(mode, QStringLiteral("setStatsSendingServerPermission"), allowed); }
void BTNotificationsProxy::setStatsSendingUserPermission(bool allowed, QDBus::CallMode mode) { call(mode, QStringLiteral("setStatsSendingUserPermission"), allowed); }

bool BTNotificationsProxy::supportFilter(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("supportFilter"))); }
bool BTNotificationsProxy::statsSendingServerPermission(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("statsSendingServerPermission"))); }
bool BTNotificationsProxy::statsSendingUserPermission(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("statsSendingUserPermission"))); }
QStringList BTNotificationsProxy::filterWhitelist(QDBus::CallMode mode) { return Reply::converted(call(mode, QStringLiteral("filterWhitelist"))).toStringList(); }
QVariantList BTNotificationsProxy::supportedAppList(QDBus::CallMode mode) { return Reply::convertedList(call(mode, QStringLiteral("supportedAppList"))); }
QVariantMap BTNotificationsProxy::savedDevices(QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("savedDevices"))); }
QVariantMap BTNotificationsProxy::generalOptions(QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("generalOptions"))); }
QVariantMap BTNotificationsProxy::settingsForDevice(const QString &address, QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("settingsForDevice"), address)); }

} // namespace BtNotifications
