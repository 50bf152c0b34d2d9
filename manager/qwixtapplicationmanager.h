#pragma once

#include "daemon/generalproxy.h"
#include "descriptioncounts.h"
#include "pendingtasks.h"
#include "remoteapplication.h"
#include "remotetaskdescription.h"
#include "tasksbydescription.h"
#include "windowmanager/generalproxy.h"

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

class QTimer;
class RemoteRequestWorker;

/// The daemon's centre. It knows whether the device is ready for remote work, keeps the queue of remote tasks
/// and the records of the applications on the server, and announces what was registered and deleted. Main
/// thread only.
///
/// The class spreads over one source file per concern: managerstates.cpp (the device and its states),
/// applicationrecords.cpp (what is asked for, and the records), taskqueue.cpp (the queue, its timers and
/// retries), requestresults.cpp (what the success and the failure of a request change).
class QWixtApplicationManager : public QObject
{
    Q_OBJECT

public:
    enum ManagerState : qint32 {
        WaitForDaemonsToStart = 0, ///< the main daemon or the widget list is not known yet
        NotSetuped = 1,            ///< the device has no API key or no remote id yet
        NoInternet = 2,            ///< set up, but offline
        WaitForList = 3,           ///< online; the list of remote applications is being fetched
        Ready = 4                  ///< remote requests are processed
    };

    /// The one manager of the process, made at the first call and never destroyed.
    static QWixtApplicationManager *instance();
    ~QWixtApplicationManager() override;

    /// Subscribes to the device's signals, reads its state (blocking calls on the bus) and evaluates it.
    /// Called once, after whoever wants the manager's signals has connected to them.
    void start();

    /// Queues the registration of a widget; false when an equal one is queued already. The outcome is
    /// applicationRegistered().
    bool registerApplication(const QString &uuid, const QString &name, const QString &type);
    /// Queues an update unless the server's record is equal; an application that the server does not list is
    /// registered instead.
    void updateApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                           const QString &type);
    /// Queues a deletion; the outcome is applicationDeleted(). The strings are copies, since the record
    /// that they may come from can be deleted while this runs.
    void deleteApplication(QString qwixtId, QString uuid, QString type);

Q_SIGNALS:
    // The argument names are those of the published interface, spelled so.
    void applicationRegistered(QString uuid, QString qwixId, QString type);
    void applicationDeleted(QString uuid, QString qwixtid, QString type);
    /// The list of remote applications has been fetched and requests are processed from now on.
    void readyToWork();

protected Q_SLOTS:
    void getListOfRemoteApps();
    void workerFinishedWithSuccess(QByteArray &data, RemoteTaskDescription descr);
    void workerFinishedWithFail(int code, QByteArray &data, RemoteTaskDescription descr);
    void widgetDeleted(QString packageId, QString widgetId);
    void widgetCreated(QString packageId, QString widgteId);
    void setupFinished(QString apiKey);
    void vorletDaemonStarted();
    void windowManagerStarted();
    void internetAvailabilityStateChanged(bool isAvailable);
    void delayedTaskTimeout();

protected:
    struct Transition;
    static const Transition transitions[];

    QWixtApplicationManager();

    // The device and the manager's states.
    void readWidgets();
    void readApiKey();
    void readIdentity();
    void readInternet();
    bool areServicesUnknown() const;
    bool isNotSetUp() const;
    bool isOffline() const;
    bool isListMissing() const;
    bool otherwise() const;
    void evaluateState();
    void enter(ManagerState next);

    // The task queue.
    RemoteTaskWithDescription *createRemoteTask(const RemoteTaskDescription &descr) const;
    RemoteTaskWithDescription *createStoredTask(const RemoteTaskDescription &descr);
    bool submit(const RemoteTaskDescription &descr);
    void processRequests();
    void handOverSlice();
    void handOver(const RemoteTaskDescription &descr);
    void run(RemoteTaskWithDescription *task);
    void runWhatIsDue(RemoteTaskWithDescription *task);
    void removeAllTasksFromWorker();
    void scheduleRetry(RemoteTaskWithDescription *task);
    void dropRequest(const RemoteTaskDescription &descr);
    void returnFreeMemory();

    // The results.
    void applicationWasRegistered(const QByteArray &reply, const RemoteTaskDescription &descr);
    void applicationWasDeleted(const RemoteTaskDescription &descr);
    void applicationWasUpdated(const RemoteTaskDescription &descr);
    void listWasReceived(const QByteArray &reply);
    void announceDeletion(const RemoteTaskDescription &descr);

    // The application records.
    const RemoteApplication *localApplication(const QString &appId) const;
    const RemoteApplication *remoteApplication(const QString &appId) const;
    void storeRemoteApplication(const RemoteApplication &application);
    void removeApplicationsWithoutWidget();

    bool daemonStarted = false;
    bool widgetsListReceived = false;
    bool internetAvailable = false;
    bool remoteListReceived = false;
    ManagerState state = WaitForDaemonsToStart;
    RemoteRequestWorker *worker;
    QMap<QString, RemoteApplication *>
        localApplications; ///< what the device asked for last, by app id; owned
    QMap<QString, RemoteApplication *>
        remoteApplications;                ///< what the server holds for the device, by app id; owned
    TasksByDescription tasksByDescription; ///< owned until the worker disposes of them
    DescriptionCounts outstandingRuns;     ///< runs handed to the worker whose results are still to come
    QMap<RemoteTaskWithDescription *, QTimer *> retryTimers;
    QTimer *refreshTimer;
    PendingTasks pendingTasks;  ///< waiting or running, in the order of arrival
    bool sliceIsPosted = false; ///< more of a long queue is handed over at the event loop's next turn
    bool queueWasLong = false;  ///< since it was short; its memory is then given back to the system
    QStringList installedWidgets;
    QString apiKey;
    QString serial;
    QString remoteId;
    Daemon::GeneralProxy daemonProxy;
    WindowManager::GeneralProxy windowManagerProxy;
};
