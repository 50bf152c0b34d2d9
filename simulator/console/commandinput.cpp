#include "commandinput.h"

#include <cerrno>

#include <unistd.h>

CommandInput::CommandInput(int descriptor_, QObject *parent)
    : QObject(parent)
    , descriptor(descriptor_)
    , notifier(descriptor_, QSocketNotifier::Read)
{
    connect(&notifier, &QSocketNotifier::activated, this, [this] { readWhatIsThere(); });
}

void CommandInput::readWhatIsThere()
{
    char buffer[4096];
    // One read per notice: the descriptor is as blocking as its other owners want it.
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (count <= 0) {
        notifier.setEnabled(false);
        if (!partialLine.isEmpty()) {
            Q_EMIT lineRead(QString::fromUtf8(partialLine));
        }
        Q_EMIT ended();
        return;
    }
    partialLine.append(buffer, static_cast<int>(count));
    for (auto end = partialLine.indexOf('\n'); end >= 0; end = partialLine.indexOf('\n')) {
        const QString line = QString::fromUtf8(partialLine.left(end));
        partialLine.remove(0, end + 1);
        Q_EMIT lineRead(line);
    }
}
