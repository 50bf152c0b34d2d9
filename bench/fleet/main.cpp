// qwixtd_fleet [--devices N] [--requests N] [--outage SECONDS] [--hold SECONDS] [--plot FILE]: many daemons,
// each on a bus of its own, and one server: all boot at once, an outage while requests wait on each, and the
// recovery. Prints what each step asked of the server, and writes requests a second over time as an SVG file.
// Ends with 1 when something cannot be measured or a request is lost or done twice.

#include "fleet.h"
#include "measures.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace
{
constexpr int pauseMsASecond = 100; // of an outage

struct Plan {
    int devices;
    int requests;
    int outageSeconds;
    int holdSeconds;
    QString plotPath;
};

int numberOf(const QCommandLineParser &parser, const char *option)
{
    const QString name = QString::fromLatin1(option);
    const int number = parser.value(name).toInt();
    require(number > 0, QStringLiteral("--%1 needs a number above 0").arg(name));
    return number;
}

Plan planOf(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.addHelpOption();
    const auto add = [&parser](const char *name, const char *what, const char *value, const char *preset) {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(what), QString::fromLatin1(value),
                          QString::fromLatin1(preset)});
    };
    add("devices", "How many devices (100).", "N", "100");
    add("requests", "How many registrations wait on each during the outage (10).", "N", "10");
    add("outage", "How long the server fails (30).", "SECONDS", "30");
    add("hold", "How long the failing server holds each answer back (0).", "SECONDS", "0");
    add("plot", "Where the plot goes.", "FILE", "");
    parser.process(application);
    return {numberOf(parser, "devices"), numberOf(parser, "requests"), numberOf(parser, "outage"),
            parser.value(QStringLiteral("hold")).toInt(), parser.value(QStringLiteral("plot"))};
}

/// "-" for 0, which stands for nothing measured.
QString shown(const char *text, double value, int decimals)
{
    return value > 0 ? QString::fromLatin1(text).arg(value, 0, 'f', decimals) : QStringLiteral("-");
}

void show(const FleetStep &step)
{
    std::printf("%-9s  %7.1f s  %9s  %6d requests  %6d handshakes (%d resumed)  %5d in the busiest second  "
                "%7.2f ms of the server's processor a device  %6s bytes a request\n",
                qPrintable(step.name), step.seconds, qPrintable(shown("all %1 s", step.inStepSeconds, 1)),
                step.requests, step.handshakes, step.resumed, step.busiestSecond, step.processorMsOfDevice,
                qPrintable(shown("%1", step.bytesOfRequest, 0)));
    std::fflush(stdout);
}

void run(const Plan &plan)
{
    std::fprintf(stderr, "fleet: starting %d devices\n", plan.devices);
    Fleet fleet(plan.devices, plan.outageSeconds * pauseMsASecond);
    std::fputs("fleet: boot\n", stderr);
    fleet.boot();
    std::fputs("fleet: outage\n", stderr);
    fleet.outage(plan.outageSeconds, plan.holdSeconds, plan.requests);
    std::fputs("fleet: recovery\n", stderr);
    fleet.recover(plan.requests);
    const QVector<FleetStep> steps = fleet.steps();
    for (const FleetStep &step : steps) {
        show(step);
    }
    if (plan.plotPath.isEmpty()) {
        return;
    }
    QFile file(plan.plotPath);
    require(file.open(QIODevice::WriteOnly), QStringLiteral("%1 cannot be written").arg(plan.plotPath));
    file.write(fleet.plot().svg());
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    try {
        run(planOf(application));
    } catch (const CannotMeasure &failure) {
        std::fprintf(stderr, "fleet: %s\n", failure.what());
        return 1;
    }
    return 0;
}
