#include "scheduledmanager.h"

#include "devicestub.h"
#include "remoterequestworker.h"
#include "remotetaskwithdescription.h"
#include "taskconnections.h"
#include "virtualtime.h"
#include "vthread.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace
{

constexpr qint64 retryDelayMs = 5000;
constexpr int connectionsOfATask = 7; ///< five to the fetcher, two to the worker

QString textOf(const RemoteTaskDescription &descr)
{
    QStringList words = {QString::number(descr.type), descr.id};
    for (const QVariant &value : descr.data) {
        words.append(value.toString());
    }
    return words.join(QLatin1Char(' '));
}

QStringList textsOf(const QList<RemoteTaskDescription> &descriptions)
{
    QStringList texts;
    for (const RemoteTaskDescription &descr : descriptions) {
        texts.append(textOf(descr));
    }
    return texts;
}

QStringList linesOf(const QMap<QString, RemoteApplication *> &records)
{
    QMap<QString, RemoteApplication> values;
    for (auto record = records.cbegin(); record != records.cend(); ++record) {
        values.insert(record.key(), *record.value());
    }
    return Model::lines(values);
}

} // namespace

ScheduledManager::ScheduledManager(VirtualTime &virtualTime, DeviceStub &deviceStub)
    : time(virtualTime)
    , stub(deviceStub)
{
    connect(this, &QWixtApplicationManager::applicationRegistered, this,
            [this](const QString &uuid, const QString &appId, const QString &type) {
                announced.append(QStringLiteral("registered %1 %2 %3").arg(uuid, appId, type));
            });
    connect(this, &QWixtApplicationManager::applicationDeleted, this,
            [this](const QString &uuid, const QString &appId, const QString &type) {
                announced.append(QStringLiteral("deleted %1 %2 %3").arg(uuid, appId, type));
            });
    connect(this, &QWixtApplicationManager::readyToWork, this,
            [this] { announced.append(QStringLiteral("ready")); });
    // Behind the manager's own connections, so that it has acted when these are called.
    connect(
        worker, &RemoteRequestWorker::taskSuccess, this,
        [this](const QByteArray &data, const RemoteTaskDescription &descr) { noteResult(0, data, descr); });
    connect(worker, &RemoteRequestWorker::taskFailed, this,
            [this](int code, const QByteArray &data, const RemoteTaskDescription &descr) {
                noteResult(code, data, descr);
            });
}

void ScheduledManager::begin(const Device &initialDevice)
{
    changeDevice(initialDevice);
    start();
    model.start(device);
    check();
}

void ScheduledManager::changeDevice(const Device &newDevice)
{
    device = newDevice;
    stub.answerWith(device);
}

void ScheduledManager::registerWidget(const QString &uuid, const QString &name, const QString &type)
{
    registerApplication(uuid, name, type);
    model.registerApplication(uuid, name, type);
    check();
}

void ScheduledManager::updateWidget(const QString &appId, const QString &uuid, const QString &name,
                                    const QString &type)
{
    updateApplication(appId, uuid, name, type);
    model.updateApplication(appId, uuid, name, type);
    check();
}

void ScheduledManager::deleteWidget(const QString &appId, const QString &uuid, const QString &type)
{
    deleteApplication(appId, uuid, type);
    model.deleteApplication(appId, uuid, type);
    check();
}

void ScheduledManager::widgetWasCreated(const QString &id)
{
    widgetCreated(QStringLiteral("package"), id);
    model.widgetCreated(id);
    check();
}

void ScheduledManager::widgetWasDeleted(const QString &id)
{
    widgetDeleted(QStringLiteral("package"), id);
    model.widgetDeleted(id);
    check();
}

void ScheduledManager::internetHasChanged(bool available)
{
    internetAvailabilityStateChanged(available);
    model.internetChanged(available);
    check();
}

void ScheduledManager::keyWasSet(const QString &key)
{
    setupFinished(key);
    model.setupFinished(key, device);
    check();
}

void ScheduledManager::daemonHasStarted()
{
    vorletDaemonStarted();
    model.daemonStarted(device);
    check();
}

void ScheduledManager::widgetManagerHasStarted()
{
    windowManagerStarted();
    model.windowManagerStarted(device);
    check();
}

void ScheduledManager::listIsAsked()
{
    if (state != WaitForList && state != Ready) {
        return; // nothing of the daemon's asks for it then
    }
    getListOfRemoteApps();
    model.askForList();
    check();
}

void ScheduledManager::endTransfer(const Transfers::Outcome &outcome)
{
    transferStarts.append(waitingSince);
    wasWaiting = false;
    Transfers::end(outcome);
    settle();
}

void ScheduledManager::takeResults()
{
    time.deliverPosted();
    check();
}

void ScheduledManager::passTime(qint64 ms)
{
    const bool wasIdle = !Transfers::isWaiting();
    time.pass(ms >= 0 ? ms : std::max<qint64>(time.untilNextTimer(), 0));
    check();
    if (wasIdle && Transfers::isWaiting() && !Transfers::isWaitingForList() && state != Ready) {
        complain(QStringLiteral("a retry was sent in state %1").arg(state));
    }
}

bool ScheduledManager::isBusy() const
{
    return !pendingTasks.isEmpty() || !retryTimers.isEmpty() || !transferStarts.isEmpty() ||
           Transfers::isWaiting();
}

