#pragma once

#include "remotetaskdescription.h"
#include "vfetchtask.h"

/// A single-shot fetch task with id 0 that carries the description it was made for.
class RemoteTaskWithDescription : public VFetchTask
{
    Q_OBJECT

public:
    explicit RemoteTaskWithDescription(const RemoteTaskDescription &descr);
    ~RemoteTaskWithDescription() override;

    const RemoteTaskDescription description;
};
