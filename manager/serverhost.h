#pragma once

#include <QString>

/// Whether @p text can stand as host or host:port in a URL that contacts exactly this host: a name of ASCII
/// letters, digits, - and _, an address of four numbers, or one of version 6 in brackets, and a port from 1
/// to 65535. What a URL would rewrite is refused: an address in another form (1.2.3, 0x7f.1), percent
/// escapes, names beyond ASCII (give their xn-- form). Capital letters are accepted, though a URL makes them
/// small.
bool isHostName(const QString &text);

/// The developer server as host or host:port: the environment variable QWIXTD_SERVER_HOST, else the built-in
/// one. A value that is not a host name is refused with a warning. The environment is read once, at the first
/// call.
QString serverHost();
