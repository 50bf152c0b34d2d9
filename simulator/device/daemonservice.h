#pragma once

#include "busservice.h"

/// The device's main daemon: API key, serial number, remote id and internet availability.
class DaemonService : public BusService
{
    Q_OBJECT
public:
    explicit DaemonService(const QString &busAddress, QObject *parent = nullptr);
    ~DaemonService() override;

    QString apiKey() const;
    QString serial() const;
    QString remoteId() const;
    bool isInternetAvailable() const;

    /// Claims the name and sends daemonDidStart.
    bool start() override;

    /// Sets the key as the end of the device's set-up does: sends apiKeyDidSet.
    void setApiKey(const QString &key);
    /// Sets the key without announcing it, for the state that a test begins with.
    void setApiKeyQuietly(const QString &key);
    void setSerial(const QString &serial);
    void setRemoteId(const QString &remoteId);
    /// Sends internetAvailabilityChanged when this is a change.
    void setInternetAvailable(bool available);

private:
    struct State {
        QString apiKey;
        QString serial;
        QString remoteId;
        bool internetAvailable = true;
    };

    State snapshot() const;

    mutable QMutex stateMutex;
    State state;
};
