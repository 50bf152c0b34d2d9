#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace WindowManager
{

/// How the display scrolls from widget to widget. Spelled as on the bus.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class ApearanceProxy : public QDBusInterface
{
    Q_OBJECT

public:
    ApearanceProxy(QObject *parent, const QDBusConnection &connection);

    /// setCurrentScrollType(s): how the display scrolls.
    void setCurrentScrollType(const QString &type, QDBus::CallMode mode);
    /// setSpeedForScrollType(sd): how fast a type scrolls.
    void setSpeedForScrollType(const QString &type, double speed, QDBus::CallMode mode);
    /// setCurrentScrollTypeAndParams(sa{sv}): how the display scrolls, with its settings.
    void setCurrentScrollTypeAndParams(const QString &type, const QVariantMap &parameters, QDBus::CallMode mode);

    /// scrollSpeedForType(s) -> d: how fast a type scrolls.
    [[nodiscard]] double scrollSpeedForType(const QString &type, QDBus::CallMode mode);
    /// currentScrollType() -> s: how the display scrolls.
    [[nodiscard]] QString currentScrollType(QDBus::CallMode mode);
    /// currentScrollTypeInfo() -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap currentScrollTypeInfo(QDBus::CallMode mode);
    /// scrollTypeInfo(s) -> a{sv}: read with parseDBusMap().
    [[nodiscard]] QVariantMap scrollTypeInfo(const QString &type, QDBus::CallMode mode);
    /// scrollTypeInfos() -> av: read with parseDBusList().
    [[nodiscard]] QVariantList scrollTypeInfos(QDBus::CallMode mode);

    /// Signal currentScrollTypeChanged(s): the new type.
    bool connectCurrentScrollTypeChanged(QObject *receiver, const char *slot);
    bool disconnectCurrentScrollTypeChanged(QObject *receiver, const char *slot);
    /// Signal scrollSpeedForTypeChanged(sd): a type and its new speed.
    bool connectScrollSpeedForTypeChanged(QObject *receiver, const char *slot);
    bool disconnectScrollSpeedForTypeChanged(QObject *receiver, const char *slot);
};

} // namespace WindowManager
