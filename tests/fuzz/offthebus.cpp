// The start of a fuzzer whose code under test has an application object, and finds no system bus.
#include <QCoreApplication>

extern "C" int LLVMFuzzerInitialize(int *argumentCount, char ***arguments)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/dev/null");
    static QCoreApplication application(*argumentCount, *arguments);
    return 0;
}
