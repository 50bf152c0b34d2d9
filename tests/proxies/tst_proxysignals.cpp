#include "daemon/generalproxy.h"
#include "fakeservice.h"
#include "privatebus.h"
#include "proxytable.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QtTest>

#include <algorithm>
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
    void managersSlot_fitsTheSignal_data();
    void managersSlot_fitsTheSignal();
    void otherObjectsSignal_isNotDelivered();
    void nullReceiver_isRefused();
    void receiverThatIsDestroyed_leavesNoRule();

private:
    bool emitSignal(const char *name, const QDBusInterface &proxy, const QVariantList &arguments);
    QStringList rules();
    const ProxyTable &tableOf(const QString &className) const;
    static const Subscription &subscriptionOf(const ProxyTable &table, const QByteArray &signal);

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
    std::vector<ProxyTable> tables;
};

void TestProxySignals::initTestCase()
{
    qDBusRegisterMetaType<MatchRules>();
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(bus.address());
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

const ProxyTable &TestProxySignals::tableOf(const QString &className) const
{
    return *std::find_if(tables.begin(), tables.end(), [&className](const ProxyTable &each) {
        return className == QLatin1String(each.className);
    });
}

const Subscription &TestProxySignals::subscriptionOf(const ProxyTable &table, const QByteArray &signal)
{
    return *std::find_if(table.subscriptions.begin(), table.subscriptions.end(),
                         [&signal](const Subscription &each) { return signal == each.signal; });
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

void TestProxySignals::managersSlot_fitsTheSignal_data()
{
    const QVariantList packageAndWidget = {QStringLiteral("com.example.clock"), QStringLiteral("{1b4e28ba}")};
    QTest::addColumn<QString>("className");
    QTest::addColumn<QByteArray>("signal");
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QVariantList>("arguments");
    const auto daemon = QStringLiteral("Daemon::GeneralProxy");
    const auto windows = QStringLiteral("WindowManager::GeneralProxy");
    const QByteArray nothing = SLOT(nothing());
    const QByteArray texts = SLOT(texts(QString, QString));
    QTest::newRow("daemonDidStart") << daemon << QByteArray("daemonDidStart") << nothing << QVariantList();
    QTest::newRow("apiKeyDidSet") << daemon << QByteArray("apiKeyDidSet") << QByteArray(SLOT(text(QString)))
                                  << QVariantList{QStringLiteral("key")};
    QTest::newRow("internetAvailabilityChanged")
        << QStringLiteral("Daemon::NetworkProxy") << QByteArray("internetAvailabilityChanged")
        << QByteArray(SLOT(flag(bool))) << QVariantList{true};
    QTest::newRow("windowServerDidStarted")
        << windows << QByteArray("windowServerDidStarted") << nothing << QVariantList();
    QTest::newRow("widgetDeleted") << windows << QByteArray("widgetDeleted") << texts << packageAndWidget;
    QTest::newRow("newWidgetCreated")
        << windows << QByteArray("newWidgetCreated") << texts << packageAndWidget;
}

void TestProxySignals::managersSlot_fitsTheSignal()
{
    QFETCH(QString, className);
    QFETCH(QByteArray, signal);
    QFETCH(QByteArray, slot);
    QFETCH(QVariantList, arguments);
    const ProxyTable &table = tableOf(className);
    const Subscription &subscription = subscriptionOf(table, signal);
    Receiver receiver;
    QVERIFY(subscription.connect(&receiver, slot.constData()));

    QVERIFY(emitSignal(signal.constData(), *table.proxy, arguments));

    QVERIFY(receiver.waitForOne());
    QCOMPARE(receiver.received, QList<QVariantList>{arguments});
    QVERIFY(subscription.disconnect(&receiver, slot.constData()));
}

void TestProxySignals::otherObjectsSignal_isNotDelivered()
{
    const QDBusConnection connection{QLatin1String(connectionName)};
    Daemon::GeneralProxy general(nullptr, connection);
    const QString service = general.service();
    const QString name = QStringLiteral("nameChanged");
    Receiver receiver;
    QVERIFY(general.connectNameChanged(&receiver, SLOT(text(QString))));
    const QVariantList wrong{QStringLiteral("wrong")};

    // Another service, another path, another interface; then the right one, behind them.
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

    const bool isConnected = general.connectNameChanged(nullptr, SLOT(text(QString)));
    const bool isDisconnected = general.disconnectNameChanged(nullptr, SLOT(text(QString)));

    QVERIFY(!isConnected);
    QVERIFY(!isDisconnected);
}

void TestProxySignals::receiverThatIsDestroyed_leavesNoRule()
{
    Daemon::GeneralProxy general(nullptr, QDBusConnection{QLatin1String(connectionName)});
    const QStringList before = rules();
    auto receiver = std::make_unique<Receiver>();
    QVERIFY(general.connectNameChanged(receiver.get(), SLOT(text(QString))));
    QVERIFY(rules() != before);

    receiver.reset();

    QTRY_COMPARE(rules(), before);
}

QTEST_GUILESS_MAIN(TestProxySignals)
#include "tst_proxysignals.moc"
