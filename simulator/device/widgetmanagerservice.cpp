#include "widgetmanagerservice.h"

#include <QMutexLocker>

namespace
{
const auto path = QStringLiteral("/");
const auto interfaceName = QStringLiteral("com.vorlet.widget_manager.general");
const auto twoTexts = QStringLiteral("ss");
// Every widget of the simulated device came with the same package.
const auto package = QStringLiteral("simulated.package");
} // namespace

WidgetManagerService::WidgetManagerService(const QString &busAddress, QObject *parent)
    : BusService(busAddress, QStringLiteral("widget.manager"), parent)
{
    addMethod({path, interfaceName, QStringLiteral("listOfInstalledWidgets"), QStringLiteral("as"),
               [this] { return widgets(); }});
    addSignal({path, interfaceName, QStringLiteral("windowServerDidStarted"), QString()});
    addSignal({path, interfaceName, QStringLiteral("widgetDeleted"), twoTexts});
    addSignal({path, interfaceName, QStringLiteral("newWidgetCreated"), twoTexts});
}

WidgetManagerService::~WidgetManagerService()
{
    shutDown();
}

QStringList WidgetManagerService::widgets() const
{
    const QMutexLocker locker(&stateMutex);
    return installed;
}

bool WidgetManagerService::start()
{
    if (isRunning()) {
        return true;
    }
    if (!BusService::start()) {
        return false;
    }
    sendSignal(QStringLiteral("windowServerDidStarted"));
    return true;
}

void WidgetManagerService::setWidgetsQuietly(const QStringList &ids)
{
    const QMutexLocker locker(&stateMutex);
    installed = ids;
}

void WidgetManagerService::createWidget(const QString &id)
{
    {
        const QMutexLocker locker(&stateMutex);
        installed.append(id);
    }
    sendSignal(QStringLiteral("newWidgetCreated"), {package, id});
}

bool WidgetManagerService::deleteWidget(const QString &id)
{
    {
        const QMutexLocker locker(&stateMutex);
        if (!installed.removeOne(id)) {
            return false;
        }
    }
    sendSignal(QStringLiteral("widgetDeleted"), {package, id});
    return true;
}
