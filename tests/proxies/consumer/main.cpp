#include <btnotifications/btnotificationsproxy.h>
#include <daemon/generalproxy.h>
#include <daemon/networkproxy.h>
#include <dbusconversion.h>
#include <mqttclient/generalproxy.h>
#include <spotify/clientproxy.h>
#include <windowmanager/generalproxy.h>

#include <QCoreApplication>
#include <QTextStream>

namespace
{

void say(const QString &line)
{
    QTextStream(stdout) << line << '\n';
}

} // namespace

// Asks one question of each of three services, sends two messages, then ends with the first change of the
// device's name.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QDBusConnection bus = QDBusConnection::systemBus();
    Daemon::GeneralProxy general(&application, bus);
    WindowManager::GeneralProxy windows(&application, bus);
    MQTTClient::GeneralProxy messages(&application, bus);
    Spotify::ClientProxy player(&application, bus);

    say(QStringLiteral("serial: ") + general.serial(QDBus::Block));
    say(QStringLiteral("widget mode: ") +
        windows.widgetModeInfo(QStringLiteral("w1"), QStringLiteral("night"), QDBus::Block)
            .value(QStringLiteral("title"))
            .toString());
    const QString playback = player.PlaybackState(QDBus::Block);
    say(QStringLiteral("player: ") + playback +
        (player.lastCallSucceeded() ? QStringLiteral("answered") : QStringLiteral("failed")));
    say(QStringLiteral("conversion: ") + convertDBusVariant(QStringLiteral("text")).toString());
    messages.sendDataToChannel(QStringLiteral("text"), u"\u00e9");
    messages.sendDataToChannel(QStringLiteral("bytes"), "\xff").waitForFinished();
    if (!general.connectNameChanged(&application, SLOT(quit()))) {
        return 1;
    }
    say(QStringLiteral("waiting"));
    return application.exec();
}
