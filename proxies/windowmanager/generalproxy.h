#pragma once

#include <QDBusInterface>
#include <QDBusPendingCall>
#include <QStringList>
#include <QVariant>

namespace WindowManager
{

/// The widget manager: applications, their widgets, what is shown and in which order.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class GeneralProxy : public QDBusInterface
{
public:
    GeneralProxy(QObject *parent, const QDBusConnection &connection);

    /// startApp(s): starts an application.
    void startApp(const QString &appId, QDBus::CallMode mode);
    /// stopApp(s): stops an application.
    void stopApp(const QString &appId, QDBus::CallMode mode);
    /// startWidget(s): starts a widget.
    void startWidget(const QString &widgetId, QDBus::CallMode mode);
    /// stopWidget(s): stops a widget.
    void stopWidget(const QString &widgetId, QDBus::CallMode mode);
    /// createWidget(ss): a new widget of an application.
    void createWidget(const QString &appId, const QString &widgetType, QDBus::CallMode mode);
    /// cloneWidget(s): a second widget with the same settings.
    void cloneWidget(const QString &widgetId, QDBus::CallMode mode);
    /// deleteWidget(s): removes a widget.
    void deleteWidget(const QString &widgetId, QDBus::CallMode mode);
    /// switchTo(s): shows a widget.
    void switchTo(const QString &widgetId, QDBus::CallMode mode);
    /// showNotification(s): shows a widget above the active one.
    void showNotification(const QString &widgetId, QDBus::CallMode mode);
    /// sendMessage(say): JSON text for an application or a widget.
    void sendMessage(const QString &receiver, const QVariant &message, QDBus::CallMode mode);
    /// setWidgetOrdering(ay): a JSON array of widget ids, first to last.
    void setWidgetOrdering(const QVariant &ordering, QDBus::CallMode mode);
    /// syncAppsAndWidgets(): reads the installed packages again.
    void syncAppsAndWidgets(QDBus::CallMode mode);
    /// requestForSwitch(s): asks to be shown when the owner does not interact.
    void requestForSwitch(const QString &widgetId, QDBus::CallMode mode);
    /// dismissNotificationWidget(s): takes back showNotification().
    void dismissNotificationWidget(const QString &widgetId, QDBus::CallMode mode);
    /// registerApplication(s): announces a running application.
    void registerApplication(const QString &appId, QDBus::CallMode mode);
    /// cancelRemoteAction(x): gives up what invokeRemoteAction() began.
    void cancelRemoteAction(qlonglong actionId, QDBus::CallMode mode);
    /// setWidgetModesConfig(sa{sv}): the settings of all modes of a widget.
    void setWidgetModesConfig(const QString &widgetId, const QVariantMap &config, QDBus::CallMode mode);
    /// setWidgetModeConfig(ssa{sv}): the settings of one mode of a widget.
    void setWidgetModeConfig(const QString &widgetId, const QString &widgetMode, const QVariantMap &config, QDBus::CallMode mode);
    /// setGlobalModeConfig(sa{sv}): the settings of a mode for every widget.
    void setGlobalModeConfig(const QString &widgetMode, const QVariantMap &config, QDBus::CallMode mode);
    /// remoteInvocationResponse(xs): a widget's answer to a remote action.
    void remoteInvocationResponse(qlonglong actionId, const QString &response, QDBus::CallMode mode);
    /// lockAutoscroll(s): keeps the display from scrolling on.
    void lockAutoscroll(const QString &owner, QDBus::CallMode mode);
    /// unlockAutoscroll(s): takes back the owner's lockAutoscroll().
    void unlockAutoscroll(const QString &owner, QDBus::CallMode mode);
    /// lockSwitch(s): keeps the active widget on the display.
    void lockSwitch(const QString &owner, QDBus::CallMode mode);
    /// unlockSwitch(s): takes back the owner's lockSwitch().
    void unlockSwitch(const QString &owner, QDBus::CallMode mode);
    /// switchToNextWidget(): one further in the order.
    void switchToNextWidget(QDBus::CallMode mode);
    /// switchToPreviousWidget(): one back in the order.
    void switchToPreviousWidget(QDBus::CallMode mode);
    /// renewUserInteractionBlock(): counts as an interaction of the owner.
    void renewUserInteractionBlock(QDBus::CallMode mode);

    /// setWidgetSettings(say) -> b: whether the JSON object was taken as the widget's settings.
    [[nodiscard]] bool setWidgetSettings(const QString &widgetId, const QVariant &settings, QDBus::CallMode mode);
    /// appInfo(s) -> ay: a JSON object.
    [[nodiscard]] QVariantMap appInfo(const QString &appId, QDBus::CallMode mode);
    /// widgetInfo(s) -> ay: a JSON object.
    [[nodiscard]] QVariantMap widgetInfo(const QString &widgetId, QDBus::CallMode mode);
    /// shortWidgetInfo(s) -> ay: a JSON object.
    [[nodiscard]] QVariantMap shortWidgetInfo(const QString &widgetId, QDBus::CallMode mode);
    /// appSettings(s) -> ay: a JSON object.
    [[nodiscard]] QVariantMap appSettings(const QString &appId, QDBus::CallMode mode);
    /// widgetSettings(s) -> ay: a JSON object.
    [[nodiscard]] QVariantMap widgetSettings(const QString &widgetId, QDBus::CallMode mode);
    /// appSettingsDescr(s) -> ay: a JSON array, what can be set.
    [[nodiscard]] QVariantList appSettingsDescr(const QString &appId, QDBus::CallMode mode);
    /// widgetSettingsDescr(s) -> ay: a JSON array, what can be set.
    [[nodiscard]] QVariantList widgetSettingsDescr(const QString &widgetId, QDBus::CallMode mode);
    /// widgetWorkingDir(s) -> s: the widget's directory.
    [[nodiscard]] QString widgetWorkingDir(const QString &widgetId, QDBus::CallMode mode);
    /// appWorkingDir(s) -> s: the application's directory.
    [[nodiscard]] QString appWorkingDir(const QString &appId, QDBus::CallMode mode);
    /// activeWidget() -> s: the id of the widget on the display.
    [[nodiscard]] QString activeWidget(QDBus::CallMode mode);
    /// widgetsForPkg(s) -> as: the widgets of one package.
    [[nodiscard]] QStringList widgetsForPkg(const QString &packageName, QDBus::CallMode mode);
    /// getWidgetOrdering() -> as: widget ids, first to last.
    [[nodiscard]] QStringList getWidgetOrdering(QDBus::CallMode mode);
    /// listOfRunningApps() -> as: application ids.
    [[nodiscard]] QStringList listOfRunningApps(QDBus::CallMode mode);
    /// listOfRunningWidgets() -> as: widget ids.
    [[nodiscard]] QStringList listOfRunningWidgets(QDBus::CallMode mode);
    /// listOfInstalledWidgets() -> as: widget ids.
    [[nodiscard]] QStringList listOfInstalledWidgets(QDBus::CallMode mode);
    /// listOfInstalledApps() -> as: application ids.
    [[nodiscard]] QStringList listOfInstalledApps(QDBus::CallMode mode);
    /// listOfInstalledSysApps() -> as: ids of applications that belong to the firmware.
    [[nodiscard]] QStringList listOfInstalledSysApps(QDBus::CallMode mode);
    /// listOfPreinstalledApps() -> as: ids of applications that came with the device.
    [[nodiscard]] QStringList listOfPreinstalledApps(QDBus::CallMode mode);
    /// widgetListForAction(s) -> as: the widgets that offer a remote action.
    [[nodiscard]] QStringList widgetListForAction(const QString &action, QDBus::CallMode mode);
    /// invokeRemoteAction(ssa{sv}) -> x: the id of the action begun.
    [[nodiscard]] qlonglong invokeRemoteAction(const QString &widgetId, const QString &action, const QVariantMap &parameters, QDBus::CallMode mode);
    /// widgetModesInfo(s) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap widgetModesInfo(const QString &widgetId, QDBus::CallMode mode);
    /// globalModeInfo(s) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap globalModeInfo(const QString &widgetMode, QDBus::CallMode mode);
    /// widgetModeInfo(ss) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap widgetModeInfo(const QString &widgetId, const QString &widgetMode, QDBus::CallMode mode);
    /// serviceInfo(s) -> ay: a JSON object; an error is logged.
    [[nodiscard]] QVariantMap serviceInfo(const QString &service, QDBus::CallMode mode);
    /// listOfInstalledSystemServices() -> as: service names; an error is logged.
    [[nodiscard]] QStringList listOfInstalledSystemServices(QDBus::CallMode mode);

    /// appInfo(s) -> ay: a JSON object.
    [[nodiscard]] QDBusPendingCall appInfo(const QString &appId);
    /// widgetInfo(s) -> ay: a JSON object.
    [[nodiscard]] QDBusPendingCall widgetInfo(const QString &widgetId);
    /// shortWidgetInfo(s) -> ay: a JSON object.
    [[nodiscard]] QDBusPendingCall shortWidgetInfo(const QString &widgetId);
    /// listOfInstalledApps() -> as: as the getter of this name.
    [[nodiscard]] QDBusPendingCall listOfInstalledApps();
    /// widgetsForPkg(s) -> as: as the getter of this name.
    [[nodiscard]] QDBusPendingCall widgetsForPkg(const QString &packageName);
    /// sendRemoteEvent(sa{sv}): an event for whoever subscribed.
    [[nodiscard]] QDBusPendingCall sendRemoteEvent(const QString &event, const QVariantMap &parameters);
    /// lockAutoscroll(s): as the command of this name.
    [[nodiscard]] QDBusPendingCall lockAutoscroll(const QString &owner);
    /// unlockAutoscroll(s): as the command of this name.
    [[nodiscard]] QDBusPendingCall unlockAutoscroll(const QString &owner);
    /// subscribeForEvents(sas): events that a widget wants.
    [[nodiscard]] QDBusPendingCall subscribeForEvents(const QString &widgetId, const QStringList &events);
    /// unsubscribeFromEvents(sas): takes back subscribeForEvents().
    [[nodiscard]] QDBusPendingCall unsubscribeFromEvents(const QString &widgetId, const QStringList &events);

    /// Signal windowServerDidStarted(): the service is up again, spelled so on the bus.
    bool connectWindowServerDidStarted(QObject *receiver, const char *slot);
    bool disconnectWindowServerDidStarted(QObject *receiver, const char *slot);
    /// Signal appStarted(s): the application's id.
    bool connectAppStarted(QObject *receiver, const char *slot);
    bool disconnectAppStarted(QObject *receiver, const char *slot);
    /// Signal appStopped(s): the application's id.
    bool connectAppStopped(QObject *receiver, const char *slot);
    bool disconnectAppStopped(QObject *receiver, const char *slot);
    /// Signal newAppAdded(s): the application's id.
    bool connectNewAppAdded(QObject *receiver, const char *slot);
    bool disconnectNewAppAdded(QObject *receiver, const char *slot);
    /// Signal applicationDeleted(s): the application's id.
    bool connectApplicationDeleted(QObject *receiver, const char *slot);
    bool disconnectApplicationDeleted(QObject *receiver, const char *slot);
    /// Signal widgetStarted(s): the widget's id.
    bool connectWidgetStarted(QObject *receiver, const char *slot);
    bool disconnectWidgetStarted(QObject *receiver, const char *slot);
    /// Signal widgetStopped(s): the widget's id.
    bool connectWidgetStopped(QObject *receiver, const char *slot);
    bool disconnectWidgetStopped(QObject *receiver, const char *slot);
    /// Signal widgetDeleted(ss): the id of the package, then the widget's.
    bool connectWidgetDeleted(QObject *receiver, const char *slot);
    bool disconnectWidgetDeleted(QObject *receiver, const char *slot);
    /// Signal newWidgetCreated(ss): the id of the package, then the widget's.
    bool connectNewWidgetCreated(QObject *receiver, const char *slot);
    bool disconnectNewWidgetCreated(QObject *receiver, const char *slot);
    /// Signal widgetBecomActive(s): the widget's id, spelled so on the bus.
    bool connectWidgetBecomActive(QObject *receiver, const char *slot);
    bool disconnectWidgetBecomActive(QObject *receiver, const char *slot);
    /// Signal widgetSettingsChanged(s): the widget's id.
    bool connectWidgetSettingsChanged(QObject *receiver, const char *slot);
    bool disconnectWidgetSettingsChanged(QObject *receiver, const char *slot);
    /// Signal widgetOrderChanged(as): the new order.
    bool connectWidgetOrderChanged(QObject *receiver, const char *slot);
    bool disconnectWidgetOrderChanged(QObject *receiver, const char *slot);
    /// Signal applicationChanged(s): the application's id.
    bool connectApplicationChanged(QObject *receiver, const char *slot);
    bool disconnectApplicationChanged(QObject *receiver, const char *slot);
};

} // namespace WindowManager
