#pragma once

#include "descriptioncounts.h"

#include <QList>

#include <initializer_list>

/// The descriptions that wait or run, in the order of arrival. Counting equal ones takes constant time on
/// average; removing one takes time in proportion to the number of those before it.
///
/// A walk from the front to the back may take its time: it meets what is appended meanwhile, and meets
/// nothing twice and misses nothing when others are removed. There is one walk; another start begins it anew.
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
        if (!contains(descr)) {
            return;
        }
        const auto index = order.indexOf(descr);
        order.removeAt(index);
        counts.decrease(descr);
        if (index < walked) {
            --walked;
            walkedCounts.decrease(descr);
        }
    }

    /// Gives back what it keeps for more than it holds.
    void squeeze()
    {
        order = QList<RemoteTaskDescription>(order.cbegin(), order.cend());
        counts.squeeze();
        walkedCounts.squeeze();
    }

    void startWalk()
    {
        walked = 0;
        walkedCounts.clear();
    }

    bool isWalkDone() const { return walked == order.size(); }

    /// The next description; the walk must not be done.
    RemoteTaskDescription walkOn()
    {
        RemoteTaskDescription descr = order.at(walked++);
        walkedCounts.increase(descr);
        return descr;
    }

    /// How many equal ones the walk has met.
    int walkedCount(const RemoteTaskDescription &descr) const { return walkedCounts.of(descr); }

private:
    QList<RemoteTaskDescription> order;
    DescriptionCounts counts;
    decltype(order.size()) walked = 0; ///< the first ones, as many, are behind the walk
    DescriptionCounts walkedCounts;
};
