#include "daemon/generalproxy.h"
#include "daemon/networkproxy.h"
#include "fakeservice.h"
#include "privatebus.h"
#include "proxytable.h"
#include "windowmanager/generalproxy.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QtTest>

#include <memory>

namespace
{

const char connectionName[] = "client";

using MatchRules = QMap<QString, QStringList>;

QVariant plain(const QVariant &value)
{
    return value.userType() == qMetaTypeId<QDBusArgument>() ? QVariant(qdbus_cast<QVariantMap>(value))
                                                            : value;
}

/// Keeps what its slots are given.
class Receiver : public QObject
{
    Q_OBJECT

public:
    QList<QVariantList> received;

    bool waitForOne()
    {
        QSignalSpy spy(this, &Receiver::arrived);
        return !received.isEmpty() || spy.wait();
    }

Q_SIGNALS:
    void arrived();

public Q_SLOTS:
    void message(const QDBusMessage &signal)
    {
        QVariantList arguments;
        const QVariantList wire = signal.arguments();
        for (const QVariant &argument : wire) {
            arguments.append(plain(argument));
        }
        keep(arguments);
    }
    void nothing() { keep({}); }
    void flag(bool value) { keep({value}); }
    void text(const QString &value) { keep({value}); }
    void texts(const QString &first, const QString &second) { keep({first, second}); }

private:
    void keep(const QVariantList &arguments)
    {
        received.append(arguments);
        Q_EMIT arrived();
    }
};

} // namespace

Q_DECLARE_METATYPE(MatchRules)

/// Subscribes every signal of every class, and looks at the match rules that the bus holds.
class TestProxySignals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void signal_arrivesUntilDisconnected_data();
    void signal_arrivesUntilDisconnected();
    void managersSlots_fitTheSignals();
    void otherObjectsSignal_isNotDelivered();
    void nullReceiver_isRefused();
    void receiverThatIsDestroyed_leavesNoRule();

private:
    bool emitSignal(const char *name, const QDBusInterface &proxy, const QVariantList &arguments);
    QStringList rules();

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
    std::vector<ProxyTable> tables;
};

void TestProxySignals::initTestCase()
{
    qDBusRegisterMetaType<MatchRules>();
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(
        bus.address(), QStringList{QStringLiteral("vorlet.daemon"), QStringLiteral("widget.manager"),
                                   QStringLiteral("vorlet.mqtt.client"),
                                   QStringLiteral("com.btnotifications"), QStringLiteral("spotify.server")});
    QVERIFY(fake->isRunning());
    tables = everyProxyTable(QDBusConnection::connectToBus(bus.address(), QLatin1String(connectionName)));
}

