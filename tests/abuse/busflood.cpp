// busflood ADDRESS SERVICE KIND CONNECTIONS CALLS: calls a service of the bus from many connections at once,
// as fast as it takes the calls. KIND is what is called:
//   register    registerQwixtApplication with a widget that nobody else names
//   large       the same with a name of 1 MB
//   delete      deleteQwixtApplication of a widget and an application that nobody knows, with a type of 8 KB
//   signature   registerQwixtApplication with a number
//   member      a method that is not there
//   interface   an interface that is not there
//   leave       as register, and the connections are closed without waiting for an answer
// Writes a line for each kind of answer: how many of them came, and "answered" or the error's name.

#include <dbus/dbus.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <poll.h>
#include <string>
#include <vector>

namespace
{
constexpr int window = 100; // below what the bus allows a connection to have unanswered
constexpr int pollMs = 100;
constexpr std::size_t megabyte = 1024 * 1024;

std::map<std::string, int> answers;

struct FreeMessage {
    void operator()(DBusMessage *message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, FreeMessage>;

Message makeCall(const std::string &service, const std::string &kind, const std::string &uuid)
{
    const char *const interface = kind == "interface" ? "com.vorlet.other" : "com.vorlet.qwixtd";
    const char *const member = kind == "member"   ? "noSuchMember"
                               : kind == "delete" ? "deleteQwixtApplication"
                                                  : "registerQwixtApplication";
    Message call(dbus_message_new_method_call(service.c_str(), "/", interface, member));
    const std::string second = kind == "delete" ? uuid : std::string(kind == "large" ? megabyte : 5, 'n');
    const std::string third = kind == "delete" ? std::string(8192, 't') : "t";
    const char *const texts[] = {uuid.c_str(), second.c_str(), third.c_str()};
    const dbus_int32_t number = 7;
    const bool isMade =
        kind == "signature"
            ? dbus_message_append_args(call.get(), DBUS_TYPE_INT32, &number, DBUS_TYPE_INVALID)
            : dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &texts[0], DBUS_TYPE_STRING, &texts[1],
                                       DBUS_TYPE_STRING, &texts[2], DBUS_TYPE_INVALID);
    if (!isMade) {
        std::abort();
    }
    return call;
}

// One connection of the flood.
class Caller
{
public:
    explicit Caller(const char *address)
    {
        DBusError error = DBUS_ERROR_INIT;
        connection = dbus_connection_open_private(address, &error);
        if (connection == nullptr || !dbus_bus_register(connection, &error)) {
            std::fprintf(stderr, "busflood: no connection: %s\n", error.message);
            std::exit(1);
        }
        dbus_connection_set_exit_on_disconnect(connection, FALSE);
    }

    bool hasRoom() const { return sent - answered < window; }
    int sentSoFar() const { return sent; }
    bool isAnswered() const { return answered == sent; }

    void send(const Message &call)
    {
        dbus_connection_send(connection, call.get(), nullptr);
        ++sent;
    }

    /// Writes and reads what the socket takes and has, and counts the answers.
    bool exchange()
    {
        const bool isOpen = dbus_connection_read_write(connection, 0);
        while (const Message message{dbus_connection_pop_message(connection)}) {
            const int type = dbus_message_get_type(message.get());
            if (type == DBUS_MESSAGE_TYPE_METHOD_RETURN || type == DBUS_MESSAGE_TYPE_ERROR) {
                const char *const error = dbus_message_get_error_name(message.get());
                ++answers[error == nullptr ? "answered" : error];
                ++answered;
            }
        }
        return isOpen;
    }

    pollfd waiting() const
    {
        int descriptor = -1;
        dbus_connection_get_unix_fd(connection, &descriptor);
        const bool hasMore = dbus_connection_has_messages_to_send(connection);
        return {descriptor, static_cast<short>(hasMore ? POLLIN | POLLOUT : POLLIN), 0};
    }

    void leave()
    {
        dbus_connection_flush(connection);
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }

private:
    DBusConnection *connection;
    int sent = 0;
    int answered = 0;
};
} // namespace

int main(int argc, char *argv[])
{
    if (argc != 6) {
        return 2;
    }
    const std::string service = argv[2];
    const std::string kind = argv[3];
    const int calls = std::atoi(argv[5]);
    std::vector<Caller> callers;
    for (int i = 0; i < std::atoi(argv[4]); ++i) {
        callers.emplace_back(argv[1]);
    }
    for (bool isDone = false; !isDone;) {
        isDone = true;
        std::vector<pollfd> waiting;
        for (std::size_t i = 0; i < callers.size(); ++i) {
            Caller &caller = callers[i];
            while (caller.sentSoFar() < calls && caller.hasRoom()) {
                const std::string uuid =
                    "flood-" + std::to_string(i) + '-' + std::to_string(caller.sentSoFar());
                caller.send(makeCall(service, kind, uuid));
            }
            if (kind == "leave") {
                caller.leave(); // with as much unanswered as a connection may have
                continue;
            }
            if (!caller.exchange()) {
                std::fprintf(stderr, "busflood: connection %zu was closed\n", i);
                return 1;
            }
            isDone = isDone && caller.sentSoFar() == calls && caller.isAnswered();
            waiting.push_back(caller.waiting());
        }
        if (!isDone) {
            ::poll(waiting.data(), waiting.size(), pollMs);
        }
    }
    for (const auto &[answer, count] : answers) {
        std::printf("%d %s\n", count, answer.c_str());
    }
    return 0;
}
