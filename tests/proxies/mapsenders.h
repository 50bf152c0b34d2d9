#pragma once

#include <QDBusConnection>
#include <QVariantMap>

#include <functional>
#include <vector>

/// One member that sends a map, and how a program reads the map that it changes and writes back.
struct MapSender {
    enum class Source { ParsedMap, ConvertedMap, JsonMap };

    const char *member;
    /// The call's error name; empty when it went well or was not waited for.
    std::function<QString(const QVariantMap &, QDBus::CallMode)> send;
    Source source;
    std::function<QVariantMap()> read;
};

/// Every member that sends a map. The proxies live as long as the senders.
std::vector<MapSender> mapSenders(const QDBusConnection &connection);
