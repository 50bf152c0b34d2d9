#pragma once

#include "remotetaskdescription.h"

#include <unordered_map>

/// A count for each description. Looked up by equality, in constant time on average.
class DescriptionCounts
{
public:
    int of(const RemoteTaskDescription &descr) const
    {
        const auto entry = counts.find(descr);
        return entry == counts.end() ? 0 : entry->second;
    }

    bool isEmpty() const { return counts.empty(); }

    void clear() { counts.clear(); }
    /// Gives back what it keeps for more than it holds.
    void squeeze() { counts.rehash(0); }

    void increase(const RemoteTaskDescription &descr) { ++counts[descr]; }

    /// A description whose count is 0 is ignored.
    void decrease(const RemoteTaskDescription &descr)
    {
        const auto entry = counts.find(descr);
        if (entry != counts.end() && --entry->second == 0) {
            counts.erase(entry);
        }
    }

private:
    std::unordered_map<RemoteTaskDescription, int, RemoteTaskDescriptionHash> counts;
};
