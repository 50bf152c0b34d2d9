#pragma once

#include "model.h"
#include "qwixtapplicationmanager.h"
#include "transfers.h"

#include <QPointer>

class DeviceStub;
class VFetchTask;
class VirtualTime;

/// The real manager with its worker, fetcher and fetch thread, and beside it what it must hold. Each event is
/// carried out on both, and they are compared.
class ScheduledManager : public QWixtApplicationManager
{
    Q_OBJECT

public:
    ScheduledManager(VirtualTime &virtualTime, DeviceStub &deviceStub);

    void begin(const Device &initialDevice);
    void changeDevice(const Device &newDevice);

    void registerWidget(const QString &uuid, const QString &name, const QString &type);
    void updateWidget(const QString &appId, const QString &uuid, const QString &name, const QString &type);
    void deleteWidget(const QString &appId, const QString &uuid, const QString &type);
    void widgetWasCreated(const QString &id);
    void widgetWasDeleted(const QString &id);
    void internetHasChanged(bool available);
    void keyWasSet(const QString &key);
    void daemonHasStarted();
    void widgetManagerHasStarted();
    void listIsAsked();
    /// Ends the transfer that waits. Its result is on its way then, until takeResults().
    void endTransfer(const Transfers::Outcome &outcome);
    void takeResults();
    /// @param ms -1 for as long as the next timer takes
    void passTime(qint64 ms);

    /// Whether requests, results or retries are still to come.
    bool isBusy() const;
    /// What must hold when nothing is left to do; then the transfers that are left are ended, so that the
    /// manager can go.
    void finish();
    /// The first thing that was wrong; empty when there is none.
    QString complaint() const;

private:
    /// What came of the runs of equal requests.
    struct Runs {
        RemoteTaskDescription descr;
        int results = 0;
        int retriable = 0;
        qint64 lastFailure = -1; ///< when a result last asked for a retry
    };

    void complain(const QString &text);
    void settle();
    void check();
    void checkTasks();
    void checkEnd();
    void noteResult(int code, const QByteArray &data, const RemoteTaskDescription &descr);
    void checkOrder(const RemoteTaskDescription &descr);
    Runs &runsOf(const RemoteTaskDescription &descr);

    VirtualTime &time;
    DeviceStub &stub;
    Device device;
    Model model;
    QStringList announced;
    QString firstComplaint;
    QList<Runs> runs;
    QList<qint64> transferStarts; ///< of those whose results are on their way, oldest first
    qint64 waitingSince = 0;
    bool wasWaiting = false;
    QMap<RemoteTaskWithDescription *, QPointer<RemoteTaskWithDescription>> tasksSeen;
};
