#pragma once

/// The daemon's log functions. Each takes a printf-style format and writes one line, cut to 254 bytes, to the
/// platform log under the tag of logSetTag(). They may be called from any thread. The argument of a %s is an
/// 8-bit string: convert a QString with qPrintable().

/// Sets the tag of every line. The first call wins; call it before any other thread exists.
void logSetTag(const char *tag);

/// Verbose and debug lines print nothing, unless the build has QWIXTD_DEBUG_LOG.
void logVerbose(const char *format, ...) __attribute__((format(printf, 1, 2)));
void logDebug(const char *format, ...) __attribute__((format(printf, 1, 2)));
void logInfo(const char *format, ...) __attribute__((format(printf, 1, 2)));
void logWarning(const char *format, ...) __attribute__((format(printf, 1, 2)));
void logError(const char *format, ...) __attribute__((format(printf, 1, 2)));
/// Writes the line and aborts the process.
[[noreturn]] void logFatal(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// Whether verbose and debug lines are written: true only in a build with QWIXTD_DEBUG_LOG. Whoever prints
/// values with qDebug() asks first, so that the shipped build prints none of them.
bool debugLogEnabled();
