#include "windowmanager/generalproxy.h"

#include "shapes/argument.h"
#include "shapes/introspection.h"
#include "shapes/json.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"widget.manager"};
const QLatin1String objectPath{"/"};
const QLatin1String interfaceName{"com.vorlet.widget_manager.general"};
} // namespace

namespace WindowManager
{

GeneralProxy::GeneralProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void GeneralProxy::startApp(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("startApp"), appId); }
void GeneralProxy::stopApp(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("stopApp"), appId); }
void GeneralProxy::startWidget(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("startWidget"), widgetId); }
void GeneralProxy::stopWidget(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("stopWidget"), widgetId); }
void GeneralProxy::createWidget(const QString &appId, const QString &widgetType, QDBus::CallMode mode) { call(mode, QStringLiteral("createWidget"), appId, widgetType); }
void GeneralProxy::cloneWidget(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("cloneWidget"), widgetId); }
void GeneralProxy::deleteWidget(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("deleteWidget"), widgetId); }
void GeneralProxy::switchTo(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("switchTo"), widgetId); }
void GeneralProxy::showNotification(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("showNotification"), widgetId); }
void GeneralProxy::sendMessage(const QString &receiver, const QVariant &message, QDBus::CallMode mode) { call(mode, QStringLiteral("sendMessage"), receiver, Json::write(message)); }
void GeneralProxy::setWidgetOrdering(const QVariant &ordering, QDBus::CallMode mode) { call(mode, QStringLiteral("setWidgetOrdering"), Json::write(ordering)); }
void GeneralProxy::syncAppsAndWidgets(QDBus::CallMode mode) { call(mode, QStringLiteral("syncAppsAndWidgets")); }
void GeneralProxy::requestForSwitch(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("requestForSwitch"), widgetId); }
void GeneralProxy::dismissNotificationWidget(const QString &widgetId, QDBus::CallMode mode) { call(mode, QStringLiteral("dismissNotificationWidget"), widgetId); }
void GeneralProxy::registerApplication(const QString &appId, QDBus::CallMode mode) { call(mode, QStringLiteral("registerApplication"), appId); }
void GeneralProxy::cancelRemoteAction(qlonglong actionId, QDBus::CallMode mode) { call(mode, QStringLiteral("cancelRemoteAction"), actionId); }
void GeneralProxy::setWidgetModesConfig(const QString &widgetId, const QVariantMap &config, QDBus::CallMode mode) { call(mode, QStringLiteral("setWidgetModesConfig"), widgetId, Argument::map(config)); }
void GeneralProxy::setWidgetModeConfig(const QString &widgetId, const QString &widgetMode, const QVariantMap &config, QDBus::CallMode mode)
{
    call(mode, QStringLiteral("setWidgetModeConfig"), widgetId, widgetMode, Argument::map(config));
}
void GeneralProxy::setGlobalModeConfig(const QString &widgetMode, const QVariantMap &config, QDBus::CallMode mode) { call(mode, QStringLiteral("setGlobalModeConfig"), widgetMode, Argument::map(config)); }
void GeneralProxy::remoteInvocationResponse(qlonglong actionId, const QString &response, QDBus::CallMode mode) { call(mode, QStringLiteral("remoteInvocationResponse"), actionId, response); }
void GeneralProxy::lockAutoscroll(const QString &owner, QDBus::CallMode mode) { call(mode, QStringLiteral("lockAutoscroll"), owner); }
void GeneralProxy::unlockAutoscroll(const QString &owner, QDBus::CallMode mode) { call(mode, QStringLiteral("unlockAutoscroll"), owner); }
void GeneralProxy::lockSwitch(const QString &owner, QDBus::CallMode mode) { call(mode, QStringLiteral("lockSwitch"), owner); }
void GeneralProxy::unlockSwitch(const QString &owner, QDBus::CallMode mode) { call(mode, QStringLiteral("unlockSwitch"), owner); }
void GeneralProxy::switchToNextWidget(QDBus::CallMode mode) { call(mode, QStringLiteral("switchToNextWidget")); }
void GeneralProxy::switchToPreviousWidget(QDBus::CallMode mode) { call(mode, QStringLiteral("switchToPreviousWidget")); }
void GeneralProxy::renewUserInteractionBlock(QDBus::CallMode mode) { call(mode, QStringLiteral("renewUserInteractionBlock")); }

