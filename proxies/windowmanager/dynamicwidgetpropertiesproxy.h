#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace WindowManager
{

/// Values that a widget shares while it runs.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class DynamicWidgetPropertiesProxy : public QDBusInterface
{
    Q_OBJECT

public:
    DynamicWidgetPropertiesProxy(QObject *parent, const QDBusConnection &connection);

    /// registerProperty(ss): begins to share a value.
    void registerProperty(const QString &widgetId, const QString &property, QDBus::CallMode mode);
    /// removeProperty(ss): ends sharing it.
    void removeProperty(const QString &widgetId, const QString &property, QDBus::CallMode mode);
    /// updateProperty(ssay): a new value as JSON text. What JSON cannot carry is logged and sent as no bytes.
    void updateProperty(const QString &widgetId, const QString &property, const QVariant &data, QDBus::CallMode mode);

    /// valueForWidgetProperty(ss) -> ay: any JSON value.
    [[nodiscard]] QVariant valueForWidgetProperty(const QString &widgetId, const QString &property, QDBus::CallMode mode);
    /// allPropertiesForWidget(s) -> ay: a JSON object, the values by their properties' names.
    [[nodiscard]] QVariantMap allPropertiesForWidget(const QString &widgetId, QDBus::CallMode mode);
};

} // namespace WindowManager
