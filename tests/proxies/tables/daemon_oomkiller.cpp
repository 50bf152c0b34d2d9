#include "daemon/oomkillerproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonOOMKillerProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::OOMKillerProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::OOMKillerProxy",
            p,
            {
                {"lowerKillPriority", Shape::Command, "i", {number}, returning([p] { p->lowerKillPriority(number, wait); })},
                {"lowerKillPriority", Shape::Command, "s", {text}, returning([p] { p->lowerKillPriority(text, wait); })},
                {"setFistPlaceKillPriotity", Shape::Command, "i", {number}, returning([p] { p->setFistPlaceKillPriotity(number, wait); })},
                {"setFistPlaceKillPriotity", Shape::Command, "s", {text}, returning([p] { p->setFistPlaceKillPriotity(text, wait); })},
                {"setNeverKillPriority", Shape::Command, "i", {number}, returning([p] { p->setNeverKillPriority(number, wait); })},
                {"setNeverKillPriority", Shape::Command, "s", {text}, returning([p] { p->setNeverKillPriority(text, wait); })},
            },
            {}};
}
