#pragma once

#include "proxytable.h"

ProxyTable daemonGeneralProxy(const QDBusConnection &connection);
ProxyTable daemonNetworkProxy(const QDBusConnection &connection);
ProxyTable windowManagerGeneralProxy(const QDBusConnection &connection);
