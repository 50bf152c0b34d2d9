#include "commandinterpreter.h"
#include "console.h"
#include "devicesimulator.h"
#include "options.h"
#include "webserver.h"

#include <QCoreApplication>

#include <cstdio>
#include <fcntl.h>
#include <memory>

namespace
{
constexpr int failureStatus = 1;

int complain(const QString &what)
{
    std::fprintf(stderr, "qwixt-devicesim: %s\n", what.toLocal8Bit().constData());
    return failureStatus;
}

void setUp(DeviceSimulator &simulator, const Options &options)
{
    // It may run for days, and what passes is shown at once.
    simulator.server().setMostOnRecord(0);
    simulator.setApiKeyQuietly(options.apiKey);
    simulator.daemon().setRemoteId(options.remoteId);
    simulator.daemon().setSerial(options.serial);
    simulator.daemon().setInternetAvailable(!options.isOffline);
    simulator.widgetManager().setWidgetsQuietly(options.widgets);
}

// Begins to watch, before there is anything to see. Null when no page is asked for.
std::unique_ptr<WebServer> openPage(DeviceSimulator &simulator, CommandInterpreter &interpreter,
                                    const Options &options, QString &problem)
{
    if (!options.webPort) {
        return nullptr;
    }
    auto web = std::make_unique<WebServer>(simulator, interpreter);
    problem = web->open(options.busAddress, *options.webPort);
    return web;
}

// Returns what went wrong; empty when all that is wanted is up.
QString start(DeviceSimulator &simulator, const Options &options)
{
    if (!simulator.watcher().start()) {
        return QStringLiteral("cannot reach the bus at %1").arg(options.busAddress);
    }
    if (!simulator.server().start(options.certificatePath, options.keyPath, options.port)) {
        return simulator.server().errorText();
    }
    if (options.isDaemonWanted && !simulator.daemon().start()) {
        return simulator.daemon().errorText();
    }
    if (options.isWidgetManagerWanted && !simulator.widgetManager().start()) {
        return simulator.widgetManager().errorText();
    }
    return {};
}

// Runs the daemon, if that is asked for; returns what went wrong.
QString startDaemon(DeviceSimulator &simulator, Console &console, const QString &program)
{
    if (program.isEmpty()) {
        return {};
    }
    DaemonProcess &daemon = simulator.daemonProcess();
    daemon.set(program, simulator.server().host());
    QObject::connect(&daemon, &DaemonProcess::lineRead, &console, &Console::print);
    QObject::connect(&daemon, &DaemonProcess::ended, &console, &Console::print);
    return daemon.start() ? QString() : daemon.errorText();
}

// Null when there is nothing to show, or it cannot be opened.
std::unique_ptr<CommandInput> showLinesOf(const QString &pipePath, Console &console)
{
    // For writing too, so that it does not end when a writer does.
    const int descriptor =
        pipePath.isEmpty() ? -1 : ::open(pipePath.toLocal8Bit().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    auto lines = std::make_unique<CommandInput>(descriptor);
    QObject::connect(lines.get(), &CommandInput::lineRead, &console, &Console::print);
    return lines;
}

void obey(Console &console, CommandInterpreter &interpreter, bool isKeptRunning)
{
    QObject::connect(&console, &Console::lineRead, &interpreter, [&](const QString &line) {
        const QString answer = interpreter.execute(line);
        if (!answer.isEmpty()) {
            console.print(answer);
        }
    });
    // Queued, so that the events that the last line caused are shown first.
    QObject::connect(&interpreter, &CommandInterpreter::quitRequested, qApp, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    if (!isKeptRunning) {
        QObject::connect(&console, &Console::ended, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qwixt-devicesim"));
    const Options options = Options::read();
    if (!options.problem.isEmpty()) {
        return complain(options.problem);
    }

    DeviceSimulator simulator(options.busAddress);
    CommandInterpreter interpreter(simulator);
    Console console;
    QObject::connect(&simulator, &DeviceSimulator::traced, &console, &Console::print);
    QObject::connect(&simulator.watcher(), &DaemonWatcher::busLost, &console, [&] {
        console.stopReading();
        QCoreApplication::exit(complain(QStringLiteral("lost the bus at %1").arg(options.busAddress)));
    });
    setUp(simulator, options);
    QString problem;
    const auto web = openPage(simulator, interpreter, options, problem);
    if (problem.isEmpty()) {
        problem = start(simulator, options);
    }
    if (!problem.isEmpty()) {
        return complain(problem);
    }
    const auto shown = showLinesOf(options.shownPipePath, console);
    if (shown == nullptr && !options.shownPipePath.isEmpty()) {
        return complain(QStringLiteral("cannot read from %1").arg(options.shownPipePath));
    }
    obey(console, interpreter, options.isKeptRunning);
    const QString daemonProblem = startDaemon(simulator, console, options.daemonProgram);
    if (!daemonProblem.isEmpty()) {
        return complain(daemonProblem);
    }
    if (web) {
        console.print(QStringLiteral("page: %1").arg(web->url(QStringLiteral("/"))));
    }
    console.print(QStringLiteral("ready: https://%1").arg(simulator.server().host()));
    console.startReading();
    return QCoreApplication::exec();
}
