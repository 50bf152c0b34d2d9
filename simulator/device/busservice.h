#pragma once

#include <QDBusConnection>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QThread>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class ServiceObject;

/// A simulated device service: a bus name with objects of read-only methods and of signals, on a bus
/// connection of its own. It answers on a thread of its own, so that a blocking call from the thread that
/// made it is answered too. Functions may be called from any thread unless they say otherwise; signals come
/// queued, on the thread that made the service. Subclasses list the members and hold the state.
class BusService : public QObject
{
    Q_OBJECT
public:
    /// What one method call is answered with: values, or a bus error when the error's name is not empty.
    struct Reply {
        QVariantList values;
        QString errorName;
        QString errorText;
        /// How long the answer is held back.
        int delayMs = 0;
    };

    ~BusService() override;

    QString serviceName() const;
    bool isRunning() const;
    /// Why the last start() failed; empty after one that succeeded.
    QString errorText() const;

    /// Exports the objects and claims the name; false, with errorText(), when the bus is not there or the
    /// name is taken. The thread that made the service only. Subclasses announce themselves to the device.
    virtual bool start();
    /// Releases the name and takes the objects away. The thread that made the service only.
    void stop();

    /// From now on calls of @p member are answered with the bus error @p errorName, as a failing service
    /// does.
    void failCallsOf(const QString &member, const QString &errorName, const QString &errorText);
    /// Takes failCallsOf() back.
    void answerCallsOf(const QString &member);
    /// From now on calls of @p member are answered @p delayMs late, as a service that hangs does; 0 takes it
    /// back. Other calls are answered meanwhile. What is held when the service stops is never answered: the
    /// bus says so to the caller.
    void holdCallsOf(const QString &member, int delayMs);

    /// The members called so far, oldest first, those answered with an error included.
    QStringList calls() const;
    int callCount(const QString &member) const;
    void clearCalls();

Q_SIGNALS:
    /// A method was called and answered with @p values, or with an error when @p error is not empty.
    void called(const QString &member, const QVariantList &values, const QString &error);
    /// A bus signal was sent.
    void signalSent(const QString &member, const QVariantList &arguments);
    void started();
    void stopped();

protected:
    struct Method {
        QString path;
        QString interface;
        QString name;
        QString resultSignature;
        /// Called on the service's thread, with no lock held.
        std::function<QVariant()> answer;
    };
    struct Signal {
        QString path;
        QString interface;
        QString name;
        QString signature;
    };

    /// Connects to the bus at @p busAddress; whether that worked shows at start().
    BusService(const QString &busAddress, const QString &serviceName, QObject *parent);

    /// Both only in a subclass's constructor.
    void addMethod(const Method &method);
    void addSignal(const Signal &busSignal);
    /// Sends the signal @p name, if the service is running.
    void sendSignal(const QString &name, const QVariantList &arguments = {});
    /// Ends the thread that answers. A subclass calls it in its destructor, before its state goes.
    void shutDown();

private:
    friend class ServiceObject;

    /// Both are called by the service's objects, on the service's thread. answerFor() returns nothing for an
    /// unknown method.
    std::optional<Reply> answerFor(const QString &path, const QString &interface, const QString &member);
    QString introspection(const QString &path) const;

    QStringList paths() const;

    const QString name;
    const QString connectionName;
    QDBusConnection bus;
    std::vector<Method> methods;
    std::vector<Signal> signalsOfService;
    std::vector<std::unique_ptr<ServiceObject>> objects;
    QThread thread;
    QString lastError;

    mutable QMutex mutex;
    bool running = false;
    QStringList callLog;
    QMap<QString, Reply> failures;
    QMap<QString, int> delays;
};
