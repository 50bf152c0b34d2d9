#pragma once

#include <QMap>
#include <QString>
#include <QVector>

#include <stdexcept>

/// Why a figure cannot be taken. Ends the run: a table with holes is not shown.
class CannotMeasure : public std::runtime_error
{
public:
    explicit CannotMeasure(const QString &reason);
};

/// Throws CannotMeasure with @p reason unless @p condition holds.
void require(bool condition, const QString &reason);

/// What the kernel knows of a process of the same user. Each throws CannotMeasure when there is none.
namespace Measure
{

/// Nanoseconds of processor time of all its threads, those that have ended included.
qint64 processorNs(qint64 process);
/// The same of its main thread alone.
qint64 mainThreadProcessorNs(qint64 process);
/// Bytes of memory that it alone has, and has written.
double privateDirtyBytes(qint64 process);
/// How often each of its threads, by its id, was taken off a processor, by waiting or by force.
QMap<QString, qint64> contextSwitches(qint64 process);

} // namespace Measure

/// The smallest value with at least @p part (0 to 1) of @p values not above it; there must be one.
double quantile(QVector<double> values, double part);
double median(const QVector<double> &values);
double least(const QVector<double> &values);
double largest(const QVector<double> &values);
