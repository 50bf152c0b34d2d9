#include "tables.h"
#include "windowmanager/apearanceproxy.h"

using namespace Sample;

ProxyTable windowManagerApearanceProxy(const QDBusConnection &connection)
{
    using Proxy = WindowManager::ApearanceProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"WindowManager::ApearanceProxy",
            p,
            {
                {"setCurrentScrollType", Shape::Command, "s", {text}, returning([p] { p->setCurrentScrollType(text, wait); })},
                {"setSpeedForScrollType", Shape::Command, "sd", {text, real}, returning([p] { p->setSpeedForScrollType(text, real, wait); })},
                {"setCurrentScrollTypeAndParams", Shape::Command, "sa{sv}", {text, map}, returning([p] { p->setCurrentScrollTypeAndParams(text, map, wait); })},
                {"scrollSpeedForType", Shape::Real, "s", {text}, returning([p] { return p->scrollSpeedForType(text, wait); })},
                {"currentScrollType", Shape::Text, "", {}, returning([p] { return p->currentScrollType(wait); })},
                {"currentScrollTypeInfo", Shape::Map, "", {}, returning([p] { return p->currentScrollTypeInfo(wait); })},
                {"scrollTypeInfo", Shape::Map, "s", {text}, returning([p] { return p->scrollTypeInfo(text, wait); })},
                {"scrollTypeInfos", Shape::List, "", {}, returning([p] { return p->scrollTypeInfos(wait); })},
            },
            {
                subscription("currentScrollTypeChanged", {text}, p, &Proxy::connectCurrentScrollTypeChanged, &Proxy::disconnectCurrentScrollTypeChanged),
                subscription("scrollSpeedForTypeChanged", {text, real}, p, &Proxy::connectScrollSpeedForTypeChanged, &Proxy::disconnectScrollSpeedForTypeChanged),
            }};
}
