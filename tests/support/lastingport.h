#pragma once

#include <QtGlobal>

namespace LastingPort
{

/// A free port on loopback that no client's connection is given while its server is away for a moment.
quint16 find();

} // namespace LastingPort
