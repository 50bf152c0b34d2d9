#include "openmanager.h"

#include "descriptions.h"
#include "fetcherprobe.h"
#include "remotetaskwithdescription.h"
#include "vthread.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

namespace
{

QStringList asText(const QMap<QString, RemoteApplication *> &records)
{
    QStringList list;
    for (auto record = records.cbegin(); record != records.cend(); ++record) {
        const RemoteApplication a = record.value() == nullptr ? RemoteApplication() : *record.value();
        list.append(
            QStringLiteral("%1: %2 %3 %4 %5").arg(record.key(), a.appId, a.identifier, a.name, a.type));
    }
    return list;
}

} // namespace

OpenManager::~OpenManager()
{
    letGoInWorker();
    // Results that still come in lead to no further requests.
    state = WaitForDaemonsToStart;
    daemonStarted = false;
    CurlFake::release();
    finishOnFetchThread();                // the runs
    QCoreApplication::sendPostedEvents(); // their results, which dispose of their tasks
    finishOnFetchThread();                // the tasks' way home
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void OpenManager::finishOnFetchThread()
{
    auto *const thread = findChild<VThread *>();
    if (thread == nullptr || !thread->isRunning()) {
        return;
    }
    // An event of our own, behind those that are there.
    QObject last;
    last.moveToThread(thread);
    QThread *const home = QThread::currentThread();
    QMetaObject::invokeMethod(
        &last, [&last, home] { last.moveToThread(home); }, Qt::BlockingQueuedConnection);
}

void OpenManager::beReady()
{
    setKnowledge({true, true, true, true, QStringLiteral("key"), QString(), QStringLiteral("d9"), {}});
    state = Ready;
}

void OpenManager::beWaitingForList()
{
    beReady();
    remoteListReceived = false;
    state = WaitForList;
}

bool OpenManager::beReadyWithOneRetry()
{
    CurlFake::queueAnswer({CURLE_OK, 503, "", ""});
    beReady();
    registerApplication(text("u1"), text("n"), text("t"));
    return QTest::qWaitFor([this] { return retryCount() == 1; });
}

void OpenManager::setState(int number)
{
    state = static_cast<ManagerState>(number);
}

void OpenManager::setKnowledge(const Knowledge &knowledge)
{
    daemonStarted = knowledge.daemonStarted;
    widgetsListReceived = knowledge.widgetsListReceived;
    internetAvailable = knowledge.internetAvailable;
    remoteListReceived = knowledge.remoteListReceived;
    apiKey = knowledge.apiKey;
    serial = knowledge.serial;
    remoteId = knowledge.remoteId;
    installedWidgets = knowledge.installedWidgets;
}

OpenManager::Knowledge OpenManager::knowledge() const
{
    return {daemonStarted, widgetsListReceived, internetAvailable, remoteListReceived, apiKey, serial,
            remoteId,      installedWidgets};
}

void OpenManager::setApiKey(const QString &key)
{
    apiKey = key;
}

void OpenManager::setRemoteId(const QString &id)
{
    remoteId = id;
}

void OpenManager::setWidgets(const QStringList &widgets)
{
    installedWidgets = widgets;
}

void OpenManager::setQueue(std::initializer_list<RemoteTaskDescription> descriptions)
{
    pendingTasks = descriptions;
}

void OpenManager::addRemote(const RemoteApplication &application)
{
    remoteApplications.insert(application.appId, new RemoteApplication(application));
}

void OpenManager::addRemoteId(const QString &appId)
{
    remoteApplications.insert(appId, nullptr);
}

void OpenManager::loseInternet()
{
    internetAvailable = false;
    evaluateState();
}

void OpenManager::regainInternet()
{
    internetAvailable = true;
    evaluateState();
}

void OpenManager::succeed(const RemoteTaskDescription &descr, const QByteArray &reply)
{
    QByteArray data = reply;
    workerFinishedWithSuccess(data, descr);
}

void OpenManager::fail(const RemoteTaskDescription &descr, int code, const QByteArray &reply)
{
    QByteArray data = reply;
    workerFinishedWithFail(code, data, descr);
}

void OpenManager::retryNow()
{
    const QList<QTimer *> timers = retryTimers.values();
    for (QTimer *timer : timers) {
        timer->start(0);
    }
}

void OpenManager::holdInWorker(RemoteTaskWithDescription *task)
{
    // The thread's start has the queue looked into once more. It was reported before the first run.
    QCoreApplication::sendPostedEvents();
    FetcherProbe(*this).leaveInQueue(task);
}

void OpenManager::letGoInWorker()
{
    FetcherProbe(*this).emptyQueue();
}

int OpenManager::heldInWorker() const
{
    return FetcherProbe(*this).queued();
}

RemoteTaskWithDescription *OpenManager::taskOf(const RemoteTaskDescription &descr) const
{
    return tasksByDescription.find(descr);
}

RemoteTaskWithDescription *OpenManager::anyTask() const
{
    return *tasksByDescription.begin();
}

RemoteTaskWithDescription *OpenManager::onlyTask() const
{
    return taskCount() == 1 ? anyTask() : nullptr;
}

QTimer *OpenManager::onlyRetry() const
{
    return retryCount() == 1 ? retryTimers.first() : nullptr;
}

RemoteTaskWithDescription *OpenManager::taskOfOnlyRetry() const
{
    return retryCount() == 1 ? retryTimers.firstKey() : nullptr;
}

bool OpenManager::holdsNothing() const
{
    return pendingTasks.isEmpty() && tasksByDescription.isEmpty() && retryTimers.isEmpty() &&
           outstandingRuns.isEmpty();
}

QStringList OpenManager::localRecords() const
{
    return asText(localApplications);
}

QStringList OpenManager::remoteRecords() const
{
    return asText(remoteApplications);
}

QList<QByteArray> managerLines(int priority)
{
    QList<QByteArray> lines;
    const QList<QByteArray> all = PlatformCapture::texts(priority);
    for (const QByteArray &line : all) {
        if (line.startsWith("QWixtApplicationManager: ")) {
            lines.append(line);
        }
    }
    return lines;
}

namespace Descr
{

RemoteTaskDescription registration(const char *uuid, const char *name, const char *type)
{
    return Descriptions::registration(text(uuid), text(name), text(type));
}

RemoteTaskDescription deletion(const char *appId, const char *uuid, const char *type)
{
    return Descriptions::deletion(text(appId), text(uuid), text(type));
}

RemoteTaskDescription update(const char *appId, const char *uuid, const char *name, const char *type)
{
    return Descriptions::update(text(appId), text(uuid), text(name), text(type));
}

RemoteTaskDescription list()
{
    return Descriptions::list();
}

} // namespace Descr
