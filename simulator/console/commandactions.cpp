// What each command of CommandInterpreter does.
#include "commandinterpreter.h"

#include "devicesimulator.h"
#include "tracetext.h"

#include <QUuid>

namespace
{
const auto ok = QStringLiteral("ok");
const auto always = QStringLiteral("always");
const auto qwixtd = QStringLiteral("qwixtd");
const auto services = QStringLiteral("daemon, widget-manager or qwixtd");

// A whole number from lowest to highest, or -1.
int numberIn(const QString &text, int lowest, int highest)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber && number >= lowest && number <= highest ? number : -1;
}

QString notUnderstood(const QString &what, const QString &wanted)
{
    return QStringLiteral("error: %1 is not %2").arg(TraceText::quoted(what), wanted);
}
} // namespace

QString CommandInterpreter::showStatus(const QStringList & /*arguments*/)
{
    const auto running = [](bool isRunning) {
        return isRunning ? QStringLiteral("running") : QStringLiteral("stopped");
    };
    DaemonService &daemon = simulator.daemon();
    const QStringList widgets = simulator.widgetManager().widgets();
    return QStringLiteral("daemon: %1, widget-manager: %2, com.qwixtd: %3\n"
                          "API key: %4, remote id: %5, serial: %6, internet: %7\n"
                          "widgets: %8\n"
                          "server: https://%9")
        .arg(running(daemon.isRunning()), running(simulator.widgetManager().isRunning()),
             simulator.watcher().isDaemonPresent() ? QStringLiteral("on the bus") : QStringLiteral("absent"),
             daemon.apiKey().isEmpty() ? QStringLiteral("none") : QStringLiteral("***"),
             TraceText::quoted(daemon.remoteId()), TraceText::quoted(daemon.serial()),
             daemon.isInternetAvailable() ? QStringLiteral("on") : QStringLiteral("off"),
             TraceText::value(widgets), simulator.server().host());
}

QString CommandInterpreter::setKey(const QStringList &arguments)
{
    const QString key = arguments.value(0, QUuid::createUuid().toString(QUuid::Id128));
    if (key.isEmpty()) {
        return QStringLiteral("error: an empty key is cleared with clear-key");
    }
    simulator.setApiKey(key);
    return ok;
}

QString CommandInterpreter::clearKey(const QStringList & /*arguments*/)
{
    simulator.clearApiKey();
    return ok;
}

QString CommandInterpreter::setServerKey(const QStringList &arguments)
{
    simulator.server().setApiKey(arguments[0]);
    return ok;
}

QString CommandInterpreter::setRemoteId(const QStringList &arguments)
{
    simulator.daemon().setRemoteId(arguments[0]);
    return ok;
}

QString CommandInterpreter::clearRemoteId(const QStringList & /*arguments*/)
{
    simulator.daemon().setRemoteId(QString::fromLatin1(""));
    return ok;
}

QString CommandInterpreter::setInternet(const QStringList &arguments)
{
    const bool isOn = arguments[0] == QStringLiteral("on");
    if (!isOn && arguments[0] != QStringLiteral("off")) {
        return notUnderstood(arguments[0], QStringLiteral("on or off"));
    }
    if (simulator.daemon().isInternetAvailable() == isOn) {
        return QStringLiteral("ok: it was %1 already").arg(arguments[0]);
    }
    simulator.daemon().setInternetAvailable(isOn);
    return ok;
}

QString CommandInterpreter::createWidget(const QStringList &arguments)
{
    simulator.widgetManager().createWidget(arguments[0]);
    return ok;
}

QString CommandInterpreter::deleteWidget(const QStringList &arguments)
{
    return simulator.widgetManager().deleteWidget(arguments[0])
               ? ok
               : QStringLiteral("error: no such widget: %1").arg(TraceText::quoted(arguments[0]));
}

QString CommandInterpreter::startService(const QStringList &arguments)
{
    if (arguments[0] == qwixtd) {
        return startQwixtd();
    }
    BusService *const service = serviceNamed(arguments[0]);
    if (service == nullptr) {
        return notUnderstood(arguments[0], services);
    }
    if (service->isRunning()) {
        return QStringLiteral("ok: it was running already");
    }
    return service->start() ? ok : QStringLiteral("error: ") + service->errorText();
}

QString CommandInterpreter::stopService(const QStringList &arguments)
{
    if (arguments[0] == qwixtd) {
        return stopQwixtd();
    }
    BusService *const service = serviceNamed(arguments[0]);
    if (service == nullptr) {
        return notUnderstood(arguments[0], services);
    }
    if (!service->isRunning()) {
        return QStringLiteral("ok: it was stopped already");
    }
    service->stop();
    return ok;
}

