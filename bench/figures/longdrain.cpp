#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QTest>

namespace
{
constexpr double nsPerMs = 1e6;
// The daemon gives the memory of a long queue back a second after its end.
constexpr int memoryTimeoutMs = 3000;
constexpr double bytesPerMegabyte = 1024 * 1024;

/// Processor time of one of @p count queued requests, in milliseconds.
double processorMs(Device &device, StaticServer &server, int count)
{
    device.goOffline();
    device.registerWidgets(1, count);
    server.clear();
    const qint64 before = Measure::processorNs(device.processId());
    device.goOnline();
    server.waitForAnswered(count);
    device.waitForMainThread();
    return static_cast<double>(Measure::processorNs(device.processId()) - before) / nsPerMs / count;
}
} // namespace

QVector<Row> Figures::longDrain(const Scale &scale)
{
    StaticServer server;
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    const double ready = Measure::privateDirtyBytes(device.processId());
    QVector<double> shortQueueMs;
    const auto drainShortQueues = [&] {
        for (int round = 0; round < scale.rounds; ++round) {
            shortQueueMs.append(processorMs(device, server, scale.shortQueue));
        }
    };
    drainShortQueues();
    const double longQueueMs = processorMs(device, server, scale.longQueue);
    QTest::qWait(memoryTimeoutMs);
    const double left = Measure::privateDirtyBytes(device.processId()) - ready;
    drainShortQueues();
    return {{QStringLiteral("a request of %1 queued, processor (floor: of %2)")
                 .arg(scale.longQueue)
                 .arg(scale.shortQueue),
             QStringLiteral("ms"), longQueueMs, median(shortQueueMs), 1.15},
            {QStringLiteral("own memory after %1 answers, above Ready").arg(scale.longQueue),
             QStringLiteral("MB"), left / bytesPerMegabyte, std::nullopt, 1, Row::Judged::Value}};
}
