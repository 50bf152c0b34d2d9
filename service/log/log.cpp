#include "log.h"

#include "platformlog.h"

#include <QString>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace
{

constexpr std::size_t lineSize = 255;

#ifdef QWIXTD_DEBUG_LOG
constexpr bool writeDebugLines = true;
#else
constexpr bool writeDebugLines = false;
#endif

struct LogContext {
    QString tag;
};

LogContext *context()
{
    // Never destroyed: a thread may still write while the process ends.
    static auto *const instance = new LogContext;
    return instance;
}

[[maybe_unused]] const LogContext *const createdBeforeMain = context();

void writeLine(PlatformLogPriority priority, const char *format, va_list arguments)
{
    const QByteArray tag = context()->tag.toLocal8Bit();
    char line[lineSize] = {};
    std::vsnprintf(line, sizeof line, format, arguments);
    __android_log_write(priority, tag.constData(), line);
}

} // namespace

void logSetTag(const char *tag)
{
    if (context()->tag.isEmpty()) {
        context()->tag = QString::fromLatin1(tag);
    }
}

bool debugLogEnabled()
{
    return writeDebugLines;
}

void logVerbose(const char *format, ...)
{
    if constexpr (writeDebugLines) {
        va_list arguments;
        va_start(arguments, format);
        writeLine(PlatformLogVerbose, format, arguments);
        va_end(arguments);
    } else {
        Q_UNUSED(format)
    }
}

void logDebug(const char *format, ...)
{
    if constexpr (writeDebugLines) {
        va_list arguments;
        va_start(arguments, format);
        writeLine(PlatformLogDebug, format, arguments);
        va_end(arguments);
    } else {
        Q_UNUSED(format)
    }
}

void logInfo(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    writeLine(PlatformLogInfo, format, arguments);
    va_end(arguments);
}

void logWarning(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    writeLine(PlatformLogWarning, format, arguments);
    va_end(arguments);
}

void logError(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    writeLine(PlatformLogError, format, arguments);
    va_end(arguments);
}

void logFatal(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    writeLine(PlatformLogFatal, format, arguments);
    va_end(arguments);
    std::abort();
}
