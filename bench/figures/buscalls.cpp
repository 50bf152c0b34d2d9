#include "certificates.h"
#include "device.h"
#include "emptyadaptor.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QElapsedTimer>

namespace
{
constexpr double nsPerUs = 1e3;
constexpr int callTimeoutMs = 60000;
constexpr double tail = 0.99;

double callUs(const QDBusConnection &bus, const QDBusMessage &call)
{
    QElapsedTimer elapsed;
    elapsed.start();
    const QDBusMessage reply = bus.call(call, QDBus::Block, callTimeoutMs);
    const auto taken = static_cast<double>(elapsed.nsecsElapsed());
    require(reply.type() == QDBusMessage::ReplyMessage, QStringLiteral("a call is not answered"));
    return taken / nsPerUs;
}
} // namespace

// With the system's bundle the fetch thread is at work all the time. The calls ask for what is asked for
// already, so that they add nothing to the queue.
QVector<Row> Figures::busCalls(const Scale &scale)
{
    StaticServer server;
    Device device(Certificates::shared().bundle());
    device.startReady(server.host());
    const EmptyAdaptor adaptor(device.busAddress(), device.connection());
    device.goOffline();
    const int queued = scale.busCalls;
    device.registerWidgets(1, queued);
    const QDBusMessage call = Device::registration(Device::service, queued);
    const QDBusMessage floorCall = Device::registration(adaptor.service(), queued);
    QVector<double> figureUs;
    QVector<double> floorUs;
    server.clear();
    device.goOnline();
    server.waitForAnswered(1);
    const auto callOne = [&] { figureUs.append(callUs(device.connection(), call)); };
    const auto callFloor = [&] { floorUs.append(callUs(device.connection(), floorCall)); };
    for (int i = 0; i < scale.busCalls; i += 2) {
        // Each comes first in turn.
        callOne();
        callFloor();
        callFloor();
        callOne();
    }
    require(server.answeredCount() < queued, QStringLiteral("the requests were over before the calls"));
    return {{QStringLiteral("bus call during transfers, median"), QStringLiteral("us"), median(figureUs),
             median(floorUs), 1.5},
            {QStringLiteral("bus call during transfers, 99th percentile"), QStringLiteral("us"),
             quantile(figureUs, tail), quantile(floorUs, tail), 1.5}};
}
