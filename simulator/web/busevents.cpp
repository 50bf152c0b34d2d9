#include "busevents.h"

#include "lane.h"
#include "tracetext.h"

#include <QJsonDocument>

#include <algorithm>

namespace
{
const auto daemonName = QStringLiteral("com.qwixtd");
const auto daemonInterface = QStringLiteral("com.vorlet.qwixtd");
const auto standardInterfaces = QStringLiteral("org.freedesktop.DBus");
constexpr std::size_t mostWaiting = 10000;
constexpr int largestShown = 64 * 1024;

QString laneOfName(const QString &name)
{
    if (name == daemonName) {
        return Lane::qwixtd;
    }
    const bool isOfDevice =
        name == QStringLiteral("vorlet.daemon") || name == QStringLiteral("widget.manager");
    return isOfDevice ? Lane::device : Lane::widgets;
}

// The API key's place is taken by asterisks; an empty key is no secret.
QJsonArray withoutKey(const QString &member, const QJsonArray &arguments)
{
    const bool carriesTheKey = member == QStringLiteral("apiKey") ||
                               member == QStringLiteral("apiKeyDidSet") ||
                               member == QStringLiteral("setApiKey");
    if (!carriesTheKey || arguments.isEmpty() || arguments == QJsonArray{QString::fromLatin1("")}) {
        return arguments;
    }
    return {QStringLiteral("***")};
}

int sizeOf(const QJsonValue &value)
{
    constexpr int brackets = 2;
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return static_cast<int>(list.size()) - brackets;
}

QString cut(const QString &text, int room = largestShown)
{
    return text.size() <= room ? text
                               : text.left(room) + QStringLiteral("... (%1 characters)").arg(text.size());
}

// What does not fit is cut if it is a string, and otherwise left out, with a remark in its place.
QJsonArray bounded(const QJsonArray &arguments)
{
    int room = largestShown;
    QJsonArray shown;
    for (const QJsonValue argument : arguments) {
        const int size = sizeOf(argument);
        if (size <= room) {
            shown.append(argument);
        } else if (argument.isString()) {
            shown.append(cut(argument.toString(), room));
        } else {
            shown.append(QStringLiteral("... (%1 bytes)").arg(size));
        }
        room = std::max(room - size, 0);
    }
    return shown;
}

// What is kept of the arguments of a message.
QJsonArray shownOf(const QString &member, const QJsonArray &arguments)
{
    return bounded(withoutKey(member, arguments));
}

// The widget that a message is about; empty when it is about none.
QString widgetOf(const BusMessage &message, const QJsonArray &arguments)
{
    static const QMap<QString, int> places{{QStringLiteral("registerQwixtApplication"), 0},
                                           {QStringLiteral("updateQwixtApplication"), 1},
                                           {QStringLiteral("deleteQwixtApplication"), 1},
                                           {QStringLiteral("applicationRegistered"), 0},
                                           {QStringLiteral("applicationDeleted"), 0},
                                           {QStringLiteral("newWidgetCreated"), 1},
                                           {QStringLiteral("widgetDeleted"), 1}};
    return arguments.at(places.value(message.member, -1)).toString();
}

QString titleOf(const BusMessage &message, const QJsonArray &arguments)
{
    return message.member + cut(TraceText::arguments(arguments.toVariantList()));
}

QJsonObject eventOf(const char *kind, const QString &from, const QString &to, const QString &title)
{
    return {{QStringLiteral("kind"), QString::fromLatin1(kind)},
            {QStringLiteral("from"), from},
            {QStringLiteral("to"), to},
            {QStringLiteral("title"), title}};
}

void describe(QJsonObject &event, const BusMessage &message, const QJsonArray &arguments,
              const QString &service)
{
    event.insert(QStringLiteral("service"), service);
    event.insert(QStringLiteral("path"), cut(message.path));
    event.insert(QStringLiteral("interface"), message.interface);
    event.insert(QStringLiteral("member"), message.member);
    event.insert(QStringLiteral("args"), arguments);
}
} // namespace

BusEvents::BusEvents(BusMonitor &monitor_, EventLog &log_, QObject *parent)
    : QObject(parent)
    , monitor(monitor_)
    , log(log_)
{
    connect(&monitor, &BusMonitor::passed, this, &BusEvents::take);
    connect(&monitor, &BusMonitor::ownerChanged, this, &BusEvents::takeOwner);
}

