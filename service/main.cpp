#include "log.h"
#include "processend.h"
#include "standardfiles.h"
#include "startup.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <cerrno>
#include <csignal>
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

    // Newer Qt writes three lines for each call that it refuses: any caller could fill the log.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.dbus.integration=false"));
    QCoreApplication application(argc, argv);
    const int status = runDaemon(application);

    // A transfer may still be under way, and waiting for it could take minutes. Its thread posts the result
    // to objects of this thread and works with libraries that exit handlers would pull from under it. So
    // nothing that it may touch is destroyed, the application included; there is nothing to flush either.
    endProcess(status);
}
