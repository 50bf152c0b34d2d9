#include "commandinterpreter.h"

#include "commandwords.h"
#include "tracetext.h"

struct CommandInterpreter::Command {
    const char *name;
    const char *arguments;
    int fewest;
    int most;
    const char *help;
    QString (CommandInterpreter::*run)(const QStringList &);
};

const CommandInterpreter::Command CommandInterpreter::commands[] = {
    {"help", "", 0, 0, "this list", &CommandInterpreter::help},
    {"status", "", 0, 0, "what the device is like now", &CommandInterpreter::showStatus},
    {"set-key", "[KEY]", 0, 1, "the device gets an API key, which the server accepts; any if none is given",
     &CommandInterpreter::setKey},
    {"clear-key", "", 0, 0, "the device forgets its API key", &CommandInterpreter::clearKey},
    {"server-key", "KEY", 1, 1, "the server accepts this API key instead (to see 401)",
     &CommandInterpreter::setServerKey},
    {"set-remote-id", "ID", 1, 1, "the device gets its id on the server", &CommandInterpreter::setRemoteId},
    {"clear-remote-id", "", 0, 0, "the device forgets that id", &CommandInterpreter::clearRemoteId},
    {"internet", "on|off", 1, 1, "the internet comes back or goes away", &CommandInterpreter::setInternet},
    {"create-widget", "ID", 1, 1, "a widget is installed", &CommandInterpreter::createWidget},
    {"delete-widget", "ID", 1, 1, "a widget is removed", &CommandInterpreter::deleteWidget},
    {"start-service", "daemon|widget-manager|qwixtd", 1, 1, "a device service starts",
     &CommandInterpreter::startService},
    {"stop-service", "daemon|widget-manager|qwixtd", 1, 1, "a device service stops",
     &CommandInterpreter::stopService},
    {"list", "", 0, 0, "the applications that the server holds", &CommandInterpreter::list},
    {"add-app", "IDENTIFIER NAME TYPE [DEVICE]", 3, 4, "an application appears behind the device's back",
     &CommandInterpreter::addApplication},
    {"remove-app", "APP_ID", 1, 1, "an application goes behind the device's back",
     &CommandInterpreter::removeApplication},
    {"fail", "N|always STATUS", 2, 2, "the next N answers fail with this status",
     &CommandInterpreter::failWithStatus},
    {"delay", "N|always MS", 2, 2, "the next N answers come MS milliseconds late",
     &CommandInterpreter::failWithDelay},
    {"close", "N|always", 1, 1, "the next N requests get a closed connection and no answer",
     &CommandInterpreter::failWithClosedConnection},
    {"no-json", "N|always", 1, 1, "the next N answers have a body that is no JSON",
     &CommandInterpreter::failWithBodyThatIsNoJson},
    {"heal", "", 0, 0, "no more failures; answers held back go out now", &CommandInterpreter::heal},
    {"register", "UUID NAME TYPE", 3, 3, "a widget asks the daemon to register it",
     &CommandInterpreter::registerAsWidget},
    {"update", "APP_ID UUID NAME TYPE", 4, 4, "a widget asks the daemon to update it",
     &CommandInterpreter::updateAsWidget},
    {"delete", "APP_ID UUID TYPE", 3, 3, "a widget asks the daemon to delete it",
     &CommandInterpreter::deleteAsWidget},
    {"note", "TEXT", 1, 1, "a line of your own in the trace", &CommandInterpreter::note},
    {"quit", "", 0, 0, "end the simulator", &CommandInterpreter::quit},
};

CommandInterpreter::CommandInterpreter(DeviceSimulator &device, QObject *parent)
    : QObject(parent)
    , simulator(device)
{
}

QString CommandInterpreter::execute(const QString &line)
{
    const QString answer = obey(line);
    Q_EMIT executed();
    return answer;
}

QString CommandInterpreter::obey(const QString &line)
{
    QStringList words;
    if (!splitCommandWords(line, words)) {
        return QStringLiteral("error: a quote is left open");
    }
    if (words.isEmpty()) {
        return {};
    }
    const QString name = words.takeFirst();
    for (const Command &command : commands) {
        if (name != QLatin1String(command.name)) {
            continue;
        }
        if (words.size() < command.fewest || words.size() > command.most) {
            return QStringLiteral("error: usage: %1 %2")
                .arg(QLatin1String(command.name), QLatin1String(command.arguments))
                .trimmed();
        }
        return (this->*command.run)(words);
    }
    return QStringLiteral("error: no such command: %1 (try help)").arg(TraceText::quoted(name));
}

QString CommandInterpreter::help(const QStringList & /*arguments*/)
{
    QStringList lines;
    for (const Command &command : commands) {
        const QString call =
            QStringLiteral("%1 %2").arg(QLatin1String(command.name), QLatin1String(command.arguments));
        lines.append(QStringLiteral("  %1 %2").arg(call.leftJustified(42), QLatin1String(command.help)));
    }
    lines.append(QStringLiteral("Words with spaces stand in double quotes; \"\" is an empty word."));
    return lines.join(QLatin1Char('\n'));
}
