// Linked into a daemon of its own: writes a line when exit handlers run, and one when the application object
// is destroyed.

#include <QCoreApplication>

#include <cstdlib>

#include <unistd.h>

namespace
{

void write(const char *line, std::size_t size)
{
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line, size);
}

void exitHandlersRun()
{
    static const char line[] = "witness: exit handlers run\n";
    write(line, sizeof line - 1);
}

void applicationIsDestroyed()
{
    static const char line[] = "witness: the application is destroyed\n";
    write(line, sizeof line - 1);
}

bool watch()
{
    qAddPostRoutine(applicationIsDestroyed);
    return std::atexit(exitHandlersRun) == 0;
}

[[maybe_unused]] const bool isWatching = watch();

} // namespace
