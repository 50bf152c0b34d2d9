#include "deviceundertest.h"

#include <QDBusVirtualObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QUuid>

/// The bus goes away while the daemon's main thread waits for an answer that never comes.
class TestBusLost : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void nameIsNeverGranted_endsAtOnceAllTheSame();
    void serviceIsSilentAtStart_endsAtOnceAllTheSame_data();
    void serviceIsSilentAtStart_endsAtOnceAllTheSame();
    void serviceIsSilentLater_endsAtOnceAllTheSame();
};

namespace
{
constexpr int promptMs = 5000 * slowdown;
const QByteArray warning = "W/QWIXTD: QWIXTD: lost the system bus";

/// Owns a device service's name, and answers no call.
class SilentService : public QDBusVirtualObject
{
public:
    SilentService(const QString &busAddress, const QString &name)
        : bus(QDBusConnection::connectToBus(busAddress, QUuid::createUuid().toString()))
    {
        isRunning = bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath) &&
                    bus.registerService(name);
    }

    ~SilentService() override { QDBusConnection::disconnectFromBus(bus.name()); }

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/) override
    {
        calls.append(message.member());
        message.setDelayedReply(true);
        return true;
    }

    bool isRunning = false;
    QStringList calls;
    QDBusConnection bus;
};

/// Stands between the daemon and its bus, and from the claim of a name on keeps what the daemon sends to
/// itself.
class DeafRelay
{
public:
    explicit DeafRelay(const QString &busPath_)
        : busPath(busPath_)
    {
        QObject::connect(&server, &QLocalServer::newConnection, &server, [this] { relay(); });
        isListening = server.listen(directory.filePath(QStringLiteral("relay")));
    }

    QString address() const { return QStringLiteral("unix:path=") + server.fullServerName(); }

    /// Cuts the daemon off, as a bus that ends does.
    void stop() { client->abort(); }

    bool isListening = false;
    bool wasAskedForAName = false;

private:
    void relay()
    {
        client = server.nextPendingConnection();
        auto *const bus = new QLocalSocket(client); // goes with the client
        QObject::connect(bus, &QLocalSocket::readyRead, client, [=] { client->write(bus->readAll()); });
        QObject::connect(client, &QLocalSocket::readyRead, bus, [=] {
            const QByteArray sent = client->readAll();
            wasAskedForAName = wasAskedForAName || sent.contains("RequestName");
            if (!wasAskedForAName) {
                bus->write(sent);
            }
        });
        bus->connectToServer(busPath);
    }

    const QString busPath;
    QTemporaryDir directory;
    QLocalServer server;
    QLocalSocket *client = nullptr;
};
} // namespace

void TestBusLost::nameIsNeverGranted_endsAtOnceAllTheSame()
{
    DeviceUnderTest device;
    DeafRelay relay(device.bus().address().section(QLatin1Char('='), 1).section(QLatin1Char(','), 0, 0));
    QVERIFY(relay.isListening);
    QVERIFY(device.program().start(relay.address(), device.server().host()));
    EVENTUALLY(relay.wasAskedForAName);

    device.expectExit();
    relay.stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QVERIFY(device.hasLine(warning));
    QCOMPARE(device.program().exitStatus(), 1);
}

void TestBusLost::serviceIsSilentAtStart_endsAtOnceAllTheSame_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QString>("call");

    QTest::newRow("widget manager") << "widget.manager"_text
                                    << "listOfInstalledWidgets"_text;
    QTest::newRow("main daemon") << "vorlet.daemon"_text
                                 << "apiKey"_text;
}

void TestBusLost::serviceIsSilentAtStart_endsAtOnceAllTheSame()
{
    QFETCH(QString, service);
    QFETCH(QString, call);
    DeviceUnderTest device;
    const SilentService silent(device.bus().address(), service);
    QVERIFY(silent.isRunning);
    QVERIFY(device.program().start(device.bus().address(), device.server().host()));
    EVENTUALLY_EQUAL(silent.calls, QStringList(call));

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QVERIFY(device.hasLine(warning));
    QCOMPARE(device.program().exitStatus(), 1);
}

void TestBusLost::serviceIsSilentLater_endsAtOnceAllTheSame()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.widgetManager().stop();
    SilentService silent(device.bus().address(), "widget.manager"_text);
    QVERIFY(silent.isRunning);
    QVERIFY(silent.bus.send(QDBusMessage::createSignal("/"_text, "com.vorlet.widget_manager.general"_text,
                                                       "windowServerDidStarted"_text)));
    EVENTUALLY_EQUAL(silent.calls, QStringList("listOfInstalledWidgets"_text));

    device.expectExit();
    device.bus().stop();

    QVERIFY(device.program().waitForExit(promptMs));
    QVERIFY(device.hasLine(warning));
    QCOMPARE(device.program().exitStatus(), 1);
}

QTEST_GUILESS_MAIN(TestBusLost)
#include "tst_qwixtd_buslost.moc"
