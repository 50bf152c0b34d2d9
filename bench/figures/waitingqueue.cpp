#include "certificates.h"
#include "device.h"
#include "emptyadaptor.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QElapsedTimer>

#include <algorithm>

namespace
{
constexpr double nsPerUs = 1e3;
constexpr double nsPerMs = 1e6;
constexpr double stillGrowing = 1.01;

struct WaitingQueue {
    QVector<double> shortQueueUs; ///< of a call that is accepted
    QVector<double> longQueueUs;
    QVector<double> longestAnswerMs;
    QVector<double> floorAnswerMs;
    QVector<double> waitingBytes; ///< of a request
    QVector<double> taskBytes;
};

/// The processor time of the daemon for one of @p count registrations, in microseconds.
double acceptanceUs(Device &device, int first, int count)
{
    const qint64 before = Measure::processorNs(device.processId());
    device.registerWidgets(first, count);
    const qint64 taken = Measure::processorNs(device.processId()) - before;
    return static_cast<double>(taken) / nsPerUs / count;
}

/// The longest of the calls made one after the other for @p ms. They ask for what is asked for already.
double longestAnswerMs(const QDBusConnection &bus, const QString &service, int ms)
{
    const QDBusMessage call = Device::registration(service, 1);
    qint64 longestNs = 0;
    QElapsedTimer all;
    all.start();
    while (all.elapsed() < ms) {
        QElapsedTimer one;
        one.start();
        require(bus.call(call, QDBus::Block, 60000).type() == QDBusMessage::ReplyMessage,
                QStringLiteral("a call is not answered"));
        longestNs = std::max(longestNs, one.nsecsElapsed());
    }
    return static_cast<double>(longestNs) / nsPerMs;
}

void fill(Device &device, const Scale &scale, WaitingQueue &taken)
{
    device.registerWidgets(1, scale.shortQueue);
    const double before = Measure::privateDirtyBytes(device.processId());
    taken.shortQueueUs.append(acceptanceUs(device, scale.shortQueue + 1, scale.batch));
    const int queued = scale.shortQueue + scale.batch;
    device.registerWidgets(queued + 1, scale.longQueue - queued);
    const double after = Measure::privateDirtyBytes(device.processId());
    taken.waitingBytes.append((after - before) / (scale.longQueue - scale.shortQueue));
    taken.longQueueUs.append(acceptanceUs(device, scale.longQueue + 1, scale.batch));
}

/// The first request is under way all the while, and the others wait with their tasks.
void becomeReady(Device &device, const Scale &scale, WaitingQueue &taken)
{
    const double before = Measure::privateDirtyBytes(device.processId());
    device.goOnline();
    double longestMs = 0;
    double known = 0;
    double after = before;
    do {
        known = after;
        longestMs = std::max(longestMs, longestAnswerMs(device.connection(), Device::service, scale.pollMs));
        after = Measure::privateDirtyBytes(device.processId());
    } while (after > known * stillGrowing); // more tasks are made
    taken.longestAnswerMs.append(longestMs);
    const double waiting = median(taken.waitingBytes);
    taken.taskBytes.append(waiting + (after - before) / (scale.longQueue + scale.batch));
}

void oneRound(const Scale &scale, WaitingQueue &taken)
{
    StaticServer server;
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    device.goOffline();
    fill(device, scale, taken);
    server.clear();
    server.freeze();
    const EmptyAdaptor adaptor(device.busAddress(), device.connection());
    taken.floorAnswerMs.append(longestAnswerMs(device.connection(), adaptor.service(), scale.pollMs));
    becomeReady(device, scale, taken);
    // It did become ready: the request that was held is answered now.
    server.thaw();
    server.waitForAnswered(1);
}
} // namespace

QVector<Row> Figures::waitingQueue(const Scale &scale)
{
    WaitingQueue taken;
    for (int round = 0; round < scale.rounds; ++round) {
        oneRound(scale, taken);
    }
    const QString queued = QStringLiteral("%1 queued").arg(scale.longQueue);
    return {{QStringLiteral("accepting a call, processor, %1 (floor: %2)").arg(queued).arg(scale.shortQueue),
             QStringLiteral("us"), median(taken.longQueueUs), median(taken.shortQueueUs), 1.3},
            {QStringLiteral("longest wait for an answer while %1 become ready").arg(scale.longQueue),
             QStringLiteral("ms"), largest(taken.longestAnswerMs), largest(taken.floorAnswerMs), 50,
             Row::Judged::Value},
            {QStringLiteral("memory of a waiting request, %1").arg(queued), QStringLiteral("B"),
             median(taken.waitingBytes), std::nullopt, 300, Row::Judged::Value},
            {QStringLiteral("memory of a request with its task, %1").arg(queued), QStringLiteral("B"),
             median(taken.taskBytes), std::nullopt, 5 * 1024, Row::Judged::Value}};
}
