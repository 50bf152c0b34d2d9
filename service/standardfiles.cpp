#include "standardfiles.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

bool openClosedStandardFiles()
{
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
        const bool isClosed = fcntl(file, F_GETFD) == -1 && errno == EBADF;
        // A file that is opened takes the lowest free number, which is this one: those below are open.
        if (isClosed && open("/dev/null", O_RDWR) != file) { // inherited like any standard file
            return false;
        }
    }
    return true;
}
