#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Daemon
{

/// Where the device keeps its files, and how much room there is.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class FilesystemProxy : public QDBusInterface
{
public:
    FilesystemProxy(QObject *parent, const QDBusConnection &connection);

    /// getWidgetsDir() -> s: the widgets' directory.
    [[nodiscard]] QString getWidgetsDir(QDBus::CallMode mode);
    /// getAppsDir() -> s: the applications' directory.
    [[nodiscard]] QString getAppsDir(QDBus::CallMode mode);
    /// getDataDir() -> s: the directory for data.
    [[nodiscard]] QString getDataDir(QDBus::CallMode mode);
    /// getDiskState() -> ay: a JSON object with "total_flash", "free_flash", "total_ram", "free_ram",
    /// each as a qlonglong.
    [[nodiscard]] QVariantMap getDiskState(QDBus::CallMode mode);
};

} // namespace Daemon
