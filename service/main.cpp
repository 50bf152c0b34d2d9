#include "startup.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdlib>

int main(int argc, char *argv[])
{
    // A server or a log reader that goes away is an error of that one write, not the end of the daemon.
    std::signal(SIGPIPE, SIG_IGN);

    int status = 0;
    {
        QCoreApplication application(argc, argv);
        status = runDaemon(application);
    }
    // A transfer may still be under way, and waiting for it could take minutes. The exit handlers of the
    // libraries it uses would pull them from under it, and there is nothing else to flush: leave without
    // them.
    std::_Exit(status);
}
