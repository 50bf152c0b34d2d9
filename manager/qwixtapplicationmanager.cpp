#include "qwixtapplicationmanager.h"

#include "log.h"
#include "remoterequestworker.h"
#include "remotetaskwithdescription.h"
#include "serverhost.h"

#include <QDBusConnection>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

QWixtApplicationManager *QWixtApplicationManager::instance()
{
    static auto *const manager = new QWixtApplicationManager;
    return manager;
}

QWixtApplicationManager::QWixtApplicationManager()
    : worker(nullptr)
    , refreshTimer(new QTimer(this))
    , daemonProxy(nullptr, QDBusConnection::systemBus())
    , windowManagerProxy(nullptr, QDBusConnection::systemBus())
{
    worker = new RemoteRequestWorker(this);
    connect(worker, &RemoteRequestWorker::taskFailed, this, &QWixtApplicationManager::workerFinishedWithFail);
    connect(worker, &RemoteRequestWorker::taskSuccess, this,
            &QWixtApplicationManager::workerFinishedWithSuccess);

    // Set up and never started: the list is fetched once, on the way to Ready.
    refreshTimer->setSingleShot(true);
    refreshTimer->setInterval(1h);
    connect(refreshTimer, &QTimer::timeout, this, &QWixtApplicationManager::getListOfRemoteApps);

    serverHost(); // complain about a bad setting at start, not at the first request
    logDebug("QWixtApplicationManager: state is WaitForDaemonsToStart");
}

QWixtApplicationManager::~QWixtApplicationManager()
{
    delete worker; // joins the thread that the tasks live on
    qDeleteAll(tasksByDescription.begin(), tasksByDescription.end());
    qDeleteAll(localApplications);
    qDeleteAll(remoteApplications);
}
