#include "fakeservice.h"
#include "messagecapture.h"
#include "privatebus.h"
#include "proxytable.h"
#include "vorletproxies.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QFile>
#include <QtTest>

#include <memory>

namespace
{

// How long a service that is wrongly started gets to leave its mark.
constexpr int activationGraceMs = 300;
constexpr int shortTimeoutMs = 200;

} // namespace

/// What making a proxy costs, and what a proxy does without its service or with one that hangs.
class TestProxyConstruction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void absentService_isNotStarted();
    void hangingService_isNotAsked();
    void programThatExportsItsRoot_doesNotAskEither();
    void programThatExportsATree_asksTheService();
    void plainInterfaceMadeLater_findsNoMembersAndCallsAllTheSame();
    void programThatTakesEveryPath_hasWorkingProxies();
    void proxy_leavesNothingBehindOnTheConnection();
    void interfaceKnownToTheConnection_isKept();
    void callAfterCall_lastErrorFollows();
    void callToAnAbsentService_saysThatItIsUnknown();
    void serviceThatNeverAnswers_givesTheEmptyValueAfterTheTimeout();
    void nonBlockingGetter_givesTheEmptyValueAtOnce();
    void connectionWithoutBus_givesEmptyValues();
    void parent_ownsTheProxy();

private:
    QDBusConnection client() const { return QDBusConnection::connectToBus(bus.address(), clientName); }
    QString mark(const char *service) const { return marks.filePath(QLatin1String(service)); }
    void makeActivatable(const char *service);

    PrivateBus bus;
    QTemporaryDir marks;
    QString clientName;
};

void TestProxyConstruction::makeActivatable(const char *service)
{
    QFile file(bus.servicesDirectory() + QStringLiteral("/%1.service").arg(QLatin1String(service)));
    QVERIFY(file.open(QIODevice::WriteOnly));
    // It ends at once and badly, so that the bus does not go on waiting for it to own its name.
    file.write(QStringLiteral("[D-BUS Service]\nName=%1\nExec=/bin/sh -c \"touch '%2'; exit 1\"\n")
                   .arg(QLatin1String(service), mark(service))
                   .toUtf8());
}

void TestProxyConstruction::initTestCase()
{
    for (const char *service : {"vorlet.daemon", "widget.manager", "vorlet.mqtt.client",
                                "com.btnotifications", "spotify.server", "test.control"}) {
        makeActivatable(service);
    }
    QVERIFY(bus.start());
}

void TestProxyConstruction::init()
{
    // A connection of its own for each test: it remembers the interfaces it has seen.
    clientName = QLatin1String(QTest::currentTestFunction());
}

void TestProxyConstruction::cleanup()
{
    QDBusConnection::disconnectFromBus(clientName);
}

void TestProxyConstruction::absentService_isNotStarted()
{
    const QDBusConnection connection = client();
    const QStringList activatable = connection.interface()->activatableServiceNames();
    QVERIFY(activatable.contains(QStringLiteral("vorlet.daemon")));

    QElapsedTimer timer;
    timer.start();
    const std::vector<ProxyTable> tables = everyProxyTable(connection);
    const qint64 elapsedMs = timer.elapsed();
    // The control: an ordinary interface object does start its service.
    const QDBusInterface control(QStringLiteral("test.control"), QStringLiteral("/"),
                                 QStringLiteral("test.control"), connection);
    QTRY_VERIFY(QFile::exists(mark("test.control")));
    QTest::qWait(activationGraceMs);

    for (const ProxyTable &table : tables) {
        QVERIFY2(!QFile::exists(marks.filePath(table.proxy->service())), table.className);
        QVERIFY2(!table.proxy->isValid(), table.className);
    }
    QVERIFY2(elapsedMs < 1000, qPrintable(QString::number(elapsedMs)));
}

