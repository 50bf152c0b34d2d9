#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class BusService;
class DeviceSimulator;
struct ServerFault;

/// What a person types at the simulator: one line in, text out.
class CommandInterpreter : public QObject
{
    Q_OBJECT
public:
    explicit CommandInterpreter(DeviceSimulator &device, QObject *parent = nullptr);

    /// Does what @p line says. The result is never empty, unless the line is; it has no line end of its own.
    QString execute(const QString &line);

Q_SIGNALS:
    void quitRequested();
    /// A line was obeyed or refused; whatever it changed has changed.
    void executed();

private:
    QString obey(const QString &line);

    struct Command;
    static const Command commands[];

    QString help(const QStringList &arguments);
    QString showStatus(const QStringList &arguments);
    QString setKey(const QStringList &arguments);
    QString clearKey(const QStringList &arguments);
    QString setServerKey(const QStringList &arguments);
    QString setRemoteId(const QStringList &arguments);
    QString clearRemoteId(const QStringList &arguments);
    QString setInternet(const QStringList &arguments);
    QString createWidget(const QStringList &arguments);
    QString deleteWidget(const QStringList &arguments);
    QString startService(const QStringList &arguments);
    QString stopService(const QStringList &arguments);
    QString list(const QStringList &arguments);
    QString addApplication(const QStringList &arguments);
    QString removeApplication(const QStringList &arguments);
    QString failWithStatus(const QStringList &arguments);
    QString failWithDelay(const QStringList &arguments);
    QString failWithClosedConnection(const QStringList &arguments);
    QString failWithBodyThatIsNoJson(const QStringList &arguments);
    QString heal(const QStringList &arguments);
    QString registerAsWidget(const QStringList &arguments);
    QString updateAsWidget(const QStringList &arguments);
    QString deleteAsWidget(const QStringList &arguments);
    QString note(const QStringList &arguments);
    QString quit(const QStringList &arguments);

    QString startQwixtd();
    QString stopQwixtd();
    /// Lines the fault up for as many answers as @p count says ("always" for all).
    QString arrange(const QString &count, const ServerFault &fault, const QString &what);
    /// The service that a person means, or null.
    BusService *serviceNamed(const QString &name);

    DeviceSimulator &simulator;
};
