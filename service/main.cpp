#include "log.h"
#include "standardfiles.h"
#include "startup.h"

#include <QCoreApplication>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

int main(int argc, char *argv[])
{
    if (!openClosedStandardFiles()) {
        logWarning("QWIXTD: cannot open /dev/null in place of a closed standard file: %s",
                   std::system_category().message(errno).c_str());
        return -1;
    }
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
