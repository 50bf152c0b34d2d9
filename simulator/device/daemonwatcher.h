#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

/// What a widget sees of the application daemon: its signals on the bus, and its methods, called without
/// waiting. It has a bus connection of its own.
class DaemonWatcher : public QObject
{
    Q_OBJECT
public:
    explicit DaemonWatcher(const QString &busAddress, QObject *parent = nullptr);
    ~DaemonWatcher() override;

    /// Subscribes to the daemon's signals and returns when that is in force, so that none is missed that is
    /// sent afterwards; false when the bus is not there or refuses.
    bool start();
    /// Whether the daemon's name is on the bus now. Asks the bus and waits for its answer.
    bool isDaemonPresent() const;

    /// Each calls the daemon's method of a similar name; answered() reports what came back.
    void registerApplication(const QString &uuid, const QString &name, const QString &type);
    void updateApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                           const QString &type);
    void deleteApplication(const QString &qwixtId, const QString &uuid, const QString &type);

Q_SIGNALS:
    /// The daemon sent the signal @p member with these strings.
    void received(const QString &member, const QStringList &arguments);
    /// A call was answered; @p error is empty when it succeeded.
    void answered(const QString &member, const QStringList &arguments, const QString &error);
    void daemonAppeared();
    void daemonVanished();
    /// The connection to the bus is gone, and does not come back.
    void busLost();

private Q_SLOTS:
    void daemonDidStarted();
    void applicationRegistered(const QString &uuid, const QString &qwixtId, const QString &type);
    void applicationDeleted(const QString &uuid, const QString &qwixtId, const QString &type);

private:
    void call(const QString &member, const QStringList &arguments);

    const QString connectionName;
    QDBusConnection bus;
};
