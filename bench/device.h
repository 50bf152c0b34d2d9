#pragma once

#include "daemonservice.h"
#include "privatebus.h"
#include "qwixtdprocess.h"
#include "widgetmanagerservice.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <memory>

/// A set-up device on a bus of its own, and the shipped daemon on it. Functions throw CannotMeasure when what
/// they wait for does not come.
class Device : public QObject
{
    Q_OBJECT
public:
    static const QString service;
    static const QString interfaceName;
    static const QString apiKey;
    static const QString remoteId;

    /// @p bundle is what the daemon trusts.
    explicit Device(const QString &bundle);
    ~Device() override;

    DaemonService &daemonService();
    WidgetManagerService &widgetManager();
    QString busAddress() const;
    /// A bus connection of a widget's.
    QDBusConnection connection() const;
    /// The daemon's.
    qint64 processId() const;

    /// Starts the device offline, and the daemon, and returns when it has read the device.
    void start(const QString &serverHost);
    /// The same online, and returns when the daemon has its list and nothing to do.
    void startReady(const QString &serverHost);

    /// Returns when the daemon has taken notice.
    void goOffline();
    /// Returns at once.
    void goOnline();
    /// Whether the daemon has had its list.
    bool hasList() const;
    void waitForList();

    /// Asks for the registration of @p count widgets, numbered from @p first, and waits for each answer.
    void registerWidgets(int first, int count);
    void registerWidget(int number);
    /// Waits until the daemon's main thread has done what came before.
    void waitForMainThread();

    /// The id of the widget with that number.
    static QString widget(int number);
    /// What the daemon says of itself; its main thread makes the answer. Empty when nobody answers.
    static QString introspect(const QDBusConnection &bus);
    /// The message by which a widget asks @p serviceName for its registration.
    static QDBusMessage registration(const QString &serviceName, int number);

private Q_SLOTS:
    void noteStarted();
    void noteInternet(bool isAvailable);

private:
    PrivateBus bus;
    const QString connectionName;
    std::unique_ptr<DaemonService> daemon;
    std::unique_ptr<WidgetManagerService> widgets;
    QwixtdProcess process;
    int starts = 0;
    bool isOnline = false;
};
