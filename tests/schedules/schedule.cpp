#include "schedule.h"

#include "scheduledmanager.h"
#include "transfers.h"
#include "virtualtime.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <algorithm>

namespace
{

struct Weight {
    Event::Kind kind;
    int share;
    const char *name;
};

const Weight weights[] = {
    {Event::Register, 8, "register"},
    {Event::Update, 6, "update"},
    {Event::Delete, 12, "delete"},
    {Event::WidgetCreated, 2, "widget created"},
    {Event::WidgetDeleted, 4, "widget deleted"},
    {Event::InternetChanged, 10, "internet"},
    {Event::ApiKeySet, 1, "api key set"},
    {Event::DaemonStarted, 1, "daemon started"},
    {Event::WidgetManagerStarted, 1, "widget manager started"},
    {Event::ListAsked, 2, "list asked"},
    {Event::TransferEnds, 26, "transfer ends"},
    {Event::ResultsArrive, 17, "results arrive"},
    {Event::TimePasses, 12, "time passes"},
    {Event::DeviceChanges, 2, "device changes"},
};

QString pick(const char *prefix, int number, int of)
{
    return QString::fromLatin1(prefix) + QString::number(number % of);
}

QByteArray listReply(int number)
{
    QJsonArray apps;
    for (int i = 0; i < 4; ++i) {
        if ((number >> i) % 2 == 0) {
            apps.append(QJsonObject{
                {QStringLiteral("device_id"), i == 3 ? QStringLiteral("d8") : QStringLiteral("d9")},
                {QStringLiteral("app_id"), pick("a", i == 2 ? number : i, 3)},
                {QStringLiteral("identifier"), pick("u", number + i, 4)},
                {QStringLiteral("name"), pick("n", number, 2)},
                {QStringLiteral("type"), pick("t", number, 2)}});
        }
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("apps"), apps}}).toJson(QJsonDocument::Compact);
}

QByteArray replyOf(bool isList, int number)
{
    if (number % 11 == 0) {
        return number % 2 == 0 ? QByteArray() : QByteArray("no JSON");
    }
    if (isList) {
        return listReply(number);
    }
    const QJsonObject reply = {{QStringLiteral("app_id"), pick("a", number, 5)},
                               {QStringLiteral("status"), QStringLiteral("ok")}};
    return QJsonDocument(reply).toJson(QJsonDocument::Compact);
}

Transfers::Outcome outcomeOf(const Event &event)
{
    const QByteArray reply = replyOf(Transfers::isWaitingForList(), event.b);
    switch (event.a % 10) {
    case 0:
        return {CURLE_OK, 503, "busy"};
    case 1:
        return {CURLE_OK, 500, {}};
    case 2:
        return {CURLE_OK, 400, {}};
    case 3:
        return {CURLE_OK, 404, {}};
    case 4:
        return {event.b % 2 == 0 ? CURLE_GOT_NOTHING : CURLE_COULDNT_RESOLVE_HOST, 0, {}};
    case 5:
        return {CURLE_OK, 201, reply};
    default:
        return {CURLE_OK, 200, reply};
    }
}

Device deviceOf(const Event &event)
{
    Device device;
    device.daemon = event.a % 4 == 0 ? static_cast<Device::Answers>(event.b % 3) : Device::Well;
    device.widgetManager = event.a % 5 == 0 ? static_cast<Device::Answers>(event.c % 3) : Device::Well;
    device.apiKey = event.b % 6 == 0 ? QString() : pick("key", event.b, 2);
    device.remoteId = event.c % 6 == 0 ? QString() : QStringLiteral("d9");
    device.internet = event.c % 4 != 0;
    for (int i = 0; i < 4; ++i) {
        if ((event.b >> i) % 2 == 0) {
            device.widgets.append(pick("u", i, 4));
        }
    }
    return device;
}

