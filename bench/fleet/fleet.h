#pragma once

#include "device.h"
#include "fleetserver.h"
#include "plot.h"
#include "wiremeter.h"

#include <QElapsedTimer>
#include <QObject>

#include <memory>
#include <vector>

/// One device of the fleet, with a count of what its daemon announced.
class FleetDevice : public QObject
{
    Q_OBJECT
public:
    explicit FleetDevice(const QString &remoteId);

    Device &device();
    int registeredCount() const;
    bool hasList() const;

private Q_SLOTS:
    void noteRegistered();

private:
    Device ownDevice;
    int registered = 0;
};

/// What one step of the fleet asked of the server. A request belongs to the step in which it began.
struct FleetStep {
    QString name;
    double beginMs = 0; ///< milliseconds since the epoch
    double inStepSeconds =
        0; ///< until the last device had what it asked for; 0 when that is not the step's aim
    double seconds = 0;
    int requests = 0;
    int handshakes = 0;
    int resumed = 0; ///< of these, those that went on with an earlier session
    int busiestSecond = 0;
    double processorMsOfDevice = 0; ///< of the server's front
    double bytesOfRequest = 0;      ///< on the wire, of one device's that ended in the step; 0 without any
};

/// Many devices and one server; functions throw CannotMeasure.
class Fleet
{
public:
    /// After all is done, boot and recovery go on for @p pauseMs: what does a fleet ask for that has nothing
    /// to do?
    Fleet(int devices, int pauseMs);

    /// All devices see the internet at one moment, and ask for their lists.
    void boot();
    /// The server fails for @p seconds, each time at once or after @p holdSeconds; at the beginning each
    /// device is asked for @p requests registrations.
    void outage(int seconds, int holdSeconds, int requests);
    /// The server is back, until all is done.
    void recover(int requests);

    /// What was asked, after the last step: what the server held back is known only when it is answered.
    QVector<FleetStep> steps();
    Plot plot();

private:
    void begin(const QString &name);
    void end(double inStepSeconds);
    double secondsOfStep() const;
    /// Whole seconds since the first step began.
    int secondOf(double ms) const;
    void countRequests(FleetStep &step, double endMs);

    const int pauseMs;
    FleetServer server;
    WireMeter meter;
    std::vector<std::unique_ptr<FleetDevice>> devices;
    QVector<FleetStep> taken;
    QElapsedTimer stepTime;
    qint64 processorBefore = 0;
};
