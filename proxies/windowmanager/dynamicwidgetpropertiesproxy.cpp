#include "windowmanager/dynamicwidgetpropertiesproxy.h"

#include "shapes/introspection.h"
#include "shapes/json.h"
#include "shapes/reply.h"

#include <QDebug>

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"widget.manager"};
const QLatin1String objectPath{"/widgets_properties"};
const QLatin1String interfaceName{"com.vorlet.widget_manager.widget_properties"};
} // namespace

namespace WindowManager
{

namespace
{
// Made once, when the program starts.
namespace Name
{
const QString registerProperty = QStringLiteral("registerProperty");
const QString removeProperty = QStringLiteral("removeProperty");
const QString updateProperty = QStringLiteral("updateProperty");
const QString valueForWidgetProperty = QStringLiteral("valueForWidgetProperty");
const QString allPropertiesForWidget = QStringLiteral("allPropertiesForWidget");
} // namespace Name

// The call goes out either way, by design: with no bytes when the data cannot be written.
QByteArray serialized(const QVariant &data)
{
    bool ok = false;
    QByteArray text = Json::write(data, &ok);
    if (!ok) {
        // "tot" is how the line has always read.
        qDebug() << "DynamicWidgetPropertiesProxy: Failed tot serialize data for update property";
    }
    return text;
}
} // namespace

DynamicWidgetPropertiesProxy::DynamicWidgetPropertiesProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void DynamicWidgetPropertiesProxy::registerProperty(const QString &widgetId, const QString &property, QDBus::CallMode mode) { call(mode, Name::registerProperty, widgetId, property); }
void DynamicWidgetPropertiesProxy::removeProperty(const QString &widgetId, const QString &property, QDBus::CallMode mode) { call(mode, Name::removeProperty, widgetId, property); }
void DynamicWidgetPropertiesProxy::updateProperty(const QString &widgetId, const QString &property, const QVariant &data, QDBus::CallMode mode)
{
    call(mode, Name::updateProperty, widgetId, property, serialized(data));
}

QVariant DynamicWidgetPropertiesProxy::valueForWidgetProperty(const QString &widgetId, const QString &property, QDBus::CallMode mode)
{
    return Reply::json(call(mode, Name::valueForWidgetProperty, widgetId, property));
}
QVariantMap DynamicWidgetPropertiesProxy::allPropertiesForWidget(const QString &widgetId, QDBus::CallMode mode) { return Reply::jsonMap(call(mode, Name::allPropertiesForWidget, widgetId)); }

} // namespace WindowManager
