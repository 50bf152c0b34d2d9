#pragma once

#include "fuzzing.h"

#include <QStringList>
#include <QVariant>

/// A value to be sent, and what must be read where it arrives, as described() tells it.
struct DBusSample {
    QVariant value;
    bool arrives = true;
    QString raw;  ///< with nothing in it decoded
    QString kept; ///< by the readers that keep arrays nested
    QString flat; ///< by those that flatten them
    bool isArray = false;
    QStringList flatElements; ///< of an array, by those readers
};

/// Generates samples.
class DBusSamples
{
public:
    enum class Sender {
        Program, ///< may put anything into a map, and the proxies send what D-Bus carries
        Service  ///< sends what D-Bus carries
    };

    DBusSamples(FuzzedDataProvider &fuzzedInput, Sender who);

    /// A map with at most @p room containers in one another.
    DBusSample takeMap(int room, int depth);

private:
    DBusSample takeAny(int room, int depth);
    DBusSample takeList(int room, int depth);
    DBusSample takeNest(int room, int depth);
    DBusSample takeVariant(int room, int depth);
    DBusSample takeWritten(int room);
    DBusSample takeLeaf(int room);
    DBusSample takeAwkward(int room);

    FuzzedDataProvider &input;
    const Sender sender;
};
