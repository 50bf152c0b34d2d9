#pragma once

#include "busmonitor.h"
#include "devicesimulator.h"

#include <QByteArray>

/// What the device and the developer server are like now, as one line of JSON for the page. The API key is
/// not in it; of long lists only the beginning is, with their length.
namespace DeviceState
{
QByteArray json(DeviceSimulator &simulator, const BusMonitor &monitor);
}
