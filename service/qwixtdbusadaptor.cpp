#include "qwixtdbusadaptor.h"

#include "qwixtdbuscontext.h"

QwixtDbusAdaptor::QwixtDbusAdaptor(QwixtDbusContext *serviceObject)
    : QDBusAbstractAdaptor(serviceObject)
    , context(serviceObject)
{
}

void QwixtDbusAdaptor::registerQwixtApplication(const QString &uuid, const QString &name, const QString &type)
{
    context->registerQwixtApplication(uuid, name, type);
}

void QwixtDbusAdaptor::updateQwixtApplication(const QString &qwixtId, const QString &uuid,
                                              const QString &name, const QString &type)
{
    context->updateQwixtApplication(qwixtId, uuid, name, type);
}

void QwixtDbusAdaptor::deleteQwixtApplication(const QString &qwixtId, const QString &uuid,
                                              const QString &type)
{
    context->deleteQwixtApplication(qwixtId, uuid, type);
}
