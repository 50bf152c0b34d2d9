#include "tasksbydescription.h"

#include <iterator>

namespace
{

TasksByDescription::iterator entryOf(TasksByDescription &tasks, const RemoteTaskDescription &descr)
{
    auto entry = tasks.begin();
    while (entry != tasks.end() && entry.key() != descr) {
        ++entry;
    }
    return entry;
}

} // namespace

RemoteTaskWithDescription *findTask(const TasksByDescription &tasks, const RemoteTaskDescription &descr)
{
    for (auto entry = tasks.cbegin(); entry != tasks.cend(); ++entry) {
        if (entry.key() == descr) {
            return entry.value();
        }
    }
    return nullptr;
}

RemoteTaskWithDescription *storeTask(TasksByDescription &tasks, const RemoteTaskDescription &descr,
                                     RemoteTaskWithDescription *task)
{
    const auto entry = entryOf(tasks, descr);
    if (entry != tasks.end()) {
        RemoteTaskWithDescription *const replaced = entry.value();
        entry.value() = task;
        return replaced;
    }
    // The map itself may take a new description for one it holds. Between a key that is less than the new one
    // and a key that the new one is less than, it does not, and walking back from the end meets such a place:
    // of two different descriptions, at least one is less than the other.
    auto place = tasks.cend();
    while (place != tasks.cbegin() && !(std::prev(place).key() < descr)) {
        --place;
    }
    tasks.insert(place, descr, task);
    return nullptr;
}

RemoteTaskWithDescription *takeTask(TasksByDescription &tasks, const RemoteTaskDescription &descr)
{
    const auto entry = entryOf(tasks, descr);
    if (entry == tasks.end()) {
        return nullptr;
    }
    RemoteTaskWithDescription *const task = entry.value();
    tasks.erase(entry);
    return task;
}
