#pragma once

#include <QDBusInterface>

namespace Daemon
{

/// Who is ended first when memory runs out. Each command names a process or an application.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class OOMKillerProxy : public QDBusInterface
{
public:
    OOMKillerProxy(QObject *parent, const QDBusConnection &connection);

    /// lowerKillPriority(i): ends this process later than others.
    void lowerKillPriority(int processId, QDBus::CallMode mode);
    /// lowerKillPriority(s): ends this application later than others.
    void lowerKillPriority(const QString &appId, QDBus::CallMode mode);
    /// setFistPlaceKillPriotity(i): ends this process first; spelled so on the bus.
    void setFistPlaceKillPriotity(int processId, QDBus::CallMode mode);
    /// setFistPlaceKillPriotity(s): ends this application first; spelled so on the bus.
    void setFistPlaceKillPriotity(const QString &appId, QDBus::CallMode mode);
    /// setNeverKillPriority(i): never ends this process.
    void setNeverKillPriority(int processId, QDBus::CallMode mode);
    /// setNeverKillPriority(s): never ends this application.
    void setNeverKillPriority(const QString &appId, QDBus::CallMode mode);
};

} // namespace Daemon