void TestProxyConstruction::hangingService_isNotAsked()
{
    FakeService fake(bus.address());
    QVERIFY(fake.isRunning());
    fake.answerNever();

    QElapsedTimer timer;
    timer.start();
    const std::vector<ProxyTable> tables = everyProxyTable(client());
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));

    for (const ProxyTable &table : tables) {
        QVERIFY2(table.proxy->isValid(), table.className);
    }
    // A question sent by a constructor would stand before this one.
    const auto ping = QDBusMessage::createMethodCall(QStringLiteral("vorlet.daemon"), QStringLiteral("/"),
                                                     QStringLiteral("test.device"), QStringLiteral("ping"));
    fake.answerWith({});
    client().call(ping);
    const QList<RecordedCall> calls = fake.takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().member, QStringLiteral("ping"));
}

void TestProxyConstruction::programThatExportsItsRoot_doesNotAskEither()
{
    FakeService fake(bus.address(), {QStringLiteral("vorlet.daemon")});
    QDBusConnection connection = client();
    QObject root;
    QVERIFY(connection.registerObject(QStringLiteral("/"), &root, QDBusConnection::ExportAllSlots));

    const Daemon::NetworkProxy proxy(nullptr, connection);

    QVERIFY(proxy.isValid());
    QCOMPARE(fake.takeCalls().size(), 0);
    QCOMPARE(connection.objectRegisteredAt(QStringLiteral("/")), &root);
}

void TestProxyConstruction::programThatExportsATree_asksTheService()
{
    FakeService fake(bus.address(), {QStringLiteral("vorlet.daemon")});
    QDBusConnection connection = client();
    QObject root;
    QVERIFY(connection.registerObject(QStringLiteral("/"), &root,
                                      QDBusConnection::ExportAllSlots | QDBusConnection::ExportChildObjects));

    const Daemon::NetworkProxy proxy(nullptr, connection);

    const QList<RecordedCall> calls = fake.takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().member, QStringLiteral("Introspect"));
}

void TestProxyConstruction::plainInterfaceMadeLater_findsNoMembersAndCallsAllTheSame()
{
    FakeService fake(bus.address(), {QStringLiteral("vorlet.daemon")});
    fake.answerWith({QStringLiteral("192.0.2.1")});
    const Daemon::NetworkProxy proxy(nullptr, client());

    QDBusInterface plain(proxy.service(), proxy.path(), proxy.interface(), client());
    const QDBusMessage reply = plain.call(QStringLiteral("externalIp"));

    QCOMPARE(plain.metaObject()->methodCount(), plain.metaObject()->methodOffset());
    QCOMPARE(reply.arguments(), QVariantList{QStringLiteral("192.0.2.1")});
    const QList<RecordedCall> calls = fake.takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().member, QStringLiteral("externalIp"));
}

void TestProxyConstruction::programThatTakesEveryPath_hasWorkingProxies()
{
    class EveryPath : public QDBusVirtualObject
    {
    public:
        QString introspect(const QString & /*path*/) const override { return {}; }
        bool handleMessage(const QDBusMessage & /*message*/, const QDBusConnection & /*connection*/) override
        {
            return false;
        }
    };
    FakeService fake(bus.address(), {QStringLiteral("vorlet.daemon")});
    fake.answerWith({QStringLiteral("192.0.2.1")});
    QDBusConnection connection = client();
    EveryPath everyPath;
    QVERIFY(connection.registerVirtualObject(QStringLiteral("/"), &everyPath, QDBusConnection::SubPath));

    Daemon::NetworkProxy proxy(nullptr, connection);
    const QList<RecordedCall> calls = fake.takeCalls();
    const QString address = proxy.externalIp(QDBus::Block);

    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().member, QStringLiteral("Introspect"));
    QCOMPARE(address, QStringLiteral("192.0.2.1"));
}

