#include "tasksbydescription.h"

#include <iterator>

int TasksByDescription::size() const
{
    return static_cast<int>(index.size());
}

bool TasksByDescription::isEmpty() const
{
    return index.empty();
}

RemoteTaskWithDescription *TasksByDescription::find(const RemoteTaskDescription &descr) const
{
    const auto entry = index.find(descr);
    return entry == index.end() ? nullptr : entry->second.value();
}

TasksByDescription::Map::const_iterator TasksByDescription::begin() const
{
    return map.cbegin();
}

TasksByDescription::Map::const_iterator TasksByDescription::end() const
{
    return map.cend();
}

RemoteTaskWithDescription *TasksByDescription::store(const RemoteTaskDescription &descr,
                                                     RemoteTaskWithDescription *task)
{
    const auto entry = index.find(descr);
    if (entry != index.end()) {
        RemoteTaskWithDescription *const replaced = entry->second.value();
        entry->second.value() = task;
        return replaced;
    }
    // The map itself may take a new description for one it holds. Between a key that is less than the new one
    // and a key that the new one is less than, it does not, and walking back from the end meets such a place:
    // of two different descriptions, at least one is less than the other.
    auto place = map.cend();
    while (place != map.cbegin() && !(std::prev(place).key() < descr)) {
        --place;
    }
    index.emplace(descr, map.insert(place, descr, task));
    return nullptr;
}

RemoteTaskWithDescription *TasksByDescription::take(const RemoteTaskDescription &descr)
{
    const auto entry = index.find(descr);
    if (entry == index.end()) {
        return nullptr;
    }
    RemoteTaskWithDescription *const task = entry->second.value();
    map.erase(entry->second);
    index.erase(entry);
    return task;
}
