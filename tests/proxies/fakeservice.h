#pragma once

#include <QDBusMessage>
#include <QList>
#include <QMutex>
#include <QStringList>
#include <QThread>
#include <QVariant>

#include <memory>
#include <vector>

/// One call as it reached the fake. Maps and lists among the arguments are plain, read by the bus library.
struct RecordedCall {
    QString service;
    QString path;
    QString interface;
    QString member;
    QString signature;
    QVariantList arguments;
};

/// Owns any number of services on a bus, with an object behind every path, records every call that arrives
/// there (introspection too) and answers as it is asked to. It works on a thread of its own, so that a
/// blocking caller in the same program can be answered. Its functions are for the thread that made it.
class FakeService
{
public:
    FakeService(const QString &busAddress, const QStringList &names);
    /// With the names of all services of the device.
    explicit FakeService(const QString &busAddress);
    ~FakeService();
    Q_DISABLE_COPY(FakeService)

    /// Whether every name is owned.
    bool isRunning() const;

    /// How each following call is answered; at first, with a reply without arguments.
    void answerWith(const QVariantList &arguments);
    void answerWithError(const QString &name, const QString &message);
    void answerNever();

    /// The calls since the last time, oldest first.
    QList<RecordedCall> takeCalls();
    /// Sends a signal from the connection that owns @p service.
    bool sendSignal(const QString &service, const QString &path, const QString &interface,
                    const QString &name, const QVariantList &arguments);

private:
    class Listener;
    enum class Answer { Reply, Error, Never };

    void received(const QString &service, const QDBusMessage &call);
    QDBusMessage answerTo(const QDBusMessage &call) const;

    QThread thread;
    std::vector<std::unique_ptr<Listener>> listeners;
    bool running = true;
    mutable QMutex mutex;
    QList<RecordedCall> calls;
    Answer answer = Answer::Reply;
    QVariantList replyArguments;
    QString errorName;
    QString errorMessage;
};
