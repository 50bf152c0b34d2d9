#include "daemon/setupproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonSetupProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::SetupProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::SetupProxy",
            p,
            {
                {"keyReceived", Shape::Command, "s", {text}, returning([p] { p->keyReceived(text, wait); })},
                {"devicePingReceived", Shape::Command, "", {}, returning([p] { p->devicePingReceived(wait); })},
                {"confirmErrors", Shape::Command, "", {}, returning([p] { p->confirmErrors(wait); })},
                {"cancel", Shape::Command, "", {}, returning([p] { p->cancel(wait); })},
                {"networkConfigReceived", Shape::Command, "ay", {jsonText}, returning([p] { p->networkConfigReceived(json, wait); })},
                {"setupStatus", Shape::Number, "", {}, returning([p] { return p->setupStatus(wait); })},
                {"setupConfirmation", Shape::Text, "", {}, returning([p] { return p->setupConfirmation(wait); })},
                {"state", Shape::Text, "", {}, returning([p] { return p->state(wait); })},
                {"setupInProgress", Shape::Flag, "", {}, returning([p] { return p->setupInProgress(wait); })},
            },
            {
                subscription("setupStateChanged", {text}, p, &Proxy::connectSetupStateChanged, &Proxy::disconnectSetupStateChanged),
                subscription("setupErrorOccured", {text}, p, &Proxy::connectSetupErrorOccured, &Proxy::disconnectSetupErrorOccured),
            }};
}
