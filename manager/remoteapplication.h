#pragma once

#include <QString>

/// One application on the developer server.
struct RemoteApplication {
    QString appId;      ///< the server's id
    QString identifier; ///< the widget's uuid on the device
    QString name;
    QString type;
};

inline bool operator==(const RemoteApplication &a, const RemoteApplication &b)
{
    return a.appId == b.appId && a.identifier == b.identifier && a.name == b.name && a.type == b.type;
}

inline bool operator!=(const RemoteApplication &a, const RemoteApplication &b)
{
    return !(a == b);
}
