#pragma once

/// Priorities of the platform log, as its library numbers them.
enum PlatformLogPriority {
    PlatformLogVerbose = 2,
    PlatformLogDebug = 3,
    PlatformLogInfo = 4,
    PlatformLogWarning = 5,
    PlatformLogError = 6,
    PlatformLogFatal = 7
};

extern "C" {
/// Writes one line to the platform's log; may be called from any thread.
/// @p tag and @p text are zero-terminated 8-bit strings and stay the caller's.
/// @return the number of bytes written, or a negative number when the line could not be written
// NOLINTNEXTLINE(bugprone-reserved-identifier): the platform's name
int __android_log_write(int priority, const char *tag, const char *text);
}
