#pragma once

#include "report.h"

#include <QString>
#include <QVector>

/// How much is measured: enough for a judgement, or just enough to see that a figure can be taken.
struct Scale {
    int rounds;        ///< of what is repeated for the least, the median or the largest
    int drainRequests; ///< queued for one drain
    int shortQueue;    ///< what the long one is held against
    int longQueue;
    int batch;    ///< calls or drains measured at one time
    int busCalls; ///< while a transfer is under way
    int listed;   ///< applications in the long list
    int starts;
    int pollMs; ///< how long answers are waited for while a long queue becomes ready
    int idleMs;

    static Scale full();
    static Scale smoke();
};

/// One function a group of figures that are taken together. Each throws CannotMeasure.
namespace Figures
{

/// Wall and processor time of a request, with a short and with the system's bundle.
QVector<Row> drain(const Scale &scale);
/// A queue that waits for the network: what a call costs, its memory, and the bus while it becomes ready.
QVector<Row> waitingQueue(const Scale &scale);
/// A long queue that is sent: processor time a request, and what memory is left behind.
QVector<Row> longDrain(const Scale &scale);
/// Calls on the bus while requests are under way.
QVector<Row> busCalls(const Scale &scale);
/// Start, memory when Ready, size and rest.
QVector<Row> start(const Scale &scale);
QVector<Row> memory(const Scale &scale);
QVector<Row> idle(const Scale &scale);
QVector<Row> programSize(const Scale &scale);
/// A list reply with many applications.
QVector<Row> list(const Scale &scale);
/// A proxy and its calls.
QVector<Row> proxies(const Scale &scale);

} // namespace Figures
