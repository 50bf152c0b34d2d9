#include "platformcapture.h"

#include "platformlog.h"

#include <QMutex>
#include <QMutexLocker>

namespace
{
QMutex mutex;
QList<PlatformCapture::Line> captured;

QMutex watchMutex; ///< held while the function runs, so that it never outlives its watch
QByteArray watchedText;
std::function<void()> whenWritten;

void reportToWatch(const char *text)
{
    const QMutexLocker locker(&watchMutex);
    if (whenWritten && watchedText == text) {
        whenWritten();
    }
}
} // namespace

int __android_log_write(int priority, const char *tag, const char *text)
{
    {
        const QMutexLocker locker(&mutex);
        captured.append({priority, tag, text});
    }
    reportToWatch(text);
    return 1;
}

namespace PlatformCapture
{

QList<Line> lines()
{
    const QMutexLocker locker(&mutex);
    return captured;
}

QList<QByteArray> texts(int priority)
{
    QList<QByteArray> result;
    const QList<Line> all = lines();
    for (const Line &line : all) {
        if (priority == LogPriority::Any || line.priority == priority) {
            result.append(line.text);
        }
    }
    return result;
}

int count(const QByteArray &text)
{
    return static_cast<int>(texts().count(text));
}

void clear()
{
    const QMutexLocker locker(&mutex);
    captured.clear();
}

LineWatch::LineWatch(const QByteArray &text, const std::function<void()> &written)
{
    const QMutexLocker locker(&watchMutex);
    watchedText = text;
    whenWritten = written;
}

LineWatch::~LineWatch()
{
    const QMutexLocker locker(&watchMutex);
    whenWritten = nullptr;
}

} // namespace PlatformCapture
