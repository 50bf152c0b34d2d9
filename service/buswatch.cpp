#include "buswatch.h"

#include "log.h"

#include <QCoreApplication>
#include <QDBusConnection>

BusWatch::BusWatch(QDBusConnection connection)
{
    // The connection announces its own end by a signal that comes from no service.
    const bool connected = connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                                              QStringLiteral("org.freedesktop.DBus.Local"),
                                              QStringLiteral("Disconnected"), this, SLOT(busWasLost()));
    if (!connected || !connection.isConnected()) {
        // Lost before anybody listened: report it once the event loop runs.
        QMetaObject::invokeMethod(this, &BusWatch::busWasLost, Qt::QueuedConnection);
    }
}

void BusWatch::busWasLost()
{
    logWarning("QWIXTD: lost the system bus");
    QCoreApplication::exit(lostBusStatus);
}
