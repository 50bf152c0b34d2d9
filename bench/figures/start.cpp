#include "figures.h"
#include "measures.h"
#include "nameonbus.h"

#include <QProcess>

#include <chrono>

namespace
{
constexpr int patienceMs = 20000;

/// From the start of the process to its name on the bus.
double startMs(NameOnBus &name, const QString &program)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), name.address());
    process.setProcessEnvironment(environment);
    const auto begin = std::chrono::steady_clock::now();
    process.start(program, QStringList());
    const std::chrono::duration<double, std::milli> taken = name.waitFor(true) - begin;
    process.kill();
    process.waitForFinished(patienceMs);
    name.waitFor(false);
    return taken.count();
}
} // namespace

QVector<Row> Figures::start(const Scale &scale)
{
    NameOnBus name;
    QVector<double> figure;
    QVector<double> floor;
    for (int round = 0; round < scale.starts; ++round) {
        floor.append(startMs(name, QStringLiteral(PROCESS_FLOOR)));
        figure.append(startMs(name, QStringLiteral(QWIXTD_PROGRAM)));
    }
    return {{QStringLiteral("start of the process to its name on the bus"), QStringLiteral("ms"),
             median(figure), median(floor), 1.0}};
}
