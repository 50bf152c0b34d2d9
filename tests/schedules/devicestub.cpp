#include "devicestub.h"

#include <QDBusConnection>

namespace
{

/// Answers the call that is being carried out with an error, unless the service is well.
void refuse(const QDBusContext &context, Device::Answers how)
{
    // Being absent shows in nothing but the error's name.
    if (how != Device::Well) {
        context.sendErrorReply(how == Device::Absent
                                   ? QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown")
                                   : QStringLiteral("org.freedesktop.DBus.Error.Failed"),
                               QStringLiteral("out of order"));
    }
}

} // namespace

GeneralStub::GeneralStub(const Device &shown)
    : device(shown)
{
}

QString GeneralStub::apiKey() const
{
    refuse(*this, device.daemon);
    return device.apiKey;
}

QString GeneralStub::serial() const
{
    refuse(*this, device.daemon);
    return QStringLiteral("serial");
}

QString GeneralStub::remoteId() const
{
    refuse(*this, device.daemon);
    return device.remoteId;
}

NetworkStub::NetworkStub(const Device &shown)
    : device(shown)
{
}

bool NetworkStub::isInternetAvailable() const
{
    refuse(*this, device.daemon);
    return device.internet;
}

WidgetsStub::WidgetsStub(const Device &shown)
    : device(shown)
{
}

QStringList WidgetsStub::listOfInstalledWidgets() const
{
    refuse(*this, device.widgetManager);
    return device.widgets;
}

DeviceStub::DeviceStub()
    : general(device)
    , network(device)
    , widgets(device)
{
}

bool DeviceStub::start()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    return bus.registerService(QStringLiteral("vorlet.daemon")) &&
           bus.registerService(QStringLiteral("widget.manager")) &&
           bus.registerObject(QStringLiteral("/general"), &general, QDBusConnection::ExportAllSlots) &&
           bus.registerObject(QStringLiteral("/com/vorlet/network"), &network,
                              QDBusConnection::ExportAllSlots) &&
           bus.registerObject(QStringLiteral("/"), &widgets, QDBusConnection::ExportAllSlots);
}

void DeviceStub::answerWith(const Device &newDevice)
{
    device = newDevice;
}
