#include "options.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace
{
const auto bus = QStringLiteral("bus");
const auto portName = QStringLiteral("port");
const auto certificate = QStringLiteral("certificate");
const auto key = QStringLiteral("key");
const auto apiKeyName = QStringLiteral("api-key");
const auto remoteIdName = QStringLiteral("remote-id");
const auto serialName = QStringLiteral("serial");
const auto widget = QStringLiteral("widget");
const auto offline = QStringLiteral("offline");
const auto noDaemon = QStringLiteral("no-daemon");
const auto noWidgetManager = QStringLiteral("no-widget-manager");
const auto keepRunning = QStringLiteral("keep-running");
const auto show = QStringLiteral("show");
const auto web = QStringLiteral("web");
const auto daemonProgramName = QStringLiteral("qwixtd");

QString text(const char *words)
{
    return QString::fromLatin1(words);
}

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(text("A simulated device and its developer server."));
    parser.addHelpOption();
    parser.addOptions({
        {bus, text("The device's bus; DBUS_SYSTEM_BUS_ADDRESS when not given."), text("address")},
        {portName, text("The developer server's port; 0 is any."), text("number"), text("0")},
        {certificate, text("The developer server's certificate (PEM)."), text("file")},
        {key, text("The certificate's key (PEM)."), text("file")},
        {apiKeyName, text("The device's API key at start."), text("key")},
        {remoteIdName, text("The device's id on the server at start."), text("id")},
        {serialName, text("The device's serial number."), text("number"), text("SIM-0001")},
        {widget, text("A widget installed at start; may be repeated."), text("id")},
        {offline, text("Start without internet.")},
        {noDaemon, text("Do not start the main daemon yet.")},
        {noWidgetManager, text("Do not start the widget manager yet.")},
        {keepRunning, text("Go on when standard input ends.")},
        {show, text("Show the lines that come through this named pipe, too."), text("file")},
        {web, text("Show all this in a browser, under this port; 0 is any."), text("port")},
        {daemonProgramName, text("Run this program as the daemon, and show its lines."), text("program")},
    });
}

// Puts a value that is none into badPort.
quint16 portIn(const QString &value, QString &badPort)
{
    bool isPort = false;
    const quint16 port = value.toUShort(&isPort);
    if (!isPort) {
        badPort = value;
    }
    return port;
}

QString problemWith(const QCommandLineParser &parser, const QString &busAddress, const QString &badPort)
{
    if (busAddress.isEmpty()) {
        return QStringLiteral("no bus: give --bus or set DBUS_SYSTEM_BUS_ADDRESS");
    }
    if (!badPort.isEmpty()) {
        return QStringLiteral("not a port: %1").arg(badPort);
    }
    if (!parser.isSet(certificate) || !parser.isSet(key)) {
        return QStringLiteral("the server needs --certificate and --key");
    }
    if (!parser.positionalArguments().isEmpty()) {
        return QStringLiteral("not understood: %1").arg(parser.positionalArguments().first());
    }
    return {};
}
} // namespace

Options Options::read()
{
    QCommandLineParser parser;
    describe(parser);
    parser.process(*QCoreApplication::instance());

    Options options;
    QString badPort;
    options.busAddress =
        parser.isSet(bus) ? parser.value(bus) : qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    options.port = portIn(parser.value(portName), badPort);
    if (parser.isSet(web)) {
        options.webPort = portIn(parser.value(web), badPort);
    }
    options.daemonProgram = parser.value(daemonProgramName);
    options.certificatePath = parser.value(certificate);
    options.keyPath = parser.value(key);
    options.apiKey = parser.value(apiKeyName);
    options.remoteId = parser.value(remoteIdName);
    options.serial = parser.value(serialName);
    options.widgets = parser.values(widget);
    options.shownPipePath = parser.value(show);
    options.isOffline = parser.isSet(offline);
    options.isDaemonWanted = !parser.isSet(noDaemon);
    options.isWidgetManagerWanted = !parser.isSet(noWidgetManager);
    options.isKeptRunning = parser.isSet(keepRunning);
    options.problem = problemWith(parser, options.busAddress, badPort);
    return options;
}
