#pragma once

#include <QDBusInterface>
#include <QStringList>
#include <QVariant>

namespace Daemon
{

/// Installs, updates and deletes applications.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class PackageManagerProxy : public QDBusInterface
{
public:
    PackageManagerProxy(QObject *parent, const QDBusConnection &connection);

    /// installApp(s): installs one application.
    void installApp(const QString &appId, QDBus::CallMode mode);
    /// installApps(as): installs several applications.
    void installApps(const QStringList &appIds, QDBus::CallMode mode);
    /// updateApp(s): updates one application.
    void updateApp(const QString &appId, QDBus::CallMode mode);
    /// updateApps(as): updates several applications.
    void updateApps(const QStringList &appIds, QDBus::CallMode mode);
    /// deleteApp(s): deletes one application.
    void deleteApp(const QString &appId, QDBus::CallMode mode);
    /// deleteApps(as): deletes several applications.
    void deleteApps(const QStringList &appIds, QDBus::CallMode mode);
    /// flushStatus(): clears what status() returns.
    void flushStatus(QDBus::CallMode mode);
    /// forceUpdateRepository(): reads the list of packages again now.
    void forceUpdateRepository(QDBus::CallMode mode);

    /// newVersionApps() -> ay: a JSON object, the applications with a newer version.
    [[nodiscard]] QVariantMap newVersionApps(QDBus::CallMode mode);
    /// status() -> ay: a JSON array, what is being done.
    [[nodiscard]] QVariantList status(QDBus::CallMode mode);
};

} // namespace Daemon
