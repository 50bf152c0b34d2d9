#pragma once

#include "proxytable.h"

ProxyTable daemonGeneralProxy(const QDBusConnection &connection);
ProxyTable daemonNetworkProxy(const QDBusConnection &connection);
ProxyTable windowManagerGeneralProxy(const QDBusConnection &connection);
ProxyTable daemonAudioProxy(const QDBusConnection &connection);
ProxyTable daemonBatteryProxy(const QDBusConnection &connection);
ProxyTable daemonBluetoothProxy(const QDBusConnection &connection);
ProxyTable daemonBrigntnessProxy(const QDBusConnection &connection);
ProxyTable daemonClockProxy(const QDBusConnection &connection);
ProxyTable daemonCrashlogsProxy(const QDBusConnection &connection);
ProxyTable daemonFilesystemProxy(const QDBusConnection &connection);
ProxyTable daemonPackageManagerProxy(const QDBusConnection &connection);
ProxyTable daemonSoundNotificationProxy(const QDBusConnection &connection);
ProxyTable daemonSetupProxy(const QDBusConnection &connection);
ProxyTable daemonRestServerProxy(const QDBusConnection &connection);
ProxyTable daemonOOMKillerProxy(const QDBusConnection &connection);
ProxyTable windowManagerSharedScreenProxy(const QDBusConnection &connection);
ProxyTable mqttClientGeneralProxy(const QDBusConnection &connection);
ProxyTable daemonScreenSaverProxy(const QDBusConnection &connection);
ProxyTable windowManagerApearanceProxy(const QDBusConnection &connection);
ProxyTable windowManagerNotificationsProxy(const QDBusConnection &connection);
ProxyTable windowManagerDynamicWidgetPropertiesProxy(const QDBusConnection &connection);
ProxyTable btNotificationsBTNotificationsProxy(const QDBusConnection &connection);
ProxyTable spotifyClientProxy(const QDBusConnection &connection);
ProxyTable daemonLightSensorProxy(const QDBusConnection &connection);
