#include "tasksbydescription.h"

#include <iterator>
#include <utility>

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
    // An insertion by key alone may overwrite the entry of another description. It does not when the place is
    // given, and the key before it is less and the key after it is not.
    const auto isPlace = [this, &descr](Map::const_iterator place) {
        return (place == map.cbegin() || std::prev(place).key() < descr) &&
               (place == map.cend() || !(place.key() < descr));
    };
    // A binary search finds such a place at once among descriptions with equal data. Otherwise walking back
    // from the end always meets one, since of two different descriptions at least one is less than the other.
    Map::const_iterator place = std::as_const(map).lowerBound(descr);
    if (!isPlace(place)) {
        place = map.cend();
        while (place != map.cbegin() && !(std::prev(place).key() < descr)) {
            --place;
        }
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

void TasksByDescription::squeeze()
{
    index.rehash(0);
}
