#pragma once

#include "devicesimulator.h"
#include "privatebus.h"

#include <memory>

/// A simulated device on @p bus, none of its services started: key "key", remote id "d9", serial number "s1",
/// widgets "u1" and "u2", online.
inline std::unique_ptr<DeviceSimulator> makeDevice(const PrivateBus &bus)
{
    auto device = std::make_unique<DeviceSimulator>(bus.address());
    device->setApiKeyQuietly(QStringLiteral("key"));
    device->daemon().setRemoteId(QStringLiteral("d9"));
    device->daemon().setSerial(QStringLiteral("s1"));
    device->widgetManager().setWidgetsQuietly({QStringLiteral("u1"), QStringLiteral("u2")});
    return device;
}

/// Starts its services; false when one of them does not start.
inline bool startDevice(DeviceSimulator &device)
{
    return device.widgetManager().start() && device.daemon().start();
}