void TestProxySignals::cleanupTestCase()
{
    tables.clear();
    fake.reset();
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

bool TestProxySignals::emitSignal(const char *name, const QDBusInterface &proxy,
                                  const QVariantList &arguments)
{
    return fake->sendSignal(proxy.service(), proxy.path(), proxy.interface(), QLatin1String(name), arguments);
}

// The rules of the proxies' connection, as the bus itself lists them.
QStringList TestProxySignals::rules()
{
    const QDBusConnection connection{QLatin1String(connectionName)};
    const QDBusMessage reply = connection.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus.Debug.Stats"), QStringLiteral("GetAllMatchRules")));
    QStringList found = qdbus_cast<MatchRules>(reply.arguments().value(0)).value(connection.baseService());
    found.sort();
    return found;
}

void TestProxySignals::signal_arrivesUntilDisconnected_data()
{
    QTest::addColumn<int>("tableIndex");
    QTest::addColumn<int>("subscriptionIndex");
    for (size_t table = 0; table < tables.size(); ++table) {
        for (size_t index = 0; index < tables[table].subscriptions.size(); ++index) {
            const Subscription &each = tables[table].subscriptions[index];
            QTest::addRow("%s::%s %d", tables[table].className, each.signal, int(index))
                << int(table) << int(index);
        }
    }
}

void TestProxySignals::signal_arrivesUntilDisconnected()
{
    QFETCH(int, tableIndex);
    QFETCH(int, subscriptionIndex);
    const ProxyTable &table = tables.at(size_t(tableIndex));
    const Subscription &subscription = table.subscriptions.at(size_t(subscriptionIndex));
    const char *const slot = SLOT(message(QDBusMessage));
    const QStringList before = rules();
    Receiver receiver;
    Receiver witness;

    QVERIFY(subscription.connect(&receiver, slot));
    QCOMPARE(rules().filter(QStringLiteral("member='%1'").arg(QLatin1String(subscription.signal))).size(), 1);
    QVERIFY(emitSignal(subscription.signal, *table.proxy, subscription.arguments));
    QVERIFY(receiver.waitForOne());
    QCOMPARE(receiver.received.size(), 1);
    QCOMPARE(receiver.received.first(), subscription.arguments);

    QVERIFY(subscription.disconnect(&receiver, slot));
    QCOMPARE(rules(), before);
    // The witness hears what the receiver must not hear any more.
    QVERIFY(subscription.connect(&witness, slot));
    QVERIFY(emitSignal(subscription.signal, *table.proxy, subscription.arguments));
    QVERIFY(witness.waitForOne());
    QCOMPARE(witness.received.size(), 1);
    QCOMPARE(receiver.received.size(), 1);
    QVERIFY(subscription.disconnect(&witness, slot));
    QVERIFY(!subscription.disconnect(&witness, slot));
    QCOMPARE(rules(), before);
}

void TestProxySignals::managersSlots_fitTheSignals()
{
    const QDBusConnection connection{QLatin1String(connectionName)};
    Daemon::GeneralProxy general(nullptr, connection);
    Daemon::NetworkProxy network(nullptr, connection);
    WindowManager::GeneralProxy windows(nullptr, connection);
    const QString package = QStringLiteral("com.example.clock");
    const QString widget = QStringLiteral("{1b4e28ba}");
    Receiver receiver;
    QVERIFY(general.connectDaemonDidStart(&receiver, SLOT(nothing())));
    QVERIFY(general.connectApiKeyDidSet(&receiver, SLOT(text(QString))));
    QVERIFY(network.connectInternetAvailabilityChanged(&receiver, SLOT(flag(bool))));
    QVERIFY(windows.connectWindowServerDidStarted(&receiver, SLOT(nothing())));
    QVERIFY(windows.connectWidgetDeleted(&receiver, SLOT(texts(QString, QString))));
    QVERIFY(windows.connectNewWidgetCreated(&receiver, SLOT(texts(QString, QString))));

    const struct {
        const char *name;
        const QDBusInterface &proxy;
        QVariantList arguments;
    } emissions[] = {
        {"daemonDidStart", general, {}},
        {"apiKeyDidSet", general, {QStringLiteral("key")}},
        {"internetAvailabilityChanged", network, {true}},
        {"windowServerDidStarted", windows, {}},
        {"widgetDeleted", windows, {package, widget}},
        {"newWidgetCreated", windows, {package, widget}},
    };
    for (const auto &emission : emissions) {
        receiver.received.clear();
        QVERIFY(emitSignal(emission.name, emission.proxy, emission.arguments));
        QVERIFY(receiver.waitForOne());
        QCOMPARE(receiver.received.size(), 1);
        QCOMPARE(receiver.received.first(), emission.arguments);
    }
}

void TestProxySignals::otherObjectsSignal_isNotDelivered()
{
    const QDBusConnection connection{QLatin1String(connectionName)};
    Daemon::GeneralProxy general(nullptr, connection);
    const QString service = general.service();
    const QString name = QStringLiteral("nameChanged");
    Receiver receiver;
    QVERIFY(general.connectNameChanged(&receiver, SLOT(text(QString))));

    // Another path, another interface, another service; then the right one, behind them.
    const QVariantList wrong{QStringLiteral("wrong")};
    QVERIFY(
        fake->sendSignal(QStringLiteral("widget.manager"), general.path(), general.interface(), name, wrong));
    QVERIFY(fake->sendSignal(service, QStringLiteral("/"), general.interface(), name, wrong));
    QVERIFY(
        fake->sendSignal(service, general.path(), QStringLiteral("com.vorlet.daemon.network"), name, wrong));
    QVERIFY(fake->sendSignal(service, general.path(), general.interface(), name, {QStringLiteral("right")}));
    QVERIFY(receiver.waitForOne());
    QCOMPARE(receiver.received, QList<QVariantList>{{QStringLiteral("right")}});
}

void TestProxySignals::nullReceiver_isRefused()
{
    Daemon::GeneralProxy general(nullptr, QDBusConnection{QLatin1String(connectionName)});
    QVERIFY(!general.connectNameChanged(nullptr, SLOT(text(QString))));
    QVERIFY(!general.disconnectNameChanged(nullptr, SLOT(text(QString))));
}

void TestProxySignals::receiverThatIsDestroyed_leavesNoRule()
{
    Daemon::GeneralProxy general(nullptr, QDBusConnection{QLatin1String(connectionName)});
    const QStringList before = rules();
    {
        Receiver receiver;
        QVERIFY(general.connectNameChanged(&receiver, SLOT(text(QString))));
        QVERIFY(rules() != before);
    }
    QTRY_COMPARE(rules(), before);
}

QTEST_GUILESS_MAIN(TestProxySignals)
#include "tst_proxysignals.moc"
