#include "startup.h"

#include <QCoreApplication>

#include <csignal>

int main(int argc, char *argv[])
{
    // A server or a log reader that goes away is an error of that one write, not the end of the daemon.
    std::signal(SIGPIPE, SIG_IGN);

    QCoreApplication application(argc, argv);
    return runDaemon(application);
}
