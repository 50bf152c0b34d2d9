#pragma once

/// Opens /dev/null in the place of standard input, output or error where the process was started without it.
/// Otherwise the next file to be opened, such as the bus connection, takes that place, and the first log line
/// goes into it. Call it before anything else opens a file.
/// @return false, with errno set, when /dev/null cannot be opened
bool openClosedStandardFiles();
