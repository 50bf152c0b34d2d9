// Stands in for the device's logging library: shows on standard output what it is given, at once, because the
// process may be about to end.
#include <cstdio>

extern "C" int __android_log_write(int priority, const char *tag, const char *text)
{
    const int written = std::printf("%d [%s] %s\n", priority, tag, text);
    std::fflush(stdout);
    return written;
}
