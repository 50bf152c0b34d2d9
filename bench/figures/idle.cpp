#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QTest>

namespace
{
constexpr int settleMs = 1000; // what follows the list is done by then
constexpr int msPerSecond = 1000;
} // namespace

QVector<Row> Figures::idle(const Scale &scale)
{
    StaticServer server;
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    QTest::qWait(settleMs);
    const qint64 before = Measure::contextSwitches(device.processId());
    QTest::qWait(scale.idleMs);
    const qint64 after = Measure::contextSwitches(device.processId());
    return {{QStringLiteral("context switches in %1 s, Ready, empty queue").arg(scale.idleMs / msPerSecond),
             QString(), static_cast<double>(after - before), std::nullopt, 0, Row::Judged::Value}};
}
