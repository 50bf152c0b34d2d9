#pragma once

#include <QThread>

class VThreadPrivate;

/// A QThread with a small stack: an event loop on which a data fetcher runs its requests. Its owner quits and
/// joins it before it is destroyed.
class VThread : public QThread
{
    Q_OBJECT

public:
    /// The stack of every VThread, in bytes: the device has little memory, and the work on this thread is
    /// shallow.
    static constexpr uint stackBytes = 262144;

    explicit VThread(QObject *parent);
    ~VThread() override;

private:
    VThreadPrivate *d;
};
