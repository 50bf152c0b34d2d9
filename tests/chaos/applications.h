#pragma once

#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

struct ServerApplication;

/// One application of the device as the daemon must know it.
struct KnownApplication {
    QString appId;
    QString identifier;
    QString name;
    QString type;
    /// Somebody asked for its deletion, or its widget was deleted.
    bool isToGo = false;
};

/// The applications that the daemon knows: those of the list that it began with, and those whose registration
/// it has announced.
class Applications
{
public:
    /// The list's, as the server sent it; those whose widget is not installed are to go.
    void takeList(const QByteArray &list, const QString &deviceId, const QStringList &installed);
    /// A registration that the daemon has announced, with what was asked for.
    void add(const KnownApplication &application);
    void deletionAsked(const QString &appId);
    void widgetDeleted(const QString &id);
    /// After a calm: what the server has not any more is forgotten, and what it has is as it is there.
    void settle(const QList<ServerApplication> &onServer);

    bool contains(const QString &appId) const;
    KnownApplication value(const QString &appId) const;
    QList<KnownApplication> all() const;
    /// The widget of an application that is known or was; empty if it never was.
    QString identifierOf(const QString &appId) const;

private:
    QMap<QString, KnownApplication> byId;
    QHash<QString, QString> identifiers;
};
