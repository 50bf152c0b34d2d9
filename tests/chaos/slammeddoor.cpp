#include "slammeddoor.h"

#include <sys/socket.h>
#include <unistd.h>

void SlammedDoor::incomingConnection(qintptr descriptor)
{
    const linger immediately{1, 0};
    setsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_LINGER, &immediately, sizeof immediately);
    ::close(static_cast<int>(descriptor));
}
