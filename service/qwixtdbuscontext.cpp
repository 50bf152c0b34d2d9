#include "qwixtdbuscontext.h"

#include "log.h"
#include "qwixtapplicationmanager.h"

void QwixtDbusContext::registerQwixtApplication(const QString &uuid, const QString &name, const QString &type)
{
    logDebug("QwixtDbusContext: Request register application %s %s %s ", qPrintable(uuid), qPrintable(name),
             qPrintable(type));
    QWixtApplicationManager::instance()->registerApplication(uuid, name, type);
}

void QwixtDbusContext::updateQwixtApplication(const QString &qwixtId, const QString &uuid,
                                              const QString &name, const QString &type)
{
    logDebug("QwixtDbusContext: Request update application %s %s %s ", qPrintable(uuid), qPrintable(name),
             qPrintable(type));
    QWixtApplicationManager::instance()->updateApplication(qwixtId, uuid, name, type);
}

void QwixtDbusContext::deleteQwixtApplication(const QString &qwixtId, const QString &uuid,
                                              const QString &type)
{
    // The fixed format has a third placeholder, and a deletion has nothing for it.
    logDebug("QwixtDbusContext: Request delete application %s %s %s ", qPrintable(uuid), qPrintable(type),
             "");
    QWixtApplicationManager::instance()->deleteApplication(qwixtId, uuid, type);
}