void BusEvents::take(const BusMessage &message)
{
    switch (message.type) {
    case BusMessage::Type::Call:
        takeCall(message);
        break;
    case BusMessage::Type::Answer:
    case BusMessage::Type::Error:
        takeAnswer(message);
        break;
    case BusMessage::Type::Signal:
        takeSignal(message);
        break;
    }
}

void BusEvents::takeCall(const BusMessage &message)
{
    const QJsonArray arguments = shownOf(message.member, message.arguments);
    const Call call{log.last() + 1,         EventLog::nowMs(),           message.member,
                    laneOf(message.sender), laneOf(message.destination), widgetOf(message, arguments)};
    const bool isOfTheBus = message.destination == standardInterfaces ||
                            message.interface.startsWith(standardInterfaces + QLatin1Char('.'));
    if (isOfTheBus || (call.from == Lane::widgets && call.to == Lane::widgets)) {
        return;
    }
    const QString service = nameOf(message.destination);
    const QString title = titleOf(message, arguments);
    QJsonObject event =
        eventOf("call", call.from, call.to,
                call.to == Lane::qwixtd ? title : QStringLiteral("%1 %2").arg(service, title));
    describe(event, message, arguments, service);
    event.insert(QStringLiteral("widget"), call.widget);
    log.append(event);
    if (message.isAnswerWanted) {
        awaitAnswer(message, call);
    }
}

void BusEvents::awaitAnswer(const BusMessage &message, const Call &call)
{
    waiting[{message.sender, message.serial}] = call;
    if (waiting.size() > mostWaiting) {
        waiting.erase(
            std::min_element(waiting.begin(), waiting.end(), [](const auto &one, const auto &other) {
                return one.second.number < other.second.number;
            }));
    }
}

void BusEvents::takeAnswer(const BusMessage &message)
{
    const auto found = waiting.find({message.destination, message.replySerial});
    if (found == waiting.end()) {
        return;
    }
    const Call call = found->second;
    waiting.erase(found);
    const bool isError = message.type == BusMessage::Type::Error;
    const QJsonArray arguments = shownOf(call.member, message.arguments);
    const QString title =
        isError ? QStringLiteral("error %1: %2")
                      .arg(message.errorName, TraceText::printable(arguments.at(0).toString()))
                : call.member + QStringLiteral(" -> ") + cut(TraceText::arguments(arguments.toVariantList()));
    QJsonObject event = eventOf("answer", call.to, call.from, title);
    event.insert(QStringLiteral("re"), call.number);
    event.insert(QStringLiteral("ms"), EventLog::nowMs() - call.time);
    event.insert(QStringLiteral("failed"), isError);
    event.insert(QStringLiteral("member"), call.member);
    event.insert(QStringLiteral("args"), arguments);
    event.insert(QStringLiteral("widget"), call.widget);
    log.append(event);
}

void BusEvents::takeSignal(const BusMessage &message)
{
    const QString from = laneOf(message.sender);
    // What anybody says under the daemon's interface is worth seeing.
    if (from == Lane::widgets && message.interface != daemonInterface) {
        return;
    }
    const QJsonArray arguments = shownOf(message.member, message.arguments);
    const QString service = nameOf(message.sender);
    const QString title = titleOf(message, arguments);
    QJsonObject event =
        eventOf("signal", from, from == Lane::qwixtd ? Lane::widgets : Lane::qwixtd,
                from == Lane::device ? QStringLiteral("%1 says %2").arg(service, title) : title);
    describe(event, message, arguments, service);
    event.insert(QStringLiteral("widget"), widgetOf(message, arguments));
    log.append(event);
}

void BusEvents::takeOwner(const QString &name, bool isOwned)
{
    const QString lane = laneOfName(name);
    if (lane == Lane::widgets) {
        return;
    }
    log.append(eventOf(
        "note", lane, lane,
        name + (isOwned ? QStringLiteral(" is on the bus") : QStringLiteral(" is gone from the bus"))));
}

QString BusEvents::nameOf(const QString &busName) const
{
    const QStringList names = monitor.namesOf(busName);
    const auto known = std::find_if(names.begin(), names.end(),
                                    [](const QString &name) { return laneOfName(name) != Lane::widgets; });
    return known == names.end() ? names.value(0) : *known;
}

QString BusEvents::laneOf(const QString &busName) const
{
    return laneOfName(nameOf(busName));
}
