#include "fakeservice.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMutexLocker>

namespace
{

// The bus library's own reader, not the one under test.
QVariant plain(const QVariant &value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>()) {
        return value;
    }
    const auto argument = value.value<QDBusArgument>();
    const QString signature = argument.currentSignature();
    if (signature == QStringLiteral("a{sv}")) {
        return qdbus_cast<QVariantMap>(argument);
    }
    if (signature == QStringLiteral("av")) {
        return QVariant(qdbus_cast<QVariantList>(argument));
    }
    return value;
}

} // namespace

class FakeService::Listener : public QDBusVirtualObject
{
public:
    Listener(FakeService *owner, const QString &busAddress, const QString &serviceName)
        : connection(QDBusConnection::connectToBus(busAddress, connectionName(owner, serviceName)))
        , fake(owner)
        , name(serviceName)
    {
    }

    ~Listener() override
    {
        const QString ownName = connection.name();
        connection = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(ownName);
    }

    bool start()
    {
        return connection.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath) &&
               connection.registerService(name);
    }

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/) override
    {
        fake->received(name, message);
        const QDBusMessage reply = fake->answerTo(message);
        if (reply.type() == QDBusMessage::InvalidMessage) {
            message.setDelayedReply(true);
            return true;
        }
        return !message.isReplyRequired() || connection.send(reply);
    }

    QDBusConnection connection;
    QString service() const { return name; }

private:
    static QString connectionName(const FakeService *owner, const QString &serviceName)
    {
        return QStringLiteral("fake %1 of %2").arg(serviceName).arg(quintptr(owner));
    }

    FakeService *fake;
    QString name;
};

FakeService::FakeService(const QString &busAddress, const QStringList &names)
{
    thread.start();
    for (const QString &name : names) {
        auto listener = std::make_unique<Listener>(this, busAddress, name);
        running = listener->start() && running;
        listener->moveToThread(&thread);
        listeners.push_back(std::move(listener));
    }
}

FakeService::FakeService(const QString &busAddress)
    : FakeService(busAddress, {QStringLiteral("vorlet.daemon"), QStringLiteral("widget.manager"),
                               QStringLiteral("vorlet.mqtt.client"), QStringLiteral("com.btnotifications"),
                               QStringLiteral("spotify.server")})
{
}

FakeService::~FakeService()
{
    thread.quit();
    thread.wait();
    listeners.clear();
}

bool FakeService::isRunning() const
{
    return running;
}

void FakeService::answerWith(const QVariantList &arguments)
{
    const QMutexLocker locker(&mutex);
    answer = Answer::Reply;
    replyArguments = arguments;
}

void FakeService::answerWithError(const QString &name, const QString &message)
{
    const QMutexLocker locker(&mutex);
    answer = Answer::Error;
    errorName = name;
    errorMessage = message;
}

void FakeService::answerNever()
{
    const QMutexLocker locker(&mutex);
    answer = Answer::Never;
}

QList<RecordedCall> FakeService::takeCalls()
{
    const QMutexLocker locker(&mutex);
    QList<RecordedCall> taken;
    taken.swap(calls);
    return taken;
}

bool FakeService::sendSignal(const QString &service, const QString &path, const QString &interface,
                             const QString &name, const QVariantList &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
    signal.setArguments(arguments);
    for (const std::unique_ptr<Listener> &listener : listeners) {
        if (listener->service() == service) {
            return listener->connection.send(signal);
        }
    }
    return false;
}

void FakeService::received(const QString &service, const QDBusMessage &call)
{
    QVariantList arguments;
    const QVariantList wire = call.arguments();
    for (const QVariant &argument : wire) {
        arguments.append(plain(argument));
    }
    const QMutexLocker locker(&mutex);
    calls.append({service, call.path(), call.interface(), call.member(), call.signature(), arguments});
}

QDBusMessage FakeService::answerTo(const QDBusMessage &call) const
{
    const QMutexLocker locker(&mutex);
    switch (answer) {
    case Answer::Reply:
        return call.createReply(replyArguments);
    case Answer::Error:
        return call.createErrorReply(errorName, errorMessage);
    case Answer::Never:
        break;
    }
    return {};
}