void TestProxyConstruction::proxy_leavesNothingBehindOnTheConnection()
{
    QDBusConnection connection = client();

    const Daemon::NetworkProxy proxy(nullptr, connection);

    QDBusInterface own(connection.baseService(), QStringLiteral("/"),
                       QStringLiteral("org.freedesktop.DBus.Introspectable"), connection);
    const QDBusMessage reply = own.call(QStringLiteral("Introspect"));
    QVERIFY(!reply.arguments().value(0).toString().contains(QStringLiteral("<node name")));
}

void TestProxyConstruction::interfaceKnownToTheConnection_isKept()
{
    // Proxies made one after the other, and side by side, share what the connection knows.
    const QDBusConnection connection = client();

    for (int round = 0; round < 3; ++round) {
        const Daemon::NetworkProxy first(nullptr, connection);
        const Daemon::NetworkProxy second(nullptr, connection);
        QCOMPARE(first.metaObject(), second.metaObject());
    }
}

void TestProxyConstruction::callAfterCall_lastErrorFollows()
{
    const auto connection = QDBusConnection::connectToBus(bus.address(), clientName);
    auto fake = std::make_unique<FakeService>(bus.address(), QStringList{QStringLiteral("vorlet.daemon")});
    fake->answerWith({true});
    Daemon::NetworkProxy proxy(nullptr, connection);
    QCOMPARE(proxy.lastError().type(), QDBusError::NoError);
    QVERIFY(proxy.isInternetAvailable(QDBus::Block));
    QCOMPARE(proxy.lastError().type(), QDBusError::NoError);

    fake->answerWithError(QStringLiteral("com.vorlet.Failed"), QStringLiteral("no modem"));
    const bool failed = proxy.isInternetAvailable(QDBus::Block);
    const QDBusError error = proxy.lastError();
    fake->answerWith({true});
    const bool answered = proxy.isInternetAvailable(QDBus::Block);

    QVERIFY(!failed);
    QCOMPARE(error.name(), QStringLiteral("com.vorlet.Failed"));
    QCOMPARE(error.message(), QStringLiteral("no modem"));
    QVERIFY(answered);
    QCOMPARE(proxy.lastError().type(), QDBusError::NoError);
}

void TestProxyConstruction::callToAnAbsentService_saysThatItIsUnknown()
{
    // A bus that cannot start the service either.
    PrivateBus emptyBus;
    QVERIFY(emptyBus.start());
    Daemon::NetworkProxy proxy(nullptr, QDBusConnection::connectToBus(emptyBus.address(), clientName));
    QVERIFY(!proxy.isValid());

    const QString address = proxy.externalIp(QDBus::Block);
    const QDBusError error = proxy.lastError();
    const FakeService fake(emptyBus.address(), {QStringLiteral("vorlet.daemon")});
    QTRY_VERIFY(proxy.isValid());
    proxy.clearSettings(QDBus::Block);

    QCOMPARE(address, QString());
    QCOMPARE(error.type(), QDBusError::ServiceUnknown);
    QCOMPARE(proxy.lastError().type(), QDBusError::NoError);
}

void TestProxyConstruction::serviceThatNeverAnswers_givesTheEmptyValueAfterTheTimeout()
{
    FakeService fake(bus.address(), {QStringLiteral("vorlet.daemon")});
    fake.answerNever();
    Daemon::NetworkProxy proxy(nullptr, client());
    Daemon::NetworkProxy other(nullptr, client());
    proxy.setTimeout(shortTimeoutMs);
    const MessageCapture capture;

    QElapsedTimer timer;
    timer.start();
    QCOMPARE(proxy.externalIp(QDBus::Block), QString());
    QVERIFY(timer.elapsed() >= shortTimeoutMs - 50);
    QVERIFY(timer.elapsed() < 20 * shortTimeoutMs);
    QCOMPARE(proxy.lastError().type(), QDBusError::NoReply);
    QVERIFY(proxy.getWifiState(QDBus::Block).isEmpty());
    QCOMPARE(capture.debugTexts(), QStringList());

    // The connection, the other proxy and this one go on as before.
    fake.answerWith({QStringLiteral("192.0.2.1")});
    QCOMPARE(other.externalIp(QDBus::Block), QStringLiteral("192.0.2.1"));
    QCOMPARE(proxy.externalIp(QDBus::Block), QStringLiteral("192.0.2.1"));
}

