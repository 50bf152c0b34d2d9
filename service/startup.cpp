#include "startup.h"

#include "buswatch.h"
#include "log.h"
#include "processend.h"
#include "qwixtapplicationmanager.h"
#include "qwixtdbusadaptor.h"
#include "qwixtdbuscontext.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>

#include <mutex>

namespace
{
constexpr int lostBusStatus = 1;

// Without its bus the daemon would live on deaf; its supervisor starts it again. On the bus library's thread:
// the main thread may be waiting for a reply.
void busWasLost()
{
    static std::once_flag once;
    std::call_once(once, [] {
        logWarning("QWIXTD: lost the system bus");
        endProcess(lostBusStatus);
    });
}
} // namespace

int runDaemon(QCoreApplication &application)
{
    logSetTag("QWIXTD");
    QDBusConnection bus = QDBusConnection::systemBus();
    const BusWatch watch(bus, busWasLost);
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