void happen(const Event &event, ScheduledManager &manager)
{
    switch (event.kind) {
    case Event::Register:
        manager.registerWidget(pick("u", event.a, 4), pick("n", event.b, 2), pick("t", event.c, 2));
        break;
    case Event::Update:
        manager.updateWidget(pick("a", event.a, 4), pick("u", event.b, 4), pick("n", event.c, 3),
                             pick("t", 0, 1));
        break;
    case Event::Delete:
        manager.deleteWidget(pick("a", event.a, 2), pick("u", event.b, 2), pick("t", 0, 1));
        break;
    case Event::WidgetCreated:
        manager.widgetWasCreated(pick("u", event.a, 6));
        break;
    case Event::WidgetDeleted:
        manager.widgetWasDeleted(pick("u", event.a, 4));
        break;
    case Event::InternetChanged:
        manager.internetHasChanged(event.a % 2 == 0);
        break;
    case Event::ApiKeySet:
        manager.keyWasSet(event.a % 5 == 0 ? QString() : pick("key", event.a, 2));
        break;
    case Event::DaemonStarted:
        manager.daemonHasStarted();
        break;
    case Event::WidgetManagerStarted:
        manager.widgetManagerHasStarted();
        break;
    case Event::ListAsked:
        manager.listIsAsked();
        break;
    case Event::TransferEnds:
        if (Transfers::isWaiting()) {
            manager.endTransfer(outcomeOf(event));
        }
        break;
    case Event::ResultsArrive:
        manager.takeResults();
        break;
    case Event::TimePasses:
        manager.passTime(event.a % 3 == 0 ? -1 : event.b * 6);
        break;
    case Event::DeviceChanges:
        manager.changeDevice(deviceOf(event));
        break;
    }
}

/// Everything comes back, and every transfer ends well, until nothing waits.
void calmDown(ScheduledManager &manager)
{
    Device device;
    device.apiKey = QStringLiteral("key");
    device.remoteId = QStringLiteral("d9");
    device.internet = true;
    device.widgets = QStringList({pick("u", 0, 4), pick("u", 1, 4)});
    manager.changeDevice(device);
    manager.daemonHasStarted();
    manager.widgetManagerHasStarted();
    manager.takeResults();
    // A list that was given up is asked for at the next return of the internet.
    manager.internetHasChanged(false);
    manager.internetHasChanged(true);
    for (int round = 0; round < 5000 && manager.isBusy() && manager.complaint().isEmpty(); ++round) {
        if (Transfers::isWaiting()) {
            manager.endTransfer({CURLE_OK, 200, replyOf(Transfers::isWaitingForList(), 1)});
        } else {
            manager.passTime(-1);
        }
        manager.takeResults();
    }
}

} // namespace

Schedule scheduleOf(quint32 seed, int length)
{
    QRandomGenerator random(seed);
    int total = 0;
    for (const Weight &weight : weights) {
        total += weight.share;
    }
    Schedule schedule;
    for (int i = 0; i < length; ++i) {
        int share = random.bounded(total);
        const auto *const weight =
            std::find_if(std::begin(weights), std::end(weights),
                         [&share](const Weight &each) { return (share -= each.share) < 0; });
        const int a = random.bounded(1000);
        const int b = random.bounded(1000);
        const int c = random.bounded(1000);
        schedule.append({weight->kind, a, b, c});
    }
    return schedule;
}

QString textOf(const Event &event)
{
    const auto *const weight = std::find_if(std::begin(weights), std::end(weights),
                                            [&event](const Weight &each) { return each.kind == event.kind; });
    return QStringLiteral("%1 (%2, %3, %4)")
        .arg(QString::fromLatin1(weight->name))
        .arg(event.a)
        .arg(event.b)
        .arg(event.c);
}

QString carryOut(const Schedule &schedule, VirtualTime &time, DeviceStub &stub)
{
    ScheduledManager manager(time, stub);
    // Most schedules begin on a device that is well, so that they get far.
    const bool isWell = !schedule.isEmpty() && schedule.first().a % 4 != 0;
    manager.begin(isWell ? deviceOf({Event::DeviceChanges, 1, 1, 1}) : deviceOf(schedule.value(0)));
    for (const Event &event : schedule) {
        happen(event, manager);
        if (!manager.complaint().isEmpty()) {
            break;
        }
    }
    if (manager.complaint().isEmpty()) {
        calmDown(manager);
    }
    manager.finish();
    return manager.complaint();
}

Schedule shortened(Schedule schedule, VirtualTime &time, DeviceStub &stub)
{
    for (int length = static_cast<int>(schedule.size()) / 2; length >= 1; length /= 2) {
        for (int begin = 0; begin + length <= schedule.size();) {
            Schedule shorter = schedule.mid(0, begin) + schedule.mid(begin + length);
            if (carryOut(shorter, time, stub).isEmpty()) {
                begin += length;
            } else {
                schedule = shorter;
            }
        }
    }
    return schedule;
}
