// bystander ADDRESS SERVICE: calls registerQwixtApplication of a service again and again, always for the same
// widget, as somebody does who knows nothing of a flood. It ends when its standard input ends, and writes
// then: how many calls were answered, and the mean and the longest time of one in microseconds.

#include <dbus/dbus.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace
{
constexpr int pauseMs = 2;
constexpr int patienceMs = 120000;

// False when the answer is an error.
bool call(DBusConnection *bus, const char *service)
{
    const char *const uuid = "u1";
    const char *const name = "Bystander";
    const char *const type = "t";
    DBusMessage *const call =
        dbus_message_new_method_call(service, "/", "com.vorlet.qwixtd", "registerQwixtApplication");
    dbus_message_append_args(call, DBUS_TYPE_STRING, &uuid, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &type,
                             DBUS_TYPE_INVALID);
    DBusError error = DBUS_ERROR_INIT;
    DBusMessage *const reply = dbus_connection_send_with_reply_and_block(bus, call, patienceMs, &error);
    dbus_message_unref(call);
    if (reply == nullptr) {
        std::fprintf(stderr, "bystander: %s\n", error.message);
        return false;
    }
    dbus_message_unref(reply);
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    using Clock = std::chrono::steady_clock;
    DBusError error = DBUS_ERROR_INIT;
    DBusConnection *const bus = argc == 3 ? dbus_connection_open_private(argv[1], &error) : nullptr;
    if (bus == nullptr || !dbus_bus_register(bus, &error)) {
        return 2;
    }
    if (!call(bus, argv[2])) {
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    long long longest = 0;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    while (::poll(&input, 1, pauseMs) == 0) {
        const auto start = Clock::now();
        if (!call(bus, argv[2])) {
            return 1;
        }
        const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
        longest = std::max<long long>(longest, took.count());
    }
    std::printf("%lld\n", longest);
    return 0;
}