QString CommandInterpreter::list(const QStringList & /*arguments*/)
{
    const QList<ServerApplication> applications = simulator.server().applications();
    QStringList lines{QStringLiteral("the server holds %1 application(s)").arg(applications.size())};
    for (const ServerApplication &application : applications) {
        lines.append(QStringLiteral("  %1 device %2 identifier %3 name %4 type %5")
                         .arg(TraceText::printable(application.appId),
                              TraceText::quoted(application.deviceId),
                              TraceText::quoted(application.identifier), TraceText::quoted(application.name),
                              TraceText::quoted(application.type)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString CommandInterpreter::addApplication(const QStringList &arguments)
{
    const QString device = arguments.value(3, simulator.daemon().remoteId());
    const QString appId =
        simulator.server().addApplication({device, QString(), arguments[0], arguments[1], arguments[2]});
    return QStringLiteral("ok: added as %1").arg(appId);
}

QString CommandInterpreter::removeApplication(const QStringList &arguments)
{
    return simulator.server().removeApplication(arguments[0])
               ? ok
               : QStringLiteral("error: no such application: %1").arg(TraceText::quoted(arguments[0]));
}

QString CommandInterpreter::failWithStatus(const QStringList &arguments)
{
    const int status = numberIn(arguments[1], 200, 599);
    if (status < 0) {
        return notUnderstood(arguments[1], QStringLiteral("a status from 200 to 599"));
    }
    return arrange(arguments[0], ServerFault::withStatus(status), QStringLiteral("status %1").arg(status));
}

QString CommandInterpreter::failWithDelay(const QStringList &arguments)
{
    const int delayMs = numberIn(arguments[1], 0, 3600000);
    if (delayMs < 0) {
        return notUnderstood(arguments[1], QStringLiteral("a number of milliseconds up to 3600000"));
    }
    return arrange(arguments[0], ServerFault::withDelay(delayMs), QStringLiteral("%1 ms late").arg(delayMs));
}

QString CommandInterpreter::failWithClosedConnection(const QStringList &arguments)
{
    return arrange(arguments[0], ServerFault::withClosedConnection(), QStringLiteral("a closed connection"));
}

QString CommandInterpreter::failWithBodyThatIsNoJson(const QStringList &arguments)
{
    return arrange(arguments[0], ServerFault::withBodyThatIsNoJson(),
                   QStringLiteral("a body that is no JSON"));
}

QString CommandInterpreter::heal(const QStringList & /*arguments*/)
{
    simulator.server().clearFaults();
    return ok;
}

QString CommandInterpreter::registerAsWidget(const QStringList &arguments)
{
    simulator.watcher().registerApplication(arguments[0], arguments[1], arguments[2]);
    return ok;
}

QString CommandInterpreter::updateAsWidget(const QStringList &arguments)
{
    simulator.watcher().updateApplication(arguments[0], arguments[1], arguments[2], arguments[3]);
    return ok;
}

QString CommandInterpreter::deleteAsWidget(const QStringList &arguments)
{
    simulator.watcher().deleteApplication(arguments[0], arguments[1], arguments[2]);
    return ok;
}

QString CommandInterpreter::note(const QStringList &arguments)
{
    simulator.note(arguments[0]);
    return ok;
}

QString CommandInterpreter::quit(const QStringList & /*arguments*/)
{
    Q_EMIT quitRequested();
    return QStringLiteral("bye");
}

QString CommandInterpreter::startQwixtd()
{
    DaemonProcess &process = simulator.daemonProcess();
    if (!process.isGiven()) {
        return QStringLiteral("error: this simulator was given no program to start (--qwixtd)");
    }
    if (process.isRunning()) {
        return QStringLiteral("ok: it was running already");
    }
    if (simulator.watcher().isDaemonPresent()) {
        return QStringLiteral("error: com.qwixtd is still on the bus");
    }
    return process.start() ? ok : QStringLiteral("error: ") + process.errorText();
}

QString CommandInterpreter::stopQwixtd()
{
    DaemonProcess &process = simulator.daemonProcess();
    if (!process.isRunning()) {
        return process.isGiven() ? QStringLiteral("ok: it was stopped already")
                                 : QStringLiteral("error: this simulator did not start it (--qwixtd)");
    }
    process.stop();
    return ok;
}

QString CommandInterpreter::arrange(const QString &count, const ServerFault &fault, const QString &what)
{
    if (count == always) {
        simulator.server().failAlways(fault);
        return QStringLiteral("ok: all answers until heal: %1").arg(what);
    }
    const int number = numberIn(count, 1, 1000000);
    if (number < 0) {
        return notUnderstood(count, QStringLiteral("a number of answers or \"always\""));
    }
    simulator.server().failNext(number, fault);
    return QStringLiteral("ok: next %1 answer(s): %2").arg(number).arg(what);
}

BusService *CommandInterpreter::serviceNamed(const QString &name)
{
    if (name == QStringLiteral("daemon")) {
        return &simulator.daemon();
    }
    return name == QStringLiteral("widget-manager") ? &simulator.widgetManager() : nullptr;
}
