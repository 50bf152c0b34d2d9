#include "daemon/restserverproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonRestServerProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::RestServerProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::RestServerProxy",
            p,
            {
                {"setAuth", Shape::Command, "ss", {text, second}, returning([p] { p->setAuth(text, second, wait); })},
                {"baseUrl", Shape::Text, "", {}, returning([p] { return p->baseUrl(wait); })},
                {"isServerRunning", Shape::Flag, "", {}, returning([p] { return p->isServerRunning(wait); })},
                {"isSecureConnection", Shape::Flag, "", {}, returning([p] { return p->isSecureConnection(wait); })},
            },
            {
                subscription("restServerDidStart", {}, p, &Proxy::connectRestServerDidStart, &Proxy::disconnectRestServerDidStart),
            }};
}
