#pragma once

#include <QDBusVirtualObject>

class BusService;

/// One object of a simulated service on the bus: asks its service for the answer to each call.
class ServiceObject : public QDBusVirtualObject
{
    Q_OBJECT
public:
    explicit ServiceObject(BusService &owner);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    BusService &service;
};