void TestProxyConstruction::nonBlockingGetter_givesTheEmptyValueAtOnce()
{
    constexpr QDBus::CallMode noWait = QDBus::NoBlock;
    FakeService fake(bus.address(), {QStringLiteral("vorlet.daemon"), QStringLiteral("widget.manager"),
                                     QStringLiteral("com.btnotifications")});
    fake.answerNever();
    Daemon::NetworkProxy network(nullptr, client());
    Daemon::GeneralProxy device(nullptr, client());
    Daemon::AudioProxy audio(nullptr, client());
    Daemon::LightSensorProxy light(nullptr, client());
    WindowManager::NotificationsProxy notes(nullptr, client());
    WindowManager::DynamicWidgetPropertiesProxy properties(nullptr, client());
    BtNotifications::BTNotificationsProxy phone(nullptr, client());
    const MessageCapture capture;

    // One of every shape.
    QVERIFY(network.externalIp(noWait).isNull());
    QVERIFY(!network.isInternetAvailable(noWait));
    QCOMPARE(device.getTimezoneOffset(noWait), 0);
    QCOMPARE(audio.getUserFriendlyVolume(noWait), 0LL);
    QCOMPARE(audio.volume(noWait), 0.0);
    QCOMPARE(light.sensorData(noWait), 0.0F);
    QCOMPARE(device.supportedDeviceModes(noWait), QStringList());
    QCOMPARE(network.getWifiState(noWait), QVariantMap());
    QCOMPARE(network.getWifiApList(noWait), QVariantList());
    QVERIFY(!properties.valueForWidgetProperty(QString(), QString(), noWait).isValid());
    QVERIFY(device.state(noWait).serialNumber.isNull());
    QCOMPARE(device.binCodes(noWait), QVariantMap());
    QCOMPARE(audio.getAudioState(noWait), QVariantMap());
    QCOMPARE(notes.currentNotification(noWait), QVariantMap());
    QCOMPARE(notes.listOfQueuedNotifications(noWait), QVariantList());
    QCOMPARE(phone.filterWhitelist(noWait), QStringList());
    QCOMPARE(phone.supportedAppList(noWait), QVariantList());
    network.clearSettings(noWait);

    QList<RecordedCall> calls;
    QTRY_COMPARE((calls += fake.takeCalls()).size(), 18);
    QCOMPARE(capture.debugTexts(), QStringList());
}

void TestProxyConstruction::connectionWithoutBus_givesEmptyValues()
{
    const QDBusConnection nowhere =
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), clientName);
    QVERIFY(!nowhere.isConnected());
    Daemon::NetworkProxy proxy(nullptr, nowhere);

    const QString address = proxy.externalIp(QDBus::Block);
    proxy.clearSettings(QDBus::Block);
    const bool isSubscribed = proxy.connectExternalIpChanged(this, SLOT(deleteLater()));

    QVERIFY(!proxy.isValid());
    QCOMPARE(address, QString());
    QVERIFY(!isSubscribed);
    QVERIFY(proxy.lastError().type() != QDBusError::NoError);
}

void TestProxyConstruction::parent_ownsTheProxy()
{
    auto parent = std::make_unique<QObject>();
    const QPointer<QObject> proxy = new Daemon::NetworkProxy(parent.get(), client());
    QCOMPARE(proxy->parent(), parent.get());

    parent.reset();

    QVERIFY(proxy.isNull());
}

QTEST_GUILESS_MAIN(TestProxyConstruction)
#include "tst_proxyconstruction.moc"
