#include "tables.h"

std::vector<ProxyTable> everyProxyTable(const QDBusConnection &connection)
{
    return {
        daemonGeneralProxy(connection),
        daemonNetworkProxy(connection),
        windowManagerGeneralProxy(connection),
    };
}
