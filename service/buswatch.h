#pragma once

class QDBusConnection;

/// From now on calls @p lost when @p connection goes away: at least once, on the bus library's thread, or
/// here when it is gone already. That thread waits for nobody, so @p lost is called too while another thread
/// waits for a reply that will never come. A connection that was never made is not watched.
void watchBus(const QDBusConnection &connection, void (*lost)());
