// Random schedules of everything that can happen to the manager, in a time of their own.

#include "devicestub.h"
#include "privatebus.h"
#include "schedule.h"
#include "virtualtime.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>

#include <cstdio>
#include <memory>
#include <vector>

namespace
{

struct Options {
    int seconds;
    int sequences; ///< 0: as many as the seconds allow
    int events;
    quint32 seed;
    int jobs;
};

Options readOptions(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Carries random schedules out on the daemon's manager."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("seconds"), QStringLiteral("How long."), QStringLiteral("n"), QStringLiteral("60")},
         {QStringLiteral("sequences"), QStringLiteral("How many, whatever the time."), QStringLiteral("n"),
          QStringLiteral("0")},
         {QStringLiteral("events"), QStringLiteral("Events in each."), QStringLiteral("n"),
          QStringLiteral("100")},
         {QStringLiteral("seed"), QStringLiteral("Of the first; random unless given."), QStringLiteral("n"),
          QStringLiteral("0")},
         {QStringLiteral("jobs"), QStringLiteral("Processes at a time."), QStringLiteral("n"),
          QStringLiteral("1")}});
    parser.process(application);
    const quint32 seed = parser.value(QStringLiteral("seed")).toUInt();
    return {parser.value(QStringLiteral("seconds")).toInt(),
            parser.value(QStringLiteral("sequences")).toInt(), parser.value(QStringLiteral("events")).toInt(),
            seed != 0 ? seed : QRandomGenerator::system()->bounded(1U, 1000000000U),
            parser.value(QStringLiteral("jobs")).toInt()};
}

void report(quint32 seed, int events, VirtualTime &time, DeviceStub &stub)
{
    const Schedule schedule = scheduleOf(seed, events);
    const QString complaint = carryOut(schedule, time, stub);
    std::printf("seed %u: %s\n", seed, complaint.isEmpty() ? "does not fail again" : qPrintable(complaint));
    if (complaint.isEmpty()) {
        return;
    }
    const Schedule shorter = shortened(schedule, time, stub);
    std::printf("as short as it gets: %s\n", qPrintable(carryOut(shorter, time, stub)));
    for (const Event &event : shorter) {
        std::printf("    %s\n", qPrintable(textOf(event)));
    }
    std::printf("again: --sequences 1 --events %d --seed %u\n", events, seed);
}

int explore(const Options &options, VirtualTime &time)
{
    PrivateBus bus;
    if (!bus.startAsSystemBus()) {
        return 2;
    }
    DeviceStub stub;
    if (!stub.start()) {
        std::puts("the bus refuses the device's services");
        return 2;
    }
    QElapsedTimer elapsed;
    elapsed.start();
    int done = 0;
    quint32 seed = options.seed;
    const auto goesOn = [&] {
        return options.sequences > 0 ? done < options.sequences : elapsed.elapsed() < options.seconds * 1000;
    };
    for (; goesOn(); ++done, ++seed) {
        if (!carryOut(scheduleOf(seed, options.events), time, stub).isEmpty()) {
            report(seed, options.events, time, stub);
            return 1;
        }
    }
    std::printf("%d sequences of %d events held, seeds from %u, %lld ms\n", done, options.events,
                options.seed, static_cast<long long>(elapsed.elapsed()));
    return 0;
}

/// The same in several processes, each with seeds of its own.
int exploreInParallel(const Options &options)
{
    std::vector<std::unique_ptr<QProcess>> jobs;
    for (int i = 0; i < options.jobs; ++i) {
        auto job = std::make_unique<QProcess>();
        job->setProcessChannelMode(QProcess::ForwardedChannels);
        job->start(QCoreApplication::applicationFilePath(),
                   {QStringLiteral("--seconds"), QString::number(options.seconds),
                    QStringLiteral("--sequences"), QString::number(options.sequences),
                    QStringLiteral("--events"), QString::number(options.events), QStringLiteral("--seed"),
                    QString::number(options.seed + static_cast<quint32>(i) * 10000000U)});
        jobs.push_back(std::move(job));
    }
    int status = 0;
    for (const auto &job : jobs) {
        job->waitForFinished(-1);
        if (job->exitStatus() != QProcess::NormalExit || job->exitCode() != 0) {
            status = 1;
        }
    }
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    auto *const time = new VirtualTime; // the application's
    QCoreApplication::setEventDispatcher(time);
    const QCoreApplication application(argc, argv);
    const Options options = readOptions(application);
    return options.jobs > 1 ? exploreInParallel(options) : explore(options, *time);
}
