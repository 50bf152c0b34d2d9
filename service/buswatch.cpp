#include "buswatch.h"

#include <QDBusConnection>

#include <dbus/dbus.h>

namespace
{
// The connection announces its own end by a signal that comes from no service.
DBusHandlerResult filter(DBusConnection * /*connection*/, DBusMessage *message, void *data)
{
    if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected")) {
        reinterpret_cast<void (*)()>(data)();
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}
} // namespace

// Qt takes no notice of that signal before the main event loop runs: until then a call that waits for its
// reply when the bus goes away waits without end. So the library below Qt is asked.
BusWatch::BusWatch(const QDBusConnection &connection, void (*lost)())
    : watched(static_cast<DBusConnection *>(connection.internalPointer()))
    , whenLost(lost)
{
    if (watched == nullptr) {
        return;
    }
    dbus_connection_ref(watched);
    dbus_connection_add_filter(watched, filter, reinterpret_cast<void *>(lost), nullptr);
    if (!dbus_connection_get_is_connected(watched)) {
        lost(); // the signal may have gone by
    }
}

BusWatch::~BusWatch()
{
    if (watched == nullptr) {
        return;
    }
    dbus_connection_remove_filter(watched, filter, reinterpret_cast<void *>(whenLost));
    dbus_connection_unref(watched);
}
