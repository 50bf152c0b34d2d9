#pragma once

#include "descriptioncounts.h"

#include <QList>

#include <initializer_list>

/// The descriptions that wait or run, in the order of arrival. Counting equal ones takes constant time on
/// average; removing one takes time in proportion to the number of those before it.
class PendingTasks
{
public:
    PendingTasks() = default;

    PendingTasks(std::initializer_list<RemoteTaskDescription> descriptions)
    {
        for (const RemoteTaskDescription &descr : descriptions) {
            append(descr);
        }
    }

    int size() const { return static_cast<int>(order.size()); }
    bool isEmpty() const { return order.isEmpty(); }
    bool contains(const RemoteTaskDescription &descr) const { return count(descr) > 0; }
    int count(const RemoteTaskDescription &descr) const { return counts.of(descr); }
    const QList<RemoteTaskDescription> &inOrder() const { return order; }

    void append(const RemoteTaskDescription &descr)
    {
        order.append(descr);
        counts.increase(descr);
    }

    /// Removes the first that is equal, if there is one.
    void removeOne(const RemoteTaskDescription &descr)
    {
        if (contains(descr)) {
            order.removeOne(descr);
            counts.decrease(descr);
        }
    }

private:
    QList<RemoteTaskDescription> order;
    DescriptionCounts counts;
};
