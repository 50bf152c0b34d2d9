#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QStringList>

/// Listens to a bus: what this process's connection to the system bus subscribes to and which services'
/// methods it calls, in the order in which the bus gets them. What the bus library asks on its own is left
/// out.
class BusCalls : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit BusCalls(const QString &busAddress);
    ~BusCalls() override;

    /// The calls so far, oldest first: "subscribe SIGNAL" or the method's name.
    QStringList calls() const;

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QDBusConnection bus;
    const QString listenedTo;
    QStringList heard;
};
