#pragma once

#include "busmessage.h"

#include <QMap>
#include <QObject>
#include <QStringList>

#include <memory>

struct DBusConnection;
class QSocketNotifier;

/// Sees every message on a bus, whoever sends it to whom. The bus allows that to its own user and to root.
/// It leans on the bus library itself: Qt would answer what it sees, and a monitor may not speak.
class BusMonitor : public QObject
{
    Q_OBJECT
public:
    explicit BusMonitor(QObject *parent = nullptr);
    ~BusMonitor() override;

    /// Begins to watch; false, with errorText(), when the bus is not there or refuses.
    bool start(const QString &busAddress);
    QString errorText() const;

    /// Reports at once what has come.
    void readWhatIsThere();
    /// The well-known names that the connection @p uniqueName owns. A well-known name stands for itself.
    QStringList namesOf(const QString &uniqueName) const;
    bool isOwned(const QString &wellKnownName) const;

Q_SIGNALS:
    void passed(const BusMessage &message);
    /// A well-known name has found or lost its owner.
    void ownerChanged(const QString &wellKnownName, bool isOwned);

private:
    struct Closer {
        void operator()(DBusConnection *connection) const;
    };

    bool connectTo(const QString &busAddress);
    bool learnOwners();
    bool becomeMonitor();
    void take(const BusMessage &message);
    void setOwner(const QString &name, const QString &uniqueName);

    std::unique_ptr<DBusConnection, Closer> connection;
    std::unique_ptr<QSocketNotifier> notifier;
    QMap<QString, QString> owners;
    QString error;
};
