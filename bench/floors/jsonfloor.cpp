// jsonfloor FILE: reads the file's JSON once and prints the processor time that this took, in nanoseconds.

#include <QFile>
#include <QJsonDocument>

#include <cstdio>
#include <ctime>

namespace
{
long long processorNs()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}
} // namespace

int main(int argc, char *argv[])
{
    QFile file(argc == 2 ? QString::fromLocal8Bit(argv[1]) : QString());
    if (!file.open(QIODevice::ReadOnly)) {
        return 1;
    }
    const QByteArray text = file.readAll();
    const long long before = processorNs();
    const QJsonDocument document = QJsonDocument::fromJson(text);
    const long long taken = processorNs() - before;
    if (!document.isObject()) {
        return 1;
    }
    std::printf("%lld\n", taken);
    return 0;
}
