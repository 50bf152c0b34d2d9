#pragma once

class QCoreApplication;

/// Runs the daemon: claims its name on the system bus, exports its object, starts the manager and runs the
/// event loop.
/// @return the event loop's status, or -1 with a warning when the name or the object is refused
int runDaemon(QCoreApplication &application);
