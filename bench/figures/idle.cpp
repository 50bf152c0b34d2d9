#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QTest>

#include <numeric>

namespace
{
constexpr int settleMs = 1000; // what follows the list is done by then
constexpr int msPerSecond = 1000;

qint64 sumOf(const QMap<QString, qint64> &switches)
{
    return std::accumulate(switches.begin(), switches.end(), qint64(0));
}
} // namespace

QVector<Row> Figures::idle(const Scale &scale)
{
    StaticServer server;
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    QTest::qWait(settleMs);
    const QMap<QString, qint64> before = Measure::contextSwitches(device.processId());
    QTest::qWait(scale.idleMs);
    const QMap<QString, qint64> after = Measure::contextSwitches(device.processId());
    // A thread that ends takes its count with it.
    require(before.keys() == after.keys(),
            QStringLiteral("the idle daemon's threads are no longer the same"));
    return {{QStringLiteral("context switches in %1 s, Ready, empty queue").arg(scale.idleMs / msPerSecond),
             QString(), static_cast<double>(sumOf(after) - sumOf(before)), std::nullopt, 0,
             Row::Judged::Value}};
}
