#pragma once

#include "asker.h"
#include "dice.h"
#include "health.h"
#include "storm.h"

#include <QStringList>

#include <functional>
#include <memory>

class World;

/// One run of chaos from the daemon's start to its end: storms, each followed by a calm in which everything
/// is held against what was asked.
class Course
{
public:
    Course(World &world, quint32 seed);

    /// Takes about so long. Returns what was wrong; a run ends with the first calm that shows anything.
    QStringList run(int seconds);
    /// The figures of the run, as one line.
    QString summary() const;

private:
    QStringList start();
    QStringList storm(int milliseconds);
    /// The server alone refuses for a while, so that only retries bring the requests through.
    void refuseAll();
    QStringList calm();
    QStringList stillOpen() const;
    /// The same work again and again, one request at a time.
    QStringList workSteadily(int rounds);
    qint64 latencyUnderWork();
    qint64 growth(QStringList &wrong);
    QStringList measure();
    QStringList end();

    void pass(int milliseconds);
    /// False when the time is over, or the daemon has done what it must never do.
    bool waitUntil(const std::function<bool()> &condition, int milliseconds, int every = 100);
    QStringList wrongs();
    /// Adds up what was, and forgets it.
    void settle();

    World &world;
    Dice dice;
    Asker asker;
    Storm weather;
    std::unique_ptr<Latency> latency;
    Figures first;
    Figures last;
    int storms = 0;
    int asked = 0;
    int sent = 0;
    int announced = 0;
};
