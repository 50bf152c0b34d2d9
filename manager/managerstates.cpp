// The device as the manager sees it, and the states that follow from it.

#include "daemon/networkproxy.h"
#include "log.h"
#include "qwixtapplicationmanager.h"

#include <QDBusConnection>
#include <QDBusError>

void QWixtApplicationManager::start()
{
    {
        // The subscriptions are the bus connection's and outlive this proxy.
        Daemon::NetworkProxy network(nullptr, QDBusConnection::systemBus());
        network.connectInternetAvailabilityChanged(this, SLOT(internetAvailabilityStateChanged(bool)));
    }
    windowManagerProxy.connectWindowServerDidStarted(this, SLOT(windowManagerStarted()));
    windowManagerProxy.connectWidgetDeleted(this, SLOT(widgetDeleted(QString, QString)));
    windowManagerProxy.connectNewWidgetCreated(this, SLOT(widgetCreated(QString, QString)));
    daemonProxy.connectDaemonDidStart(this, SLOT(vorletDaemonStarted()));
    daemonProxy.connectApiKeyDidSet(this, SLOT(setupFinished(QString)));

    readWidgets();
    readApiKey();
    if (daemonProxy.lastError().type() == QDBusError::ServiceUnknown) {
        return; // its start signal brings the rest
    }
    readInternet();
    readIdentity();
    evaluateState();
}

/// Reads the installed widgets; on an error the old list stays.
void QWixtApplicationManager::readWidgets()
{
    const QStringList widgets = windowManagerProxy.listOfInstalledWidgets(QDBus::Block);
    const QDBusError error = windowManagerProxy.lastError();
    if (error.type() != QDBusError::NoError) {
        logWarning("QWixtApplicationManager: cant get widgets list %s", qPrintable(error.message()));
        return;
    }
    widgetsListReceived = true;
    installedWidgets = widgets;
}

/// Reads the API key and learns whether the main daemon is up; an error other than its absence tells nothing
/// about it.
void QWixtApplicationManager::readApiKey()
{
    apiKey = daemonProxy.apiKey(QDBus::Block);
    const QDBusError::ErrorType error = daemonProxy.lastError().type();
    if (error == QDBusError::ServiceUnknown) {
        daemonStarted = false;
    } else if (error == QDBusError::NoError) {
        daemonStarted = true;
    }
}

void QWixtApplicationManager::readIdentity()
{
    serial = daemonProxy.serial(QDBus::Block);
    remoteId = daemonProxy.remoteId(QDBus::Block);
}

void QWixtApplicationManager::readInternet()
{
    Daemon::NetworkProxy network(nullptr, QDBusConnection::systemBus());
    internetAvailable = network.isInternetAvailable(QDBus::Block);
}

void QWixtApplicationManager::vorletDaemonStarted()
{
    readApiKey();
    readIdentity();
    readInternet();
    evaluateState();
}

void QWixtApplicationManager::setupFinished(QString newApiKey)
{
    apiKey = newApiKey;
    remoteId = daemonProxy.remoteId(QDBus::Block);
    evaluateState();
}

void QWixtApplicationManager::windowManagerStarted()
{
    readWidgets();
    evaluateState();
}

void QWixtApplicationManager::internetAvailabilityStateChanged(bool isAvailable)
{
    internetAvailable = isAvailable;
    evaluateState();
}

// Registering a new widget is up to the widget.
void QWixtApplicationManager::widgetCreated(QString /*packageId*/, QString widgetId)
{
    installedWidgets.append(widgetId);
}

bool QWixtApplicationManager::isSetUp() const
{
    return !apiKey.isEmpty() && !remoteId.isEmpty();
}

/// One step at the most. Some lines name another state than the one that is left; their texts are fixed.
void QWixtApplicationManager::evaluateState()
{
    switch (state) {
    case WaitForDaemonsToStart:
        if (!daemonStarted || !widgetsListReceived) {
            return;
        }
        if (!isSetUp()) {
            enter(NotSetuped,
                  "QWixtApplicationManager: State changed from WaitForDaemonsToStart to NotSetuped");
            return;
        }
        moveOn("QWixtApplicationManager: State changed from WaitForDaemonsToStart to NoInternet",
               "QWixtApplicationManager: State changed from WaitForDaemonsToStart to Ready");
        return;
    case NotSetuped:
        if (isSetUp()) {
            moveOn("QWixtApplicationManager: State changed from NotSetuped to NoInternet",
                   "QWixtApplicationManager: State changed from NotSetuped to Ready");
        }
        return;
    case NoInternet:
        if (internetAvailable) {
            moveOn(nullptr, "QWixtApplicationManager: State changed from NoInternet to Ready");
        }
        return;
    case WaitForList:
        if (!internetAvailable) {
            enter(NoInternet, "QWixtApplicationManager: State changed from Ready to NoInternet");
        } else if (remoteListReceived) {
            enter(Ready, "QWixtApplicationManager: State changed from WaitForList to Ready");
        }
        return;
    case Ready:
        if (!internetAvailable) {
            enter(NoInternet, "QWixtApplicationManager: State changed from Ready to NoInternet");
        }
        return;
    }
    logWarning("QWixtApplicationManager: Not handled state");
}

/// From a state that waited for something else, to where internet and list allow.
void QWixtApplicationManager::moveOn(const char *offlineLine, const char *readyLine)
{
    if (!internetAvailable) {
        enter(NoInternet, offlineLine);
    } else if (!remoteListReceived) {
        enter(WaitForList, "QWixtApplicationManager: State changed from NotSetuped to WaitForList");
    } else {
        enter(Ready, readyLine);
    }
}

/// Changes the state, then does what the new one begins with.
void QWixtApplicationManager::enter(ManagerState next, const char *line)
{
    logDebug("%s", line);
    const bool listWasAwaited = state == WaitForList;
    state = next;
    switch (next) {
    case NoInternet:
        removeAllTasksFromWorker();
        break;
    case WaitForList:
        getListOfRemoteApps();
        break;
    case Ready:
        if (listWasAwaited) {
            Q_EMIT readyToWork();
        }
        processRequests();
        break;
    case WaitForDaemonsToStart:
    case NotSetuped:
        break;
    }
}
