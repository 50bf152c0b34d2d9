#include "vthread_p.h"

#include "vthread.h"

VThreadPrivate::VThreadPrivate(VThread *thread)
    : QObject(thread)
    , q(thread)
{
}
