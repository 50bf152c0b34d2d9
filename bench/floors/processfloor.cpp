// processfloor: what the libraries alone take of a process that waits for calls. Claims the daemon's name on
// the system bus, exports one adaptor and initialises libcurl, in the order of the daemon, so that both have
// done the same when the name is seen.

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
    QCoreApplication application(argc, argv);
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerService(QStringLiteral("com.qwixtd"))) {
        return 1;
    }
    QObject object;
    new FloorAdaptor(&object); // owned by the object
    if (!bus.registerObject(QStringLiteral("/"), &object) ||
        curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
        return 1;
    }
    return QCoreApplication::exec();
}

#include "processfloor.moc"
