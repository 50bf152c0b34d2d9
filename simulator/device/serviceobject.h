#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <map>

class BusService;

/// One object of a simulated service on the bus: asks its service for the answer to each call.
class ServiceObject : public QDBusVirtualObject
{
    Q_OBJECT
public:
    explicit ServiceObject(BusService &owner);
    /// Says for each call that is still held what the bus says when a service goes without an answer.
    ~ServiceObject() override;
    Q_DISABLE_COPY(ServiceObject)

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void hold(const QDBusMessage &call, const QDBusConnection &connection, const QDBusMessage &answer,
              int delayMs);

    /// A call whose answer waits for its time.
    struct Held {
        QDBusMessage call;
        QDBusConnection connection;
    };

    BusService &service;
    std::map<int, Held> heldCalls;
    int callsHeld = 0;
};