bool GeneralProxy::setWidgetSettings(const QString &widgetId, const QVariant &settings, QDBus::CallMode mode)
{
    return Reply::value<bool>(call(mode, QStringLiteral("setWidgetSettings"), widgetId, Json::write(settings)));
}
QVariantMap GeneralProxy::appInfo(const QString &appId, QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("appInfo"), appId)); }
QVariantMap GeneralProxy::widgetInfo(const QString &widgetId, QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("widgetInfo"), widgetId)); }
QVariantMap GeneralProxy::shortWidgetInfo(const QString &widgetId, QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("shortWidgetInfo"), widgetId)); }
QVariantMap GeneralProxy::appSettings(const QString &appId, QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("appSettings"), appId)); }
QVariantMap GeneralProxy::widgetSettings(const QString &widgetId, QDBus::CallMode mode) { return Reply::jsonMap(call(mode, QStringLiteral("widgetSettings"), widgetId)); }
QVariantList GeneralProxy::appSettingsDescr(const QString &appId, QDBus::CallMode mode) { return Reply::jsonList(call(mode, QStringLiteral("appSettingsDescr"), appId)); }
QVariantList GeneralProxy::widgetSettingsDescr(const QString &widgetId, QDBus::CallMode mode) { return Reply::jsonList(call(mode, QStringLiteral("widgetSettingsDescr"), widgetId)); }
QString GeneralProxy::widgetWorkingDir(const QString &widgetId, QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("widgetWorkingDir"), widgetId)); }
QString GeneralProxy::appWorkingDir(const QString &appId, QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("appWorkingDir"), appId)); }
QString GeneralProxy::activeWidget(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("activeWidget"))); }
QStringList GeneralProxy::widgetsForPkg(const QString &packageName, QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("widgetsForPkg"), packageName)); }
QStringList GeneralProxy::getWidgetOrdering(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("getWidgetOrdering"))); }
QStringList GeneralProxy::listOfRunningApps(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfRunningApps"))); }
QStringList GeneralProxy::listOfRunningWidgets(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfRunningWidgets"))); }
QStringList GeneralProxy::listOfInstalledWidgets(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfInstalledWidgets"))); }
QStringList GeneralProxy::listOfInstalledApps(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfInstalledApps"))); }
QStringList GeneralProxy::listOfInstalledSysApps(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfInstalledSysApps"))); }
QStringList GeneralProxy::listOfPreinstalledApps(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfPreinstalledApps"))); }
QStringList GeneralProxy::widgetListForAction(const QString &action, QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("widgetListForAction"), action)); }
qlonglong GeneralProxy::invokeRemoteAction(const QString &widgetId, const QString &action, const QVariantMap &parameters, QDBus::CallMode mode)
{
    return Reply::value<qlonglong>(call(mode, QStringLiteral("invokeRemoteAction"), widgetId, action, Argument::map(parameters)));
}
QVariantMap GeneralProxy::widgetModesInfo(const QString &widgetId, QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("widgetModesInfo"), widgetId)); }
QVariantMap GeneralProxy::globalModeInfo(const QString &widgetMode, QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("globalModeInfo"), widgetMode)); }
QVariantMap GeneralProxy::widgetModeInfo(const QString &widgetId, const QString &widgetMode, QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("widgetModeInfo"), widgetId, widgetMode)); }
QVariantMap GeneralProxy::serviceInfo(const QString &service, QDBus::CallMode mode) { return Reply::jsonMap(Reply::logged(call(mode, QStringLiteral("serviceInfo"), service), "service info failed")); }
QStringList GeneralProxy::listOfInstalledSystemServices(QDBus::CallMode mode)
{
    return Reply::value<QStringList>(Reply::logged(call(mode, QStringLiteral("listOfInstalledSystemServices")), "listOfInstalledSystemServices  failed"));
}

