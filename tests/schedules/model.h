#pragma once

#include "remoteapplication.h"
#include "remotetaskdescription.h"

#include <QList>
#include <QMap>
#include <QStringList>

/// What the device's services answer.
struct Device {
    enum Answers { Well, Absent, WithAnError };

    Answers daemon = Well;
    Answers widgetManager = Well;
    QString apiKey;
    QString remoteId;
    bool internet = false;
    QStringList widgets;
};

/// A second telling of what the manager must hold and announce, without tasks, threads and timers: events and
/// results go in, and after each the manager is compared with it.
class Model
{
public:
    enum State { WaitForDaemonsToStart, NotSetuped, NoInternet, WaitForList, Ready };

    void start(const Device &device);
    void daemonStarted(const Device &device);
    void windowManagerStarted(const Device &device);
    void setupFinished(const QString &key, const Device &device);
    void internetChanged(bool available);
    void widgetCreated(const QString &id);
    void widgetDeleted(const QString &id);

    void registerApplication(const QString &uuid, const QString &name, const QString &type);
    void updateApplication(const QString &appId, const QString &uuid, const QString &name,
                           const QString &type);
    void deleteApplication(const QString &appId, const QString &uuid, const QString &type);
    void askForList();

    /// One run of @p descr has ended, and the manager knows of it.
    void succeeded(const RemoteTaskDescription &descr, const QByteArray &reply);
    void failed(const RemoteTaskDescription &descr, int code);

    /// The records as lines, to be compared and shown.
    static QStringList lines(const QMap<QString, RemoteApplication> &records);

    int state = WaitForDaemonsToStart;
    QList<RemoteTaskDescription> pending;
    QMap<QString, RemoteApplication> remote;
    QMap<QString, RemoteApplication> local;
    QStringList installed;
    QStringList announced;
    /// All that was ever accepted, in order, the list apart.
    QList<RemoteTaskDescription> accepted;
    int listsAccepted = 0;

private:
    void readWidgets(const Device &device);
    void readDaemon(const Device &device);
    void accept(const RemoteTaskDescription &descr);
    void finish(const RemoteTaskDescription &descr);
    void evaluate();
    void listSucceeded(const QByteArray &reply);

    bool daemonKnown = false;
    bool widgetsKnown = false;
    bool internet = false;
    bool listKnown = false;
    QString apiKey;
    QString remoteId;
};
