#pragma once

#include <QDBusAbstractAdaptor>
#include <QString>

class QwixtDbusContext;

/// The bus interface com.vorlet.qwixtd. The names of methods, signals and arguments are the published ones,
/// spelled so on the bus. The signals are fed by connections made at start; nothing is emitted here.
class QwixtDbusAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.qwixtd")

public:
    /// @p serviceObject becomes the parent and owns the adaptor; every call is relayed to it.
    explicit QwixtDbusAdaptor(QwixtDbusContext *serviceObject);

public Q_SLOTS:
    void registerQwixtApplication(const QString &uuid, const QString &name, const QString &type);
    void updateQwixtApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                                const QString &type);
    void deleteQwixtApplication(const QString &qwixtId, const QString &uuid, const QString &type);

Q_SIGNALS:
    void daemonDidStarted();
    void applicationRegistered(const QString &uuid, const QString &qwixId, const QString &type);
    void applicationDeleted(const QString &uuid, const QString &qwixtid, const QString &type);

private:
    QwixtDbusContext *context;
};