QDBusPendingCall GeneralProxy::appInfo(const QString &appId) { return asyncCall(QStringLiteral("appInfo"), appId); }
QDBusPendingCall GeneralProxy::widgetInfo(const QString &widgetId) { return asyncCall(QStringLiteral("widgetInfo"), widgetId); }
QDBusPendingCall GeneralProxy::shortWidgetInfo(const QString &widgetId) { return asyncCall(QStringLiteral("shortWidgetInfo"), widgetId); }
QDBusPendingCall GeneralProxy::listOfInstalledApps() { return asyncCall(QStringLiteral("listOfInstalledApps")); }
QDBusPendingCall GeneralProxy::widgetsForPkg(const QString &packageName) { return asyncCall(QStringLiteral("widgetsForPkg"), packageName); }
QDBusPendingCall GeneralProxy::sendRemoteEvent(const QString &event, const QVariantMap &parameters) { return asyncCall(QStringLiteral("sendRemoteEvent"), event, Argument::map(parameters)); }
QDBusPendingCall GeneralProxy::lockAutoscroll(const QString &owner) { return asyncCall(QStringLiteral("lockAutoscroll"), owner); }
QDBusPendingCall GeneralProxy::unlockAutoscroll(const QString &owner) { return asyncCall(QStringLiteral("unlockAutoscroll"), owner); }
QDBusPendingCall GeneralProxy::subscribeForEvents(const QString &widgetId, const QStringList &events) { return asyncCall(QStringLiteral("subscribeForEvents"), widgetId, events); }
QDBusPendingCall GeneralProxy::unsubscribeFromEvents(const QString &widgetId, const QStringList &events) { return asyncCall(QStringLiteral("unsubscribeFromEvents"), widgetId, events); }

bool GeneralProxy::connectWindowServerDidStarted(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("windowServerDidStarted"), receiver, slot); }
bool GeneralProxy::disconnectWindowServerDidStarted(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("windowServerDidStarted"), receiver, slot); }
bool GeneralProxy::connectAppStarted(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("appStarted"), receiver, slot); }
bool GeneralProxy::disconnectAppStarted(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("appStarted"), receiver, slot); }
bool GeneralProxy::connectAppStopped(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("appStopped"), receiver, slot); }
bool GeneralProxy::disconnectAppStopped(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("appStopped"), receiver, slot); }
bool GeneralProxy::connectNewAppAdded(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("newAppAdded"), receiver, slot); }
bool GeneralProxy::disconnectNewAppAdded(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("newAppAdded"), receiver, slot); }
bool GeneralProxy::connectApplicationDeleted(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("applicationDeleted"), receiver, slot); }
bool GeneralProxy::disconnectApplicationDeleted(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("applicationDeleted"), receiver, slot); }
bool GeneralProxy::connectWidgetStarted(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("widgetStarted"), receiver, slot); }
bool GeneralProxy::disconnectWidgetStarted(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("widgetStarted"), receiver, slot); }
bool GeneralProxy::connectWidgetStopped(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("widgetStopped"), receiver, slot); }
bool GeneralProxy::disconnectWidgetStopped(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("widgetStopped"), receiver, slot); }
bool GeneralProxy::connectWidgetDeleted(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("widgetDeleted"), receiver, slot); }
bool GeneralProxy::disconnectWidgetDeleted(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("widgetDeleted"), receiver, slot); }
bool GeneralProxy::connectNewWidgetCreated(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("newWidgetCreated"), receiver, slot); }
bool GeneralProxy::disconnectNewWidgetCreated(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("newWidgetCreated"), receiver, slot); }
bool GeneralProxy::connectWidgetBecomActive(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("widgetBecomActive"), receiver, slot); }
bool GeneralProxy::disconnectWidgetBecomActive(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("widgetBecomActive"), receiver, slot); }
bool GeneralProxy::connectWidgetSettingsChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("widgetSettingsChanged"), receiver, slot); }
bool GeneralProxy::disconnectWidgetSettingsChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("widgetSettingsChanged"), receiver, slot); }
bool GeneralProxy::connectWidgetOrderChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("widgetOrderChanged"), receiver, slot); }
bool GeneralProxy::disconnectWidgetOrderChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("widgetOrderChanged"), receiver, slot); }
bool GeneralProxy::connectApplicationChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("applicationChanged"), receiver, slot); }
bool GeneralProxy::disconnectApplicationChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("applicationChanged"), receiver, slot); }

} // namespace WindowManager
