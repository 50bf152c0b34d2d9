#include "processend.h"

#include <cstdlib>

// There in a build with the leak sanitizer, and null in every other.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's name
extern "C" void __lsan_do_leak_check() __attribute__((weak));

void endProcess(int status)
{
    if (__lsan_do_leak_check != nullptr) {
        __lsan_do_leak_check(); // elsewhere one of the exit handlers
    }
    std::_Exit(status);
}
