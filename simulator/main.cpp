#include "commandinput.h"
#include "commandinterpreter.h"
#include "devicesimulator.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

#include <unistd.h>

namespace
{

// Prints text to standard output at once; a person gets a prompt below it.
class Console
{
public:
    void print(const QString &text)
    {
        std::printf("%s%s\n%s", isPrompting ? "\r" : "", text.toUtf8().constData(),
                    isPrompting ? prompt : "");
        std::fflush(stdout);
    }

    void startPrompting() { isPrompting = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

    void promptAgain()
    {
        if (isPrompting) {
            std::fputs(prompt, stdout);
            std::fflush(stdout);
        }
    }

private:
    static constexpr const char *prompt = "device> ";
    bool isPrompting = false;
};

int complain(const QString &what)
{
    std::fprintf(stderr, "qwixt-devicesim: %s\n", what.toLocal8Bit().constData());
    return 1;
}

struct Options {
    QCommandLineOption bus{QStringLiteral("bus"),
                           QStringLiteral("The device's bus; DBUS_SYSTEM_BUS_ADDRESS when not given."),
                           QStringLiteral("address")};
    QCommandLineOption port{QStringLiteral("port"), QStringLiteral("The developer server's port; 0 is any."),
                            QStringLiteral("number"), QStringLiteral("0")};
    QCommandLineOption certificate{QStringLiteral("certificate"),
                                   QStringLiteral("The developer server's certificate (PEM)."),
                                   QStringLiteral("file")};
    QCommandLineOption key{QStringLiteral("key"), QStringLiteral("The certificate's key (PEM)."),
                           QStringLiteral("file")};
    QCommandLineOption apiKey{QStringLiteral("api-key"), QStringLiteral("The device's API key at start."),
                              QStringLiteral("key")};
    QCommandLineOption remoteId{QStringLiteral("remote-id"),
                                QStringLiteral("The device's id on the server at start."),
                                QStringLiteral("id")};
    QCommandLineOption serial{QStringLiteral("serial"), QStringLiteral("The device's serial number."),
                              QStringLiteral("number"), QStringLiteral("SIM-0001")};
    QCommandLineOption widget{QStringLiteral("widget"),
                              QStringLiteral("A widget installed at start; may be repeated."),
                              QStringLiteral("id")};
    QCommandLineOption offline{QStringLiteral("offline"), QStringLiteral("Start without internet.")};
    QCommandLineOption noDaemon{QStringLiteral("no-daemon"),
                                QStringLiteral("Do not start the main daemon yet.")};
    QCommandLineOption noWidgetManager{QStringLiteral("no-widget-manager"),
                                       QStringLiteral("Do not start the widget manager yet.")};
    QCommandLineOption keepRunning{QStringLiteral("keep-running"),
                                   QStringLiteral("Go on when standard input ends.")};
};

void setUp(DeviceSimulator &simulator, const QCommandLineParser &parser, const Options &options)
{
    simulator.setApiKeyQuietly(parser.value(options.apiKey));
    simulator.daemon().setRemoteId(parser.value(options.remoteId));
    simulator.daemon().setSerial(parser.value(options.serial));
    simulator.daemon().setInternetAvailable(!parser.isSet(options.offline));
    simulator.widgetManager().setWidgetsQuietly(parser.values(options.widget));
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qwixt-devicesim"));

    const Options options;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("A simulated device and its developer server."));
    parser.addHelpOption();
    parser.addOptions({options.bus, options.port, options.certificate, options.key, options.apiKey,
                       options.remoteId, options.serial, options.widget, options.offline, options.noDaemon,
                       options.noWidgetManager, options.keepRunning});
    parser.process(application);

    const QString busAddress = parser.isSet(options.bus) ? parser.value(options.bus)
                                                         : qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    if (busAddress.isEmpty()) {
        return complain(QStringLiteral("no bus: give --bus or set DBUS_SYSTEM_BUS_ADDRESS"));
    }
    bool isPort = false;
    const quint16 port = parser.value(options.port).toUShort(&isPort);
    if (!isPort) {
        return complain(QStringLiteral("not a port: %1").arg(parser.value(options.port)));
    }
    if (!parser.isSet(options.certificate) || !parser.isSet(options.key)) {
        return complain(QStringLiteral("the server needs --certificate and --key"));
    }
    if (!parser.positionalArguments().isEmpty()) {
        return complain(QStringLiteral("not understood: %1").arg(parser.positionalArguments().first()));
    }

    DeviceSimulator simulator(busAddress);
    CommandInterpreter interpreter(simulator);
    Console console;
    QObject::connect(&simulator, &DeviceSimulator::traced,
                     [&console](const QString &line) { console.print(line); });
    setUp(simulator, parser, options);
    if (!simulator.watcher().start()) {
        return complain(QStringLiteral("cannot reach the bus at %1").arg(busAddress));
    }
    if (!simulator.server().start(parser.value(options.certificate), parser.value(options.key), port)) {
        return complain(simulator.server().errorText());
    }
    if (!parser.isSet(options.noDaemon) && !simulator.daemon().start()) {
        return complain(simulator.daemon().errorText());
    }
    if (!parser.isSet(options.noWidgetManager) && !simulator.widgetManager().start()) {
        return complain(simulator.widgetManager().errorText());
    }

    CommandInput input(STDIN_FILENO);
    QObject::connect(&input, &CommandInput::lineRead, [&](const QString &line) {
        const QString text = interpreter.execute(line);
        if (text.isEmpty()) {
            console.promptAgain();
        } else {
            console.print(text);
        }
    });
    // Queued, so that the events that the last line caused are told first.
    QObject::connect(&interpreter, &CommandInterpreter::quitRequested, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    if (!parser.isSet(options.keepRunning)) {
        QObject::connect(&input, &CommandInput::ended, &application, &QCoreApplication::quit,
                         Qt::QueuedConnection);
    }
    console.print(QStringLiteral("ready: https://%1").arg(simulator.server().host()));
    console.startPrompting();
    console.promptAgain();
    return QCoreApplication::exec();
}
