#pragma once

#include <QObject>

class VThread;

/// The private half of a VThread, owned by it.
class VThreadPrivate : public QObject
{
    Q_OBJECT

public:
    explicit VThreadPrivate(VThread *thread);

    VThread *q;
};
