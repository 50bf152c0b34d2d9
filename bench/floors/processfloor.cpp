// processfloor: what the libraries alone take of a process that waits for calls. Initialises libcurl, before
// any other thread runs, as libcurl asks for; exports one adaptor on the system bus and claims the daemon's
// name.

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>

#include <curl/curl.h>

class FloorAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.qwixtd")
public:
    explicit FloorAdaptor(QObject *object)
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
    curl_global_init(CURL_GLOBAL_DEFAULT);
    QCoreApplication application(argc, argv);
    QObject object;
    new FloorAdaptor(&object); // owned by the object
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(QStringLiteral("/"), &object) ||
        !bus.registerService(QStringLiteral("com.qwixtd"))) {
        return 1;
    }
    return QCoreApplication::exec();
}

#include "processfloor.moc"
