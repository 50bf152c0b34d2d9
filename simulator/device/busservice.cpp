#include "busservice.h"

#include "serviceobject.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QMutexLocker>
#include <QUuid>

namespace
{
QString argumentTags(const QString &signature, const QString &direction)
{
    QString text;
    for (const QChar &type : signature) {
        // The only compound type among the members is the array, whose element follows its letter.
        if (type == QLatin1Char('a')) {
            continue;
        }
        const bool isArray = signature.startsWith(QLatin1Char('a'));
        text +=
            QStringLiteral("      <arg type=\"%1\"%2/>\n")
                .arg(isArray ? signature : QString(type),
                     direction.isEmpty() ? QString() : QStringLiteral(" direction=\"%1\"").arg(direction));
    }
    return text;
}
} // namespace

BusService::BusService(const QString &busAddress, const QString &serviceName, QObject *parent)
    : QObject(parent)
    , name(serviceName)
    , connectionName(QUuid::createUuid().toString())
    , bus(QDBusConnection::connectToBus(busAddress, connectionName))
{
    thread.setObjectName(serviceName);
    thread.start();
}

BusService::~BusService()
{
    shutDown();
}

void BusService::shutDown()
{
    stop();
    thread.quit();
    thread.wait();
    objects.clear();
    QDBusConnection::disconnectFromBus(connectionName);
}

QString BusService::serviceName() const
{
    return name;
}

bool BusService::isRunning() const
{
    const QMutexLocker locker(&mutex);
    return running;
}

QString BusService::errorText() const
{
    return lastError;
}

bool BusService::start()
{
    if (isRunning()) {
        return true;
    }
    if (!bus.isConnected()) {
        lastError = QStringLiteral("cannot reach the bus: %1").arg(bus.lastError().message());
        return false;
    }
    const QStringList allPaths = paths();
    for (const QString &path : allPaths) {
        auto object = std::make_unique<ServiceObject>(*this);
        object->moveToThread(&thread);
        bus.registerVirtualObject(path, object.get());
        objects.push_back(std::move(object));
    }
    // Set before the name is there, so that the first caller is answered.
    {
        const QMutexLocker locker(&mutex);
        running = true;
    }
    if (!bus.registerService(name)) {
        const QString reason = bus.lastError().message();
        stop();
        lastError = QStringLiteral("cannot own %1 on the bus: %2")
                        .arg(name, reason.isEmpty() ? QStringLiteral("the name is taken") : reason);
        return false;
    }
    lastError.clear();
    Q_EMIT started();
    return true;
}

void BusService::stop()
{
    {
        const QMutexLocker locker(&mutex);
        if (!running) {
            return;
        }
        running = false;
    }
    bus.unregisterService(name);
    const QStringList allPaths = paths();
    for (const QString &path : allPaths) {
        bus.unregisterObject(path);
    }
    for (std::unique_ptr<ServiceObject> &object : objects) {
        // A call may be in the object's hands on its thread this moment.
        object.release()->deleteLater();
    }
    objects.clear();
    Q_EMIT stopped();
}

void BusService::failCallsOf(const QString &member, const QString &errorName, const QString &errorText)
{
    const QMutexLocker locker(&mutex);
    failures.insert(member, {{}, errorName, errorText, 0});
}

void BusService::answerCallsOf(const QString &member)
{
    const QMutexLocker locker(&mutex);
    failures.remove(member);
}

void BusService::holdCallsOf(const QString &member, int delayMs)
{
    const QMutexLocker locker(&mutex);
    delays.insert(member, delayMs);
}

QStringList BusService::calls() const
{
    const QMutexLocker locker(&mutex);
    return callLog;
}

int BusService::callCount(const QString &member) const
{
    const QMutexLocker locker(&mutex);
    return static_cast<int>(callLog.count(member));
}

void BusService::clearCalls()
{
    const QMutexLocker locker(&mutex);
    callLog.clear();
}

void BusService::addMethod(const Method &method)
{
    methods.push_back(method);
}

void BusService::addSignal(const Signal &busSignal)
{
    signalsOfService.push_back(busSignal);
}

void BusService::sendSignal(const QString &signalName, const QVariantList &arguments)
{
    if (!isRunning()) {
        return;
    }
    for (const Signal &candidate : signalsOfService) {
        if (candidate.name == signalName) {
            QDBusMessage message =
                QDBusMessage::createSignal(candidate.path, candidate.interface, candidate.name);
            message.setArguments(arguments);
            bus.send(message);
            QMetaObject::invokeMethod(
                this, [this, signalName, arguments] { Q_EMIT signalSent(signalName, arguments); },
                Qt::QueuedConnection);
            return;
        }
    }
    qWarning("%s has no signal %s", qPrintable(name), qPrintable(signalName));
}

std::optional<BusService::Reply> BusService::answerFor(const QString &path, const QString &interface,
                                                       const QString &member)
{
    for (const Method &method : methods) {
        const bool isMeant = method.path == path && method.name == member &&
                             (interface.isEmpty() || method.interface == interface);
        if (!isMeant) {
            continue;
        }
        Reply reply;
        {
            const QMutexLocker locker(&mutex);
            callLog.append(member);
            reply = failures.value(member);
            reply.delayMs = delays.value(member);
        }
        if (reply.errorName.isEmpty()) {
            reply.values.append(method.answer());
        }
        const QString error = reply.errorName.isEmpty()
                                  ? QString()
                                  : QStringLiteral("%1: %2").arg(reply.errorName, reply.errorText).trimmed();
        QMetaObject::invokeMethod(
            this, [this, member, values = reply.values, error] { Q_EMIT called(member, values, error); },
            Qt::QueuedConnection);
        return reply;
    }
    return std::nullopt;
}

QString BusService::introspection(const QString &path) const
{
    QMap<QString, QString> interfaces;
    for (const Method &method : methods) {
        if (method.path == path) {
            interfaces[method.interface] +=
                QStringLiteral("    <method name=\"%1\">\n%2    </method>\n")
                    .arg(method.name, argumentTags(method.resultSignature, QStringLiteral("out")));
        }
    }
    for (const Signal &busSignal : signalsOfService) {
        if (busSignal.path == path) {
            interfaces[busSignal.interface] +=
                QStringLiteral("    <signal name=\"%1\">\n%2    </signal>\n")
                    .arg(busSignal.name, argumentTags(busSignal.signature, QString()));
        }
    }
    QString text;
    for (auto interface = interfaces.constBegin(); interface != interfaces.constEnd(); ++interface) {
        text +=
            QStringLiteral("  <interface name=\"%1\">\n%2  </interface>\n").arg(interface.key(), *interface);
    }
    return text;
}

QStringList BusService::paths() const
{
    QStringList result;
    for (const Method &method : methods) {
        if (!result.contains(method.path)) {
            result.append(method.path);
        }
    }
    return result;
}
