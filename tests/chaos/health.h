#pragma once

#include <QDBusConnection>
#include <QString>

class QwixtdProcess;

/// What the daemon holds of the machine.
struct Figures {
    qint64 memoryKb = 0;
    int files = 0;
    int threads = 0;

    static Figures of(const QwixtdProcess &daemon);
    QString text() const;
};

/// How quickly the daemon answers on the bus, as a client of its own sees it.
class Latency
{
public:
    explicit Latency(const QString &busAddress);
    ~Latency();
    Q_DISABLE_COPY(Latency)

    /// The time of one call in milliseconds; -1 when it was not answered. This thread's event loop runs
    /// meanwhile.
    qint64 call();

private:
    const QString name;
    QDBusConnection bus;
};
