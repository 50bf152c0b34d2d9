#include "tables.h"

std::vector<ProxyTable> everyProxyTable(const QDBusConnection &connection)
{
    return {
        daemonGeneralProxy(connection),
        daemonNetworkProxy(connection),
        windowManagerGeneralProxy(connection),
        daemonAudioProxy(connection),
        daemonBatteryProxy(connection),
        daemonBluetoothProxy(connection),
        daemonBrigntnessProxy(connection),
        daemonClockProxy(connection),
        daemonCrashlogsProxy(connection),
        daemonFilesystemProxy(connection),
        daemonPackageManagerProxy(connection),
        daemonSoundNotificationProxy(connection),
        daemonSetupProxy(connection),
        daemonRestServerProxy(connection),
        daemonOOMKillerProxy(connection),
        windowManagerSharedScreenProxy(connection),
        mqttClientGeneralProxy(connection),
        daemonScreenSaverProxy(connection),
        windowManagerApearanceProxy(connection),
        windowManagerNotificationsProxy(connection),
        windowManagerDynamicWidgetPropertiesProxy(connection),
        btNotificationsBTNotificationsProxy(connection),
        spotifyClientProxy(connection),
        daemonLightSensorProxy(connection),
    };
}
