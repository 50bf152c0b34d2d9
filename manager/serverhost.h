#pragma once

#include <QString>

/// Whether @p text can stand as host or host:port in a URL: not empty, without a blank, a control character
/// or one of / @ ? #, and with a port that is one.
bool isHostName(const QString &text);

/// The developer server as host or host:port: the environment variable QWIXTD_SERVER_HOST, else the built-in
/// one. A value that is not a host name is refused with a warning. The environment is read once, at the first
/// call.
QString serverHost();
