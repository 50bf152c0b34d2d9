#include "platformcapture.h"

#include "platformlog.h"

#include <QMutex>
#include <QMutexLocker>

namespace
{
QMutex mutex;
QList<PlatformCapture::Line> captured;
} // namespace

int __android_log_write(int priority, const char *tag, const char *text)
{
    const QMutexLocker locker(&mutex);
    captured.append({priority, tag, text});
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
        if (priority == 0 || line.priority == priority) {
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

} // namespace PlatformCapture
