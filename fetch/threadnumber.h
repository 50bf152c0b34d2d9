#pragma once

#include <QThread>

/// The calling thread's id as log lines show it ("%x").
inline unsigned int currentThreadNumber()
{
    return static_cast<unsigned int>(reinterpret_cast<quintptr>(QThread::currentThreadId()));
}
