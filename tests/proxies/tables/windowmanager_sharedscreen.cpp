#include "tables.h"
#include "windowmanager/sharedscreenproxy.h"

using namespace Sample;

ProxyTable windowManagerSharedScreenProxy(const QDBusConnection &connection)
{
    using Proxy = WindowManager::SharedScreenProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"WindowManager::SharedScreenProxy",
            p,
            {
                {"setScanRateEnterBufferingMode", Shape::Command, "i", {number}, returning([p] { p->setScanRateEnterBufferingMode(number, wait); })},
                {"restoreScanRate", Shape::Command, "", {}, returning([p] { p->restoreScanRate(wait); })},
                {"setCurrentPrivilegedApp", Shape::Command, "s", {text}, returning([p] { p->setCurrentPrivilegedApp(text, wait); })},
                {"scanRate", Shape::Number, "", {}, returning([p] { return p->scanRate(wait); })},
            },
            {}};
}
