#include <vorletproxies.h>

#include <QCoreApplication>
#include <QTextStream>

/// Something on a screen that shows a string; here, on standard output.
class Label : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void setText(const QString &text)
    {
        QTextStream(stdout) << "label: " << text << '\n';
        QCoreApplication::quit();
    }
};

// The lines that vorletproxies.h shows, between a program's first and last ones.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    Label label;

    // clang-format off
    Daemon::GeneralProxy device(&application, QDBusConnection::systemBus());
    const QString serial = device.serial(QDBus::Block);        // waits; null when the service fails
    device.setName(QStringLiteral("kitchen"), QDBus::NoBlock); // sends and goes on
    device.connectNameChanged(&label, SLOT(setText(QString))); // the slot takes what the signal carries
    // clang-format on

    QTextStream(stdout) << "serial: " << serial << Qt::endl;
    return application.exec();
}

#include "example.moc"
