#pragma once

#include "httprequest.h"

#include <QString>

/// Who may drive the device from a browser: the page that this server gave out, and programs of this machine
/// that are no browsers. A page from elsewhere may not, whatever name it has for this address.
namespace RequestGuard
{
/// Why @p request is refused by the server on @p port; empty when it is not.
QString refusal(const HttpRequest &request, quint16 port);
} // namespace RequestGuard
