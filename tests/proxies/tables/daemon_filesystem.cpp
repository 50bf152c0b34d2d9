#include "daemon/filesystemproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonFilesystemProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::FilesystemProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::FilesystemProxy",
            p,
            {
                {"getWidgetsDir", Shape::Text, "", {}, returning([p] { return p->getWidgetsDir(wait); })},
                {"getAppsDir", Shape::Text, "", {}, returning([p] { return p->getAppsDir(wait); })},
                {"getDataDir", Shape::Text, "", {}, returning([p] { return p->getDataDir(wait); })},
                {"getDiskState", Shape::JsonIntegers, "", {}, returning([p] { return p->getDiskState(wait); })},
            },
            {}};
}
