#pragma once

#include <QtGlobal>

class QDBusConnection;
struct DBusConnection;

/// Calls a function when a bus connection goes away while the watch lives: at least once, on the bus
/// library's thread, or in the constructor when it is gone already. That thread waits for nobody, so the
/// function is called too while another thread waits for a reply that will never come.
class BusWatch
{
public:
    /// A @p connection that was never made is not watched.
    BusWatch(const QDBusConnection &connection, void (*lost)());
    ~BusWatch();
    Q_DISABLE_COPY(BusWatch)

private:
    DBusConnection *watched; ///< a reference of its own; null without a connection
    void (*whenLost)();
};
