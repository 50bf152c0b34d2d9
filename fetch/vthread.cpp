#include "vthread.h"

#include "vthread_p.h"

VThread::VThread(QObject *parent)
    : QThread(parent)
    , d(new VThreadPrivate(this))
{
    setStackSize(stackBytes);
}

VThread::~VThread() = default;
