#include "daemon/packagemanagerproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonPackageManagerProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::PackageManagerProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::PackageManagerProxy",
            p,
            {
                {"installApp", Shape::Command, "s", {text}, returning([p] { p->installApp(text, wait); })},
                {"installApps", Shape::Command, "as", {texts}, returning([p] { p->installApps(texts, wait); })},
                {"updateApp", Shape::Command, "s", {text}, returning([p] { p->updateApp(text, wait); })},
                {"updateApps", Shape::Command, "as", {texts}, returning([p] { p->updateApps(texts, wait); })},
                {"deleteApp", Shape::Command, "s", {text}, returning([p] { p->deleteApp(text, wait); })},
                {"deleteApps", Shape::Command, "as", {texts}, returning([p] { p->deleteApps(texts, wait); })},
                {"flushStatus", Shape::Command, "", {}, returning([p] { p->flushStatus(wait); })},
                {"forceUpdateRepository", Shape::Command, "", {}, returning([p] { p->forceUpdateRepository(wait); })},
                {"newVersionApps", Shape::JsonMap, "", {}, returning([p] { return p->newVersionApps(wait); })},
                {"status", Shape::JsonList, "", {}, returning([p] { return p->status(wait); })},
            },
            {}};
}
