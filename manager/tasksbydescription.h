#pragma once

#include "remotetaskdescription.h"

#include <QMap>

#include <unordered_map>

class RemoteTaskWithDescription;

/// The tasks that exist, by what they are about. Entries are found by equality of their descriptions, in
/// constant time on average, and walked in the order of the map. The tasks belong to their owner.
class TasksByDescription
{
    Q_DISABLE_COPY(TasksByDescription)

    // The ordering of descriptions is not strict: a look-up by key misses entries that are there. So the map
    // is only walked, and an index beside it finds its places.
    using Map = QMap<RemoteTaskDescription, RemoteTaskWithDescription *>;

public:
    TasksByDescription() = default;

    int size() const;
    bool isEmpty() const;
    /// The task stored for this description, or null.
    RemoteTaskWithDescription *find(const RemoteTaskDescription &descr) const;

    Map::const_iterator begin() const;
    Map::const_iterator end() const;

    /// Stores @p task for this description and returns the one it replaces, or null.
    [[nodiscard]] RemoteTaskWithDescription *store(const RemoteTaskDescription &descr,
                                                   RemoteTaskWithDescription *task);
    /// Removes the entry of this description and returns its task, or null when there is none.
    [[nodiscard]] RemoteTaskWithDescription *take(const RemoteTaskDescription &descr);

    /// Gives back what it keeps for more than it holds.
    void squeeze();

private:
    Map map; ///< never shared, so that its iterators stay valid
    std::unordered_map<RemoteTaskDescription, Map::iterator, RemoteTaskDescriptionHash> index;
};
