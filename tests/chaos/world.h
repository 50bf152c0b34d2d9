#pragma once

#include "applications.h"
#include "devicesimulator.h"
#include "frontserver.h"
#include "journal.h"
#include "ledger.h"
#include "privatebus.h"
#include "qwixtdprocess.h"
#include "slammeddoor.h"

#include <QDir>
#include <QObject>

#include <memory>

/// The whole of a device for one run of chaos: a real bus, the device's services, the developer server behind
/// a real nginx, and the real daemon as a process of its own. What passes goes into the journal and the
/// ledger.
class World : public QObject
{
    Q_OBJECT
public:
    static const QString apiKey;
    static const QString deviceId;

    /// @p directory is for the logs.
    World(const QString &program, const QDir &directory);

    /// Brings up everything but the device's services and the daemon; false when something cannot be started.
    bool start();
    /// Starts the daemon; false when it does not come to run.
    bool startDaemon();
    /// Takes the bus away, and waits for the end of the daemon.
    void endBus();

    DeviceSimulator &device();
    Ledger &ledger();
    Applications &applications();
    QwixtdProcess &daemon();
    QString busAddress() const;

    void note(const QString &line);
    /// Each asks the daemon on the bus and enters that into the ledger.
    void registerApplication(const QString &uuid, const QString &name, const QString &type);
    void updateApplication(const QString &appId, const QString &uuid, const QString &name,
                           const QString &type);
    void deleteApplication(const QString &appId, const QString &uuid, const QString &type);
    void createWidget(const QString &id);
    void deleteWidget(const QString &id);
    void setInternetAvailable(bool available);

    /// The front server goes; connections are reset from then on, or refused.
    void stopFront(FrontServer::End how, bool isReset);
    void startFront();
    bool isFrontRunning() const;
    void stopServer();
    void startServer();

    /// Reads what the daemon and the front server have written meanwhile.
    void look();
    /// Forgets what is settled. Nothing may be under way.
    void startAnew();

    /// The daemon has announced that it works.
    bool isReady() const;
    /// What the daemon must never do nor write, whatever happens to it.
    QStringList complaints() const;

private:
    void follow();
    void take(const QString &member, const QStringList &arguments);
    void takeList();
    void readDaemonLines();

    const QDir directory;
    Journal journal;
    PrivateBus bus;
    QwixtdProcess process;
    std::unique_ptr<DeviceSimulator> simulator;
    std::unique_ptr<FrontServer> front;
    SlammedDoor door;
    Ledger book;
    Applications known;
    QByteArray lastList;
    QStringList wrongs;
    int starts = 0;
};
