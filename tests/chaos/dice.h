#pragma once

#include <QRandomGenerator>
#include <QStringList>

/// Chance, from a seed.
class Dice
{
public:
    explicit Dice(quint32 seed)
        : random(seed)
    {
    }

    /// Both ends included.
    int number(int least, int most) { return random.bounded(least, most + 1); }
    bool isOneIn(int of) { return random.bounded(of) == 0; }
    template <typename List>
    auto pick(const List &from)
    {
        return from.at(number(0, static_cast<int>(from.size()) - 1));
    }

private:
    QRandomGenerator random;
};
