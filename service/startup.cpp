#include "startup.h"

#include "buswatch.h"
#include "log.h"
#include "qwixtapplicationmanager.h"
#include "qwixtdbusadaptor.h"
#include "qwixtdbuscontext.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>

int runDaemon(QCoreApplication &application)
{
    logSetTag("QWIXTD");
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerService(QStringLiteral("com.qwixtd"))) {
        logWarning("QWIXTD: failed to register dbus service %s", qPrintable(bus.lastError().message()));
        return -1;
    }

    QwixtDbusContext serviceObject;
    auto *const adaptor = new QwixtDbusAdaptor(&serviceObject); // owned by the service object
    if (!bus.registerObject(QStringLiteral("/"), &serviceObject, QDBusConnection::ExportAdaptors)) {
        logWarning("QWIXTD: failed to register dbus interface %s", qPrintable(bus.lastError().message()));
        return -1;
    }
    const BusWatch busWatch(bus);

    QWixtApplicationManager *const manager = QWixtApplicationManager::instance();
    QObject::connect(manager, &QWixtApplicationManager::applicationRegistered, adaptor,
                     &QwixtDbusAdaptor::applicationRegistered);
    QObject::connect(manager, &QWixtApplicationManager::applicationDeleted, adaptor,
                     &QwixtDbusAdaptor::applicationDeleted);
    // The two names differ on purpose.
    QObject::connect(manager, &QWixtApplicationManager::readyToWork, adaptor,
                     &QwixtDbusAdaptor::daemonDidStarted);
    manager->start();
    return application.exec();
}
