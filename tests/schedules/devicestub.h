#pragma once

#include "model.h"

#include <QDBusContext>
#include <QObject>

// One class for each bus interface.

class GeneralStub : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.daemon.general")
public:
    explicit GeneralStub(const Device &shown);
public Q_SLOTS:
    QString apiKey() const;
    QString serial() const;
    QString remoteId() const;

private:
    const Device &device;
};

class NetworkStub : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.daemon.network")
public:
    explicit NetworkStub(const Device &shown);
public Q_SLOTS:
    bool isInternetAvailable() const;

private:
    const Device &device;
};

class WidgetsStub : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.widget_manager.general")
public:
    explicit WidgetsStub(const Device &shown);
public Q_SLOTS:
    QStringList listOfInstalledWidgets() const;

private:
    const Device &device;
};

/// The device services that the manager reads, answering with the values of a Device. They stand on the
/// manager's own bus connection and thread, where a call costs no way over the bus. They send no signals: a
/// schedule calls the manager's slots itself, so that each event has its place.
class DeviceStub
{
public:
    DeviceStub();

    /// Claims the services' names on the system bus; false when it refuses.
    bool start();
    void answerWith(const Device &newDevice);

private:
    Device device;
    GeneralStub general;
    NetworkStub network;
    WidgetsStub widgets;
};
