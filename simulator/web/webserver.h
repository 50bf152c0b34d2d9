#pragma once

#include "busevents.h"
#include "commandinterpreter.h"
#include "devicesimulator.h"
#include "eventlog.h"
#include "httpevents.h"

#include <QTimer>

/// The device on a screen: gives a browser the page, the stream of events, and the prompt's commands. Plain
/// HTTP on 127.0.0.1, for the pages that it gave out and nobody else's.
class WebServer : public HttpServer
{
    Q_OBJECT
public:
    /// Both must outlive the server.
    WebServer(DeviceSimulator &simulator_, CommandInterpreter &interpreter_, QObject *parent = nullptr);

    /// Watches the bus and listens. Returns what is wrong; empty when all is well.
    QString open(const QString &busAddress, quint16 port);

    const EventLog &events() const;

protected:
    HttpAnswer ordinaryAnswer(const HttpRequest &request) override;

private:
    HttpAnswer page(const QString &name) const;
    HttpAnswer stream(const HttpRequest &request);
    HttpAnswer obey(const HttpRequest &request);
    HttpAnswer traceFile() const;
    void announce();

    DeviceSimulator &simulator;
    CommandInterpreter &interpreter;
    EventLog log;
    BusMonitor monitor;
    BusEvents busEvents;
    HttpEvents httpEvents;
    /// Gathers what comes in quick succession.
    QTimer pause;
};
