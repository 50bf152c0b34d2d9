// emptyadaptor SERVICE: owns a name on the system bus and answers the daemon's methods there with nothing
// behind them: what the bus library alone takes for a call.

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>

class EmptyAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.qwixtd")
public:
    explicit EmptyAdaptor(QObject *object)
        : QDBusAbstractAdaptor(object)
    {
    }

public Q_SLOTS:
    void registerQwixtApplication(const QString & /*uuid*/, const QString & /*name*/,
                                  const QString & /*type*/)
    {
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QObject object;
    new EmptyAdaptor(&object); // owned by the object
    QDBusConnection bus = QDBusConnection::systemBus();
    const QString name = QCoreApplication::arguments().value(1);
    if (!bus.registerObject(QStringLiteral("/"), &object) || !bus.registerService(name)) {
        return 1;
    }
    return QCoreApplication::exec();
}

#include "emptyadaptor.moc"
