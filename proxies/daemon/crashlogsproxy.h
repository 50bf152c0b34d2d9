#pragma once

#include <QDBusInterface>
#include <QStringList>

namespace Daemon
{

/// The crash logs that the device keeps.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class CrashlogsProxy : public QDBusInterface
{
public:
    CrashlogsProxy(QObject *parent, const QDBusConnection &connection);

    /// crashLogsList() -> as: the logs' names.
    [[nodiscard]] QStringList crashLogsList(QDBus::CallMode mode);
    /// crashLogDirectory() -> s: the directory that they are in.
    [[nodiscard]] QString crashLogDirectory(QDBus::CallMode mode);
};

} // namespace Daemon
