#include "fleet.h"

#include "certificates.h"
#include "measures.h"

#include <QDateTime>
#include <QSet>
#include <QTest>

#include <algorithm>

namespace
{
constexpr int patienceMs = 300000;
constexpr double msPerSecond = 1000;
constexpr double nsPerMs = 1e6;

double nowMs()
{
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch());
}

bool isSuccess(const FleetRequest &request)
{
    return request.status >= 200 && request.status <= 299;
}
} // namespace

FleetDevice::FleetDevice(const QString &remoteId)
    : ownDevice(Certificates::shared().authority())
{
    ownDevice.daemonService().setRemoteId(remoteId);
    ownDevice.connection().connect(QString(), QString(), Device::interfaceName,
                                   QStringLiteral("applicationRegistered"), this, SLOT(noteRegistered()));
}

Device &FleetDevice::device()
{
    return ownDevice;
}

int FleetDevice::registeredCount() const
{
    return registered;
}

bool FleetDevice::hasList() const
{
    return ownDevice.hasList();
}

void FleetDevice::noteRegistered()
{
    ++registered;
}

// The first device's requests go through the meter.
Fleet::Fleet(int count, int pauseMs_)
    : pauseMs(pauseMs_)
    , server(Device::apiKey)
    , meter(server.port())
{
    for (int number = 0; number < count; ++number) {
        devices.push_back(std::make_unique<FleetDevice>(QStringLiteral("d%1").arg(number)));
        devices.back()->device().start(number == 0 ? meter.host() : server.host());
    }
}

FleetStep Fleet::boot()
{
    begin(QStringLiteral("boot"));
    for (const auto &device : devices) {
        device->device().goOnline();
    }
    require(QTest::qWaitFor(
                [this] {
                    return std::all_of(devices.begin(), devices.end(),
                                       [](const auto &device) { return device->hasList(); });
                },
                patienceMs),
            QStringLiteral("not every device has its list"));
    const double inStep = secondsOfStep();
    QTest::qWait(pauseMs);
    return end(inStep);
}

FleetStep Fleet::outage(int seconds, int holdSeconds, int requests)
{
    begin(QStringLiteral("outage"));
    server.fail(holdSeconds);
    for (const auto &device : devices) {
        device->device().registerWidgets(1, requests);
    }
    require(secondsOfStep() < seconds, QStringLiteral("to ask takes longer than the outage"));
    QTest::qWait(static_cast<int>((seconds - secondsOfStep()) * msPerSecond));
    return end(0);
}

FleetStep Fleet::recover(int requests)
{
    begin(QStringLiteral("recovery"));
    server.recover();
    require(QTest::qWaitFor(
                [&] {
                    return std::all_of(devices.begin(), devices.end(), [&](const auto &device) {
                        return device->registeredCount() >= requests;
                    });
                },
                patienceMs),
            QStringLiteral("not everything was registered"));
    const double inStep = secondsOfStep();
    QTest::qWait(pauseMs);
    const int expected = static_cast<int>(devices.size()) * requests;
    require(server.applicationCount() == expected,
            QStringLiteral("the server holds %1 applications in place of %2")
                .arg(server.applicationCount())
                .arg(expected));
    return end(inStep);
}

Plot Fleet::plot()
{
    Plot plot;
    const double beginMs = begins.first().first;
    const auto secondOf = [beginMs](double ms) {
        return std::max(0, static_cast<int>((ms - beginMs) / msPerSecond));
    };
    for (const auto &begin : std::as_const(begins)) {
        plot.marks.append({secondOf(begin.first), begin.second});
    }
    const QVector<FleetRequest> requests = server.requests();
    for (const FleetRequest &request : requests) {
        plot.count(secondOf(request.endMs), isSuccess(request));
    }
    plot.title = QStringLiteral("Requests a second of %1 devices").arg(devices.size());
    return plot;
}

void Fleet::begin(const QString &name)
{
    stepName = name;
    begins.append({nowMs(), name});
    requestsBefore = static_cast<int>(server.requests().size());
    processorBefore = server.processorNs();
    meter.take();
    stepTime.start();
}

FleetStep Fleet::end(double inStepSeconds)
{
    FleetStep step;
    step.name = stepName;
    step.inStepSeconds = inStepSeconds;
    step.seconds = secondsOfStep();
    const double processorMs = static_cast<double>(server.processorNs() - processorBefore) / nsPerMs;
    step.processorMsOfDevice = processorMs / static_cast<double>(devices.size());
    countRequests(step);
    const WireMeter::Count wire = meter.take();
    require(wire.connections > 0, QStringLiteral("the metered device asked for nothing"));
    step.bytesOfRequest = static_cast<double>(wire.bytes) / wire.connections;
    return step;
}

double Fleet::secondsOfStep() const
{
    return static_cast<double>(stepTime.elapsed()) / msPerSecond;
}

void Fleet::countRequests(FleetStep &step)
{
    const QVector<FleetRequest> requests = server.requests().mid(requestsBefore);
    QSet<qint64> connections;
    const double fleetBeginMs = begins.first().first;
    Plot seconds;
    for (const FleetRequest &request : requests) {
        connections.insert(request.connection);
        step.resumed += request.isResumed ? 1 : 0;
        seconds.count(std::max(0, static_cast<int>((request.endMs - fleetBeginMs) / msPerSecond)),
                      isSuccess(request));
    }
    step.requests = static_cast<int>(requests.size());
    step.handshakes = static_cast<int>(connections.size());
    step.busiestSecond = seconds.largest();
}
