#pragma once

#include "remotetaskdescription.h"

#include <QMap>

class RemoteTaskWithDescription;

/// The tasks that exist, by what they are about. The ordering of descriptions is not strict, so a look-up by
/// key misses entries that are there: use these functions, which compare by equality, and never value(),
/// contains(), find(), remove() or an insert() of the map.
using TasksByDescription = QMap<RemoteTaskDescription, RemoteTaskWithDescription *>;

/// The task stored for this description, or null.
RemoteTaskWithDescription *findTask(const TasksByDescription &tasks, const RemoteTaskDescription &descr);

/// Stores @p task for this description and returns the one it replaces, or null. Neither changes its owner.
RemoteTaskWithDescription *storeTask(TasksByDescription &tasks, const RemoteTaskDescription &descr,
                                     RemoteTaskWithDescription *task);

/// Removes the entry of this description and returns its task, or null when there is none.
RemoteTaskWithDescription *takeTask(TasksByDescription &tasks, const RemoteTaskDescription &descr);
