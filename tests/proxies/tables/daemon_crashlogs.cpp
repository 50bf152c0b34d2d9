#include "daemon/crashlogsproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonCrashlogsProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::CrashlogsProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::CrashlogsProxy",
            p,
            {
                {"crashLogsList", Shape::Texts, "", {}, returning([p] { return p->crashLogsList(wait); })},
                {"crashLogDirectory", Shape::Text, "", {}, returning([p] { return p->crashLogDirectory(wait); })},
            },
            {}};
}
