#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "nameonbus.h"
#include "staticserver.h"

namespace
{
constexpr double bytesPerMegabyte = 1024 * 1024;

double floorMemory()
{
    NameOnBus name;
    QwixtdProcess floor(QStringLiteral(PROCESS_FLOOR), Certificates::shared().authority());
    require(floor.start(name.address(), QString()), QStringLiteral("the floor does not start"));
    name.waitFor(true);
    name.waitForAnswer();
    return Measure::privateDirtyBytes(floor.processId());
}

double readyMemory(StaticServer &server)
{
    Device device(Certificates::shared().authority());
    device.startReady(server.host());
    return Measure::privateDirtyBytes(device.processId());
}
} // namespace

QVector<Row> Figures::memory(const Scale &scale)
{
    StaticServer server;
    QVector<double> figure;
    QVector<double> floor;
    for (int round = 0; round < scale.rounds; ++round) {
        floor.append(floorMemory() / bytesPerMegabyte);
        figure.append(readyMemory(server) / bytesPerMegabyte);
    }
    return {{QStringLiteral("own memory, Ready"), QStringLiteral("MB"), median(figure), median(floor), 1.2}};
}
