#pragma once

#include "awkwardvalues.h"

/// Values of types that D-Bus knows, in which a path, a signature or a descriptor lies that may be empty or
/// closed.
std::vector<AwkwardValue> emptyValues();
