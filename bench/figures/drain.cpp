#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

namespace
{
constexpr int floorTimeoutMs = 600000;
constexpr double nsPerMs = 1e6;

/// Of one request, least of several rounds; wall time counts from answer to answer.
struct Cost {
    QVector<double> wallMs;
    QVector<double> processorMs;
};

/// The last @p count requests must be registrations of the same size.
int sizeOf(const QVector<AnsweredRequest> &requests)
{
    const int bytes = requests.last().bytes;
    for (const AnsweredRequest &request : requests) {
        require(request.method == "POST" && request.bytes == bytes,
                QStringLiteral("%1 request of %2 bytes among those of %3")
                    .arg(QString::fromLatin1(request.method))
                    .arg(request.bytes)
                    .arg(bytes));
    }
    return bytes;
}

double millisecondsEach(const QVector<AnsweredRequest> &requests)
{
    return (requests.last().endMs - requests.first().endMs) / static_cast<double>(requests.size() - 1);
}

/// Returns the size of a request.
int drainOnce(Device &device, StaticServer &server, int count, Cost &cost)
{
    device.goOffline();
    device.registerWidgets(1, count);
    server.clear();
    const qint64 before = Measure::processorNs(device.processId());
    device.goOnline();
    const QVector<AnsweredRequest> requests = server.waitForAnswered(count);
    device.waitForMainThread();
    const qint64 taken = Measure::processorNs(device.processId()) - before;
    cost.wallMs.append(millisecondsEach(requests));
    cost.processorMs.append(static_cast<double>(taken) / nsPerMs / count);
    return sizeOf(requests);
}

int floorOnce(const QString &bundle, StaticServer &server, int count, Cost &cost)
{
    QwixtdProcess floor(QStringLiteral(CURL_FLOOR), bundle);
    floor.setEnvironment(QStringLiteral("FLOOR_REQUESTS"), QString::number(count));
    server.clear();
    const bool isDone =
        floor.start(QString(), server.host()) && floor.waitForExit(floorTimeoutMs) && floor.exitStatus() == 0;
    const QByteArray output = floor.output();
    require(isDone, QStringLiteral("the libcurl program fails: ") + QString::fromUtf8(output));
    const QVector<AnsweredRequest> requests = server.waitForAnswered(count + 1);
    cost.wallMs.append(millisecondsEach(requests));
    cost.processorMs.append(output.trimmed().toDouble() / nsPerMs / count);
    return sizeOf(requests);
}

QVector<Row> drainWith(const QString &bundle, const QString &name, double wallTarget, double processorTarget,
                       const Scale &scale)
{
    StaticServer server;
    Device device(bundle);
    device.startReady(server.host());
    Cost figure;
    Cost floor;
    for (int round = 0; round < scale.rounds; ++round) {
        const int floorBytes = floorOnce(bundle, server, scale.drainRequests, floor);
        const int bytes = drainOnce(device, server, scale.drainRequests, figure);
        require(
            bytes == floorBytes,
            QStringLiteral("the daemon sends %1 bytes, the libcurl program %2").arg(bytes).arg(floorBytes));
    }
    const auto ms = QStringLiteral("ms");
    return {{QStringLiteral("a request, wall, %1 bundle").arg(name), ms, least(figure.wallMs),
             least(floor.wallMs), wallTarget},
            {QStringLiteral("a request, processor, %1 bundle").arg(name), ms, least(figure.processorMs),
             least(floor.processorMs), processorTarget}};
}
} // namespace

QVector<Row> Figures::drain(const Scale &scale)
{
    const Certificates &certificates = Certificates::shared();
    return drainWith(certificates.authority(), QStringLiteral("short"), 1.05, 1.08, scale) +
           drainWith(certificates.bundle(), QStringLiteral("system's"), 1.04, 1.04, scale);
}
