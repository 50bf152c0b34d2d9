#include "measures.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cmath>
#include <ctime>

namespace
{
constexpr qint64 nanosecondsPerSecond = 1000000000;
constexpr double bytesPerKilobyte = 1024;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), QStringLiteral("%1 cannot be read").arg(path));
    return file.readAll();
}

/// The number behind "NAME:" in a file of /proc.
qint64 numberBehind(const QByteArray &name, const QByteArray &text)
{
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name + ':')) {
            return line.mid(name.size() + 1).simplified().split(' ').first().toLongLong();
        }
    }
    throw CannotMeasure(QStringLiteral("the kernel does not say %1").arg(QString::fromLatin1(name)));
}

QString ofProcess(qint64 process, const QString &file)
{
    return QStringLiteral("/proc/%1/%2").arg(process).arg(file);
}
} // namespace

CannotMeasure::CannotMeasure(const QString &reason)
    : std::runtime_error(reason.toStdString())
{
}

void require(bool condition, const QString &reason)
{
    if (!condition) {
        throw CannotMeasure(reason);
    }
}

qint64 Measure::processorNs(qint64 process)
{
    clockid_t clock = 0;
    timespec time = {};
    require(clock_getcpuclockid(static_cast<pid_t>(process), &clock) == 0 && clock_gettime(clock, &time) == 0,
            QStringLiteral("there is no process %1").arg(process));
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

qint64 Measure::mainThreadProcessorNs(qint64 process)
{
    const QString file = ofProcess(process, QStringLiteral("task/%1/schedstat").arg(process));
    return contentOf(file).split(' ').first().toLongLong();
}

double Measure::privateDirtyBytes(qint64 process)
{
    const QByteArray rollup = contentOf(ofProcess(process, QStringLiteral("smaps_rollup")));
    return static_cast<double>(numberBehind("Private_Dirty", rollup)) * bytesPerKilobyte;
}

QMap<QString, qint64> Measure::contextSwitches(qint64 process)
{
    QMap<QString, qint64> switches;
    const QDir threads(ofProcess(process, QStringLiteral("task")));
    const QStringList ids = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    require(!ids.isEmpty(), QStringLiteral("there is no process %1").arg(process));
    for (const QString &id : ids) {
        const QByteArray status = contentOf(threads.filePath(id + QStringLiteral("/status")));
        switches.insert(id, numberBehind("voluntary_ctxt_switches", status) +
                                numberBehind("nonvoluntary_ctxt_switches", status));
    }
    return switches;
}

double quantile(QVector<double> values, double part)
{
    require(!values.isEmpty(), QStringLiteral("nothing was measured"));
    std::sort(values.begin(), values.end());
    const auto count = static_cast<double>(values.size());
    const auto place = static_cast<int>(std::ceil(part * count)) - 1;
    return values.at(std::max(place, 0));
}

double median(const QVector<double> &values)
{
    return quantile(values, 0.5);
}

double least(const QVector<double> &values)
{
    return quantile(values, 0);
}

double largest(const QVector<double> &values)
{
    return quantile(values, 1);
}
