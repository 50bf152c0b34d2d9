#pragma once

#include "daemonprocess.h"
#include "daemonservice.h"
#include "daemonwatcher.h"
#include "developerserver.h"
#include "widgetmanagerservice.h"

#include <QObject>

/// A whole device without the application daemon: the device's services on one bus, the developer server, and
/// a widget's view of the daemon. Everything that passes is reported line by line.
class DeviceSimulator : public QObject
{
    Q_OBJECT
public:
    explicit DeviceSimulator(const QString &busAddress, QObject *parent = nullptr);
    ~DeviceSimulator() override;

    DaemonService &daemon();
    WidgetManagerService &widgetManager();
    DeveloperServer &server();
    DaemonWatcher &watcher();
    /// The application daemon, if the simulator runs it.
    DaemonProcess &daemonProcess();

    /// Gives the device its API key, which the server accepts from then on; announced on the bus.
    void setApiKey(const QString &key);
    /// The same for the state that a test begins with: not announced.
    void setApiKeyQuietly(const QString &key);
    /// The device forgets its key, announced on the bus. The server goes on accepting the old one.
    void clearApiKey();
    /// Puts a line of a person's own into the trace.
    void note(const QString &text);

Q_SIGNALS:
    /// One event, as "hh:mm:ss.zzz KIND TEXT" without a line end. KIND is bus (a call of a device service and
    /// its answer), device (what the device does), http, signal (of the daemon), widget (calls of the
    /// daemon) or note (a person's own). No API key is ever shown.
    void traced(const QString &line);
    void noted(const QString &text);

private:
    void trace(const char *kind, const QString &text);
    void follow(BusService &service);
    void traceRequest(const HttpRequest &request);

    DaemonService daemonService;
    WidgetManagerService widgetManagerService;
    DeveloperServer developerServer;
    DaemonWatcher daemonWatcher;
    DaemonProcess process;
};
