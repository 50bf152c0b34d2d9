#pragma once

#include <QDBusInterface>
#include <QStringList>
#include <QVariant>

namespace Daemon
{

/// The screen saver and the modes that start it.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class ScreenSaverProxy : public QDBusInterface
{
public:
    ScreenSaverProxy(QObject *parent, const QDBusConnection &connection);

    /// disableScreenSaverForInterval(i): keeps it from starting for a while.
    void disableScreenSaverForInterval(int seconds, QDBus::CallMode mode);
    /// setEnabled(b): whether it may start at all.
    void setEnabled(bool enabled, QDBus::CallMode mode);
    /// setActive(b): starts or ends it now.
    void setActive(bool active, QDBus::CallMode mode);
    /// setScreenSaverWidget(s): the widget that it shows.
    void setScreenSaverWidget(const QString &widgetId, QDBus::CallMode mode);
    /// setIsSnoosed(b): puts it off; spelled so on the bus.
    void setIsSnoosed(bool snoosed, QDBus::CallMode mode);
    /// setScreenSaverModeSettings(sa{sv}): the settings of one mode.
    void setScreenSaverModeSettings(const QString &saverMode, const QVariantMap &settings, QDBus::CallMode mode);

    /// forceCheckActivator() -> b: checks now whether to start; true when it did.
    [[nodiscard]] bool forceCheckActivator(QDBus::CallMode mode);
    /// isSnoosed() -> b: whether it is put off; spelled so on the bus.
    [[nodiscard]] bool isSnoosed(QDBus::CallMode mode);
    /// isEnabled() -> b: whether it may start at all.
    [[nodiscard]] bool isEnabled(QDBus::CallMode mode);
    /// isActive() -> b: whether it is shown.
    [[nodiscard]] bool isActive(QDBus::CallMode mode);
    /// screenSaverWidget() -> s: the widget that it shows.
    [[nodiscard]] QString screenSaverWidget(QDBus::CallMode mode);
    /// screenSaverModesList() -> as: the modes' names.
    [[nodiscard]] QStringList screenSaverModesList(QDBus::CallMode mode);
    /// screenSaverModeSettings(s) -> a{sv}: one mode's settings, read with parseDBusMap().
    [[nodiscard]] QVariantMap screenSaverModeSettings(const QString &saverMode, QDBus::CallMode mode);
    /// screenSaverModesSettings() -> a{sv}: every mode's settings, read with parseDBusMap().
    [[nodiscard]] QVariantMap screenSaverModesSettings(QDBus::CallMode mode);

    /// Signal screenSaverWidgetChanged(s): the new widget's id.
    bool connectScreenSaverWidgetChanged(QObject *receiver, const char *slot);
    bool disconnectScreenSaverWidgetChanged(QObject *receiver, const char *slot);
    /// Signal screenSaverWidgetChanged(s): the same signal under a second name.
    bool connectWidgetChanged(QObject *receiver, const char *slot);
    bool disconnectWidgetChanged(QObject *receiver, const char *slot);
};

} // namespace Daemon
