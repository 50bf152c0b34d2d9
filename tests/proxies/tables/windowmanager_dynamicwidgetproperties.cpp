#include "tables.h"
#include "windowmanager/dynamicwidgetpropertiesproxy.h"

using namespace Sample;

ProxyTable windowManagerDynamicWidgetPropertiesProxy(const QDBusConnection &connection)
{
    using Proxy = WindowManager::DynamicWidgetPropertiesProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"WindowManager::DynamicWidgetPropertiesProxy",
            p,
            {
                {"registerProperty", Shape::Command, "ss", {text, second}, returning([p] { p->registerProperty(text, second, wait); })},
                {"removeProperty", Shape::Command, "ss", {text, second}, returning([p] { p->removeProperty(text, second, wait); })},
                {"updateProperty", Shape::Command, "ssay", {text, second, jsonText}, returning([p] { p->updateProperty(text, second, json, wait); })},
                {"valueForWidgetProperty", Shape::Json, "ss", {text, second}, returning([p] { return p->valueForWidgetProperty(text, second, wait); })},
                {"allPropertiesForWidget", Shape::JsonMap, "s", {text}, returning([p] { return p->allPropertiesForWidget(text, wait); })},
            },
            {}};
}
