#include "daemonservice.h"

#include <QMutexLocker>

namespace
{
const auto generalPath = QStringLiteral("/general");
const auto generalInterface = QStringLiteral("com.vorlet.daemon.general");
const auto networkPath = QStringLiteral("/com/vorlet/network");
const auto networkInterface = QStringLiteral("com.vorlet.daemon.network");
const auto text = QStringLiteral("s");
const auto boolean = QStringLiteral("b");
} // namespace

DaemonService::DaemonService(const QString &busAddress, QObject *parent)
    : BusService(busAddress, QStringLiteral("vorlet.daemon"), parent)
{
    addMethod({generalPath, generalInterface, QStringLiteral("apiKey"), text,
               [this] { return snapshot().apiKey; }});
    addMethod({generalPath, generalInterface, QStringLiteral("serial"), text,
               [this] { return snapshot().serial; }});
    addMethod({generalPath, generalInterface, QStringLiteral("remoteId"), text,
               [this] { return snapshot().remoteId; }});
    addMethod({networkPath, networkInterface, QStringLiteral("isInternetAvailable"), boolean,
               [this] { return snapshot().internetAvailable; }});
    addSignal({generalPath, generalInterface, QStringLiteral("daemonDidStart"), QString()});
    addSignal({generalPath, generalInterface, QStringLiteral("apiKeyDidSet"), text});
    addSignal({networkPath, networkInterface, QStringLiteral("internetAvailabilityChanged"), boolean});
}

DaemonService::~DaemonService()
{
    shutDown();
}

QString DaemonService::apiKey() const
{
    return snapshot().apiKey;
}

QString DaemonService::serial() const
{
    return snapshot().serial;
}

QString DaemonService::remoteId() const
{
    return snapshot().remoteId;
}

bool DaemonService::isInternetAvailable() const
{
    return snapshot().internetAvailable;
}

bool DaemonService::start()
{
    if (isRunning()) {
        return true;
    }
    if (!BusService::start()) {
        return false;
    }
    sendSignal(QStringLiteral("daemonDidStart"));
    return true;
}

void DaemonService::setApiKey(const QString &key)
{
    setApiKeyQuietly(key);
    sendSignal(QStringLiteral("apiKeyDidSet"), {key});
}

void DaemonService::setApiKeyQuietly(const QString &key)
{
    const QMutexLocker locker(&stateMutex);
    state.apiKey = key;
}

void DaemonService::setSerial(const QString &serial)
{
    const QMutexLocker locker(&stateMutex);
    state.serial = serial;
}

void DaemonService::setRemoteId(const QString &remoteId)
{
    const QMutexLocker locker(&stateMutex);
    state.remoteId = remoteId;
}

void DaemonService::setInternetAvailable(bool available)
{
    {
        const QMutexLocker locker(&stateMutex);
        if (state.internetAvailable == available) {
            return;
        }
        state.internetAvailable = available;
    }
    sendSignal(QStringLiteral("internetAvailabilityChanged"), {available});
}

DaemonService::State DaemonService::snapshot() const
{
    const QMutexLocker locker(&stateMutex);
    return state;
}
