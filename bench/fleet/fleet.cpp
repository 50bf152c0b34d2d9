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

void Fleet::boot()
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
    end(inStep);
}

void Fleet::outage(int seconds, int holdSeconds, int requests)
{
    begin(QStringLiteral("outage"));
    server.fail(holdSeconds);
    for (const auto &device : devices) {
        device->device().registerWidgets(1, requests);
    }
    require(secondsOfStep() < seconds, QStringLiteral("to ask takes longer than the outage"));
    QTest::qWait(static_cast<int>((seconds - secondsOfStep()) * msPerSecond));
    end(0);
}

void Fleet::recover(int requests)
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
    end(inStep);
}

QVector<FleetStep> Fleet::steps()
{
    QVector<FleetStep> counted = taken;
    double endMs = nowMs();
    for (int i = static_cast<int>(counted.size()) - 1; i >= 0; --i) {
        countRequests(counted[i], endMs);
        endMs = counted.at(i).beginMs;
    }
    return counted;
}

Plot Fleet::plot()
{
    Plot plot;
    for (const FleetStep &step : std::as_const(taken)) {
        plot.marks.append({secondOf(step.beginMs), step.name});
    }
    const QVector<FleetRequest> requests = server.requests();
    for (const FleetRequest &request : requests) {
        plot.count(secondOf(request.startMs), isSuccess(request));
    }
    plot.title = QStringLiteral("Requests a second of %1 devices").arg(devices.size());
    return plot;
}

void Fleet::begin(const QString &name)
{
    FleetStep step;
    step.name = name;
    step.beginMs = nowMs();
    taken.append(step);
    processorBefore = server.processorNs();
    meter.take();
    stepTime.start();
}

void Fleet::end(double inStepSeconds)
{
    FleetStep &step = taken.last();
    step.inStepSeconds = inStepSeconds;
    step.seconds = secondsOfStep();
    const double processorMs = static_cast<double>(server.processorNs() - processorBefore) / nsPerMs;
    step.processorMsOfDevice = processorMs / static_cast<double>(devices.size());
    const WireMeter::Count wire = meter.take();
    step.bytesOfRequest = wire.connections > 0 ? static_cast<double>(wire.bytes) / wire.connections : 0;
}

double Fleet::secondsOfStep() const
{
    return static_cast<double>(stepTime.elapsed()) / msPerSecond;
}

int Fleet::secondOf(double ms) const
{
    return std::max(0, static_cast<int>((ms - taken.first().beginMs) / msPerSecond));
}

void Fleet::countRequests(FleetStep &step, double endMs)
{
    const QVector<FleetRequest> requests = server.requests();
    QSet<qint64> connections;
    Plot seconds;
    for (const FleetRequest &request : requests) {
        if (request.startMs < step.beginMs || request.startMs >= endMs) {
            continue;
        }
        ++step.requests;
        connections.insert(request.connection);
        step.resumed += request.isResumed ? 1 : 0;
        seconds.count(secondOf(request.startMs), isSuccess(request));
    }
    step.handshakes = static_cast<int>(connections.size());
    step.busiestSecond = seconds.largest();
}