void ScheduledManager::finish()
{
    settle();
    takeResults(); // the tasks' way home is behind the last results
    if (firstComplaint.isEmpty()) {
        checkEnd();
    }
    state = WaitForDaemonsToStart; // nothing more is sent
    daemonStarted = false;
    while (Transfers::isWaiting()) {
        endTransfer({CURLE_GOT_NOTHING, 0, {}});
    }
}

QString ScheduledManager::complaint() const
{
    return firstComplaint;
}

void ScheduledManager::complain(const QString &text)
{
    if (firstComplaint.isEmpty()) {
        firstComplaint = text;
    }
}

/// Lets the fetch thread do what it can.
void ScheduledManager::settle()
{
    Transfers::settle(findChild<VThread *>());
    const bool isWaiting = Transfers::isWaiting();
    if (isWaiting && !wasWaiting) {
        waitingSince = time.now();
    }
    wasWaiting = isWaiting;
}

void ScheduledManager::check()
{
    if (!pendingTasks.isEmpty()) {
        settle(); // a run may have been handed over
    }
    const auto same = [this](const char *what, const QStringList &is, const QStringList &mustBe) {
        if (is != mustBe) {
            complain(QStringLiteral("%1: {%2} where the model has {%3}")
                         .arg(QString::fromLatin1(what), is.join(QStringLiteral(", ")),
                              mustBe.join(QStringLiteral(", "))));
        }
    };
    same("state", {QString::number(state)}, {QString::number(model.state)});
    same("pending", textsOf(pendingTasks.inOrder()), textsOf(model.pending));
    same("remote records", linesOf(remoteApplications), Model::lines(model.remote));
    same("local records", linesOf(localApplications), Model::lines(model.local));
    same("installed widgets", installedWidgets, model.installed);
    same("announced", announced, model.announced);
    checkTasks();
}

void ScheduledManager::checkTasks()
{
    for (RemoteTaskWithDescription *const task : tasksByDescription) {
        tasksSeen.insert(task, task);
        const int connections = connectionsOf(task);
        if (connections > connectionsOfATask) {
            complain(QStringLiteral("%1 connections of one task").arg(connections));
        }
    }
}

void ScheduledManager::checkEnd()
{
    if (isBusy()) {
        complain(QStringLiteral("after the calm there wait: {%1}, %2 retries, %3 results")
                     .arg(textsOf(pendingTasks.inOrder()).join(QStringLiteral(", ")))
                     .arg(retryTimers.size())
                     .arg(transferStarts.size()));
        return;
    }
    for (const Runs &each : std::as_const(runs)) {
        const bool isList = each.descr.type == RemoteTaskDescription::GetList;
        const auto accepted =
            isList ? model.listsAccepted : static_cast<int>(model.accepted.count(each.descr));
        if (each.results != accepted + each.retriable) {
            complain(QStringLiteral("%1: asked %2 times, failed %3 times, sent %4 times")
                         .arg(textOf(each.descr))
                         .arg(accepted)
                         .arg(each.retriable)
                         .arg(each.results));
        }
    }
    if (!tasksByDescription.isEmpty() || !outstandingRuns.isEmpty()) {
        complain(QStringLiteral("tasks or runs are left"));
    }
    if (findChildren<QTimer *>().size() != 1) {
        complain(QStringLiteral("a timer is left"));
    }
    const auto isAlive = [](const QPointer<RemoteTaskWithDescription> &task) { return !task.isNull(); };
    if (std::any_of(tasksSeen.cbegin(), tasksSeen.cend(), isAlive)) {
        complain(QStringLiteral("a task was not deleted"));
    }
    if (Transfers::openHandles() != 0) {
        complain(QStringLiteral("a handle was not freed"));
    }
}

/// A run has ended, and the manager knows of it.
void ScheduledManager::noteResult(int code, const QByteArray &data, const RemoteTaskDescription &descr)
{
    if (transferStarts.isEmpty()) {
        complain(QStringLiteral("a result without a transfer: ") + textOf(descr));
        return;
    }
    const qint64 startedAt = transferStarts.takeFirst();
    checkOrder(descr);
    Runs &each = runsOf(descr);
    ++each.results;
    // Of equal requests, one may go out while the retry of the other waits.
    const bool isAlone = model.pending.count(descr) == 1;
    if (isAlone && each.lastFailure >= 0 && startedAt - each.lastFailure < retryDelayMs) {
        complain(QStringLiteral("%1: sent again after %2 ms")
                     .arg(textOf(descr))
                     .arg(startedAt - each.lastFailure));
    }
    each.lastFailure = -1;
    if (code == 0) {
        model.succeeded(descr, data);
        return;
    }
    if (code != 400 && code != 404) {
        ++each.retriable;
        each.lastFailure = time.now();
    }
    model.failed(descr, code);
}

/// Requests are sent for the first time in the order in which they were accepted.
void ScheduledManager::checkOrder(const RemoteTaskDescription &descr)
{
    if (descr.type == RemoteTaskDescription::GetList || runsOf(descr).results > 0) {
        return;
    }
    for (const RemoteTaskDescription &earlier : std::as_const(model.accepted)) {
        if (earlier == descr) {
            return;
        }
        if (runsOf(earlier).results == 0) {
            complain(QStringLiteral("%1 was sent before %2").arg(textOf(descr), textOf(earlier)));
        }
    }
}

ScheduledManager::Runs &ScheduledManager::runsOf(const RemoteTaskDescription &descr)
{
    const auto known =
        std::find_if(runs.begin(), runs.end(), [&descr](const Runs &each) { return each.descr == descr; });
    if (known != runs.end()) {
        return *known;
    }
    runs.append(Runs());
    runs.last().descr = descr;
    return runs.last();
}
