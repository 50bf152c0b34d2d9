#include "health.h"

#include "qwixtdprocess.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QUuid>

Figures Figures::of(const QwixtdProcess &daemon)
{
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(daemon.processId()));
    return {daemon.statusField("RssAnon").split(' ').first().toLongLong(),
            static_cast<int>(descriptors.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot).size()),
            daemon.statusField("Threads").toInt()};
}

QString Figures::text() const
{
    return QStringLiteral("%1 KB, %2 open files, %3 threads").arg(memoryKb).arg(files).arg(threads);
}

Latency::Latency(const QString &busAddress)
    : name(QUuid::createUuid().toString())
    , bus(QDBusConnection::connectToBus(busAddress, name))
{
}

Latency::~Latency()
{
    QDBusConnection::disconnectFromBus(name);
}

qint64 Latency::call()
{
    const QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("com.qwixtd"), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
    QElapsedTimer elapsed;
    elapsed.start();
    const QDBusPendingCallWatcher watcher(bus.asyncCall(message));
    QEventLoop loop;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return watcher.isError() ? -1 : elapsed.elapsed();
}
