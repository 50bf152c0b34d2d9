// The device as the manager sees it, and the states that follow from it.

#include "daemon/networkproxy.h"
#include "log.h"
#include "qwixtapplicationmanager.h"

#include <QDBusConnection>
#include <QDBusError>

#include <algorithm>
#include <iterator>

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

/// Reads the API key and learns whether the main daemon is up; an error other than its absence says nothing
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

/// One row a transition; the first whose state and condition hold decides. Some lines name another state than
/// the one that is left; their texts are fixed.
// In the order in which a row is read: NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct QWixtApplicationManager::Transition {
    ManagerState from;
    bool (QWixtApplicationManager::*condition)() const;
    ManagerState to; ///< the same as from: stay
    const char *line;
};

const QWixtApplicationManager::Transition QWixtApplicationManager::transitions[] = {
    {WaitForDaemonsToStart, &QWixtApplicationManager::areServicesUnknown, WaitForDaemonsToStart, nullptr},
    {WaitForDaemonsToStart, &QWixtApplicationManager::isNotSetUp, NotSetuped,
     "QWixtApplicationManager: State changed from WaitForDaemonsToStart to NotSetuped"},
    {WaitForDaemonsToStart, &QWixtApplicationManager::isOffline, NoInternet,
     "QWixtApplicationManager: State changed from WaitForDaemonsToStart to NoInternet"},
    {WaitForDaemonsToStart, &QWixtApplicationManager::isListMissing, WaitForList,
     "QWixtApplicationManager: State changed from NotSetuped to WaitForList"},
    {WaitForDaemonsToStart, &QWixtApplicationManager::otherwise, Ready,
     "QWixtApplicationManager: State changed from WaitForDaemonsToStart to Ready"},

    {NotSetuped, &QWixtApplicationManager::isNotSetUp, NotSetuped, nullptr},
    {NotSetuped, &QWixtApplicationManager::isOffline, NoInternet,
     "QWixtApplicationManager: State changed from NotSetuped to NoInternet"},
    {NotSetuped, &QWixtApplicationManager::isListMissing, WaitForList,
     "QWixtApplicationManager: State changed from NotSetuped to WaitForList"},
    {NotSetuped, &QWixtApplicationManager::otherwise, Ready,
     "QWixtApplicationManager: State changed from NotSetuped to Ready"},

    {NoInternet, &QWixtApplicationManager::isOffline, NoInternet, nullptr},
    {NoInternet, &QWixtApplicationManager::isListMissing, WaitForList,
     "QWixtApplicationManager: State changed from NotSetuped to WaitForList"},
    {NoInternet, &QWixtApplicationManager::otherwise, Ready,
     "QWixtApplicationManager: State changed from NoInternet to Ready"},

    {WaitForList, &QWixtApplicationManager::isOffline, NoInternet,
     "QWixtApplicationManager: State changed from Ready to NoInternet"},
    {WaitForList, &QWixtApplicationManager::isListMissing, WaitForList, nullptr},
    {WaitForList, &QWixtApplicationManager::otherwise, Ready,
     "QWixtApplicationManager: State changed from WaitForList to Ready"},

    {Ready, &QWixtApplicationManager::isOffline, NoInternet,
     "QWixtApplicationManager: State changed from Ready to NoInternet"},
    {Ready, &QWixtApplicationManager::otherwise, Ready, nullptr},
};

bool QWixtApplicationManager::areServicesUnknown() const
{
    return !daemonStarted || !widgetsListReceived;
}

bool QWixtApplicationManager::isNotSetUp() const
{
    return apiKey.isEmpty() || remoteId.isEmpty();
}

bool QWixtApplicationManager::isOffline() const
{
    return !internetAvailable;
}

bool QWixtApplicationManager::isListMissing() const
{
    return !remoteListReceived;
}

bool QWixtApplicationManager::otherwise() const
{
    return true;
}

/// One step at the most.
void QWixtApplicationManager::evaluateState()
{
    const auto *const row =
        std::find_if(std::cbegin(transitions), std::cend(transitions), [this](const Transition &each) {
            return each.from == state && (this->*each.condition)();
        });
    if (row == std::cend(transitions)) {
        logWarning("QWixtApplicationManager: Not handled state");
    } else if (row->to != row->from) {
        logDebug("%s", row->line);
        enter(row->to);
    }
}

/// Changes the state, then does what the new one begins with.
void QWixtApplicationManager::enter(ManagerState next)
{
    const ManagerState previous = state;
    state = next;
    if (next == NoInternet) {
        removeAllTasksFromWorker();
    } else if (next == WaitForList) {
        getListOfRemoteApps();
    } else if (next == Ready) {
        if (previous == WaitForList) {
            Q_EMIT readyToWork();
        }
        processRequests();
    }
}
