#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Daemon
{

/// The display: its brightness and what it can show. The class is spelled as its users know it.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class BrigntnessProxy : public QDBusInterface
{
public:
    BrigntnessProxy(QObject *parent, const QDBusConnection &connection);

    /// setBrightness(i): the brightness, in the service's own range.
    void setBrightness(int brightness, QDBus::CallMode mode);
    /// setAutoBrightnessMode(b): whether the brightness follows the light.
    void setAutoBrightnessMode(bool enabled, QDBus::CallMode mode);
    /// setScreenOn(b): switches the display on or off.
    void setScreenOn(bool on, QDBus::CallMode mode);

    /// getBrightness() -> i: the brightness, in the service's own range.
    [[nodiscard]] int getBrightness(QDBus::CallMode mode);
    /// isAutoBrigtness() -> b: whether the brightness follows the light, spelled so on the bus.
    [[nodiscard]] bool isAutoBrigtness(QDBus::CallMode mode);
    /// isScreenOn() -> b: whether the display is on.
    [[nodiscard]] bool isScreenOn(QDBus::CallMode mode);
    /// getSpec() -> ay: a JSON object with "is_monochrome", "has_icon", "is_icon_rgb", "width", "height",
    /// "icon_width", "icon_height", "depth".
    [[nodiscard]] QVariantMap getSpec(QDBus::CallMode mode);
    /// getState() -> ay: a JSON object with "auto_brightness".
    [[nodiscard]] QVariantMap getState(QDBus::CallMode mode);
};

} // namespace Daemon
