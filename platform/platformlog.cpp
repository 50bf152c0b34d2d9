#include "platformlog.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace
{

char levelLetter(int priority)
{
    switch (priority) {
    case PlatformLogVerbose:
        return 'V';
    case PlatformLogDebug:
        return 'D';
    case PlatformLogInfo:
        return 'I';
    case PlatformLogWarning:
        return 'W';
    case PlatformLogError:
        return 'E';
    default:
        return priority < PlatformLogVerbose ? 'V' : 'F';
    }
}

/// The service manager's form of a priority, which the journal takes off the line and sorts by.
const char *journalPrefix(int priority)
{
    switch (levelLetter(priority)) {
    case 'W':
        return "<4>";
    case 'E':
        return "<3>";
    case 'F':
        return "<2>";
    case 'I':
        return "<6>";
    default:
        return "<7>";
    }
}

void appendOnOneLine(std::string &line, const char *text)
{
    for (; text != nullptr && *text != '\0'; ++text) {
        const auto byte = static_cast<unsigned char>(text[0]);
        const auto next = static_cast<unsigned char>(text[1]);
        if (byte == 0xc2 && next >= 0x80 && next <= 0x9f) {
            line += ' '; // a control character of two bytes in UTF-8
            ++text;
        } else {
            line += byte < 0x20 || byte == 0x7f ? ' ' : *text;
        }
    }
}

} // namespace

int __android_log_write(int priority, const char *tag, const char *text)
{
    std::string line;
    line.reserve(320); // the daemon's lines hold at most 254 characters
    // Nothing in this process changes the environment once it runs.
    if (getenv("JOURNAL_STREAM") != nullptr) { // NOLINT(concurrency-mt-unsafe)
        line += journalPrefix(priority);
    }
    line += levelLetter(priority);
    line += '/';
    appendOnOneLine(line, tag);
    line += ": ";
    appendOnOneLine(line, text);
    line += '\n';

    // One write, so that lines of several threads never mix.
    ssize_t written = 0;
    do {
        written = write(STDERR_FILENO, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    return static_cast<int>(written);
}
