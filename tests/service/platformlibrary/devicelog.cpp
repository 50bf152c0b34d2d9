// Stands in for the device's logging library: shows on standard output what it is given.
#include <cstdio>

extern "C" int __android_log_write(int priority, const char *tag, const char *text)
{
    return std::printf("device log: %d %s %s\n", priority, tag, text);
}
