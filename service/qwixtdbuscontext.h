#pragma once

#include <QDBusContext>
#include <QObject>
#include <QString>

/// The object behind the daemon's bus interface: notes each request and hands it to the manager. Every call
/// succeeds, whatever its arguments; the manager's signals announce the outcome. Main thread only.
class QwixtDbusContext : public QObject, public QDBusContext
{
public:
    void registerQwixtApplication(const QString &uuid, const QString &name, const QString &type);
    void updateQwixtApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                                const QString &type);
    void deleteQwixtApplication(const QString &qwixtId, const QString &uuid, const QString &type);
};
