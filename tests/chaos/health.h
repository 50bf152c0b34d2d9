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

    /// The middle one of @p count calls made one after the other, in milliseconds; -1 when one was not
    /// answered. The middle one, because any single call may have to wait for other programs of the machine.
    /// This thread's event loop runs meanwhile.
    qint64 median(int count);

private:
    qint64 call();

    const QString name;
    QDBusConnection bus;
};
