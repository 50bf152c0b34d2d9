#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A bus with the configuration of this machine's system bus, which refuses every name and every call that
/// nobody allows, and with the policies of one directory in place of the machine's own. Root only: the bus
/// knows its callers by the users that they really are.
class SystemBus
{
public:
    /// The daemon's user, a widget's, and one who means harm; by these names the bus knows them.
    enum User : uint { Root = 0, Qwixtd = 64901, Widget = 64902, Intruder = 64903 };

    /// What dbus-send got: its exit status, and all that it wrote.
    struct Answer {
        int status;
        QByteArray text;

        bool isRefused() const;
    };

    SystemBus();
    ~SystemBus();
    Q_DISABLE_COPY(SystemBus)

    /// Starts the bus with the policies of a directory; the rules of @p services, the inside of a
    /// configuration, stand for those that the device's other services bring. False, with a warning, when it
    /// does not start.
    bool start(const QString &policies, const QByteArray &services);

    QString address() const;
    /// What the bus itself has complained about so far, by lines.
    QList<QByteArray> complaints();

    /// The arguments of setpriv with which a program runs as that user.
    static QStringList switchingTo(User user);
    /// Runs dbus-send as that user and waits for its end.
    Answer send(User user, const QStringList &arguments) const;
    /// The same with "--print-reply --dest=DESTINATION" and "/" in front of @p arguments.
    Answer call(User user, const QString &destination, const QStringList &arguments) const;

private:
    QTemporaryDir directory;
    QProcess process;
    QString busAddress;
};
