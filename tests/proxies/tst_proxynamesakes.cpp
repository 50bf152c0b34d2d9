#include "fakeservice.h"
#include "privatebus.h"
#include "vorletproxies.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QtTest>

#include <memory>
#include <optional>

// A program with functions of its own, some of which are named as the library's inside once was. They are
// global on purpose: what links with them must not be called.
QStringList calledNamesakes;

namespace Json
{
QVariant parse(const QByteArray & /*text*/)
{
    calledNamesakes.append(QStringLiteral("Json::parse"));
    return {};
}
QByteArray write(const QVariant & /*value*/, bool * /*ok*/)
{
    calledNamesakes.append(QStringLiteral("Json::write"));
    return {};
}
} // namespace Json

namespace Reply
{
QVariant argument(const QDBusMessage & /*reply*/)
{
    calledNamesakes.append(QStringLiteral("Reply::argument"));
    return {};
}
QVariantMap jsonMap(const QDBusMessage & /*reply*/)
{
    calledNamesakes.append(QStringLiteral("Reply::jsonMap"));
    return {};
}
QVariantMap map(const QDBusMessage & /*reply*/)
{
    calledNamesakes.append(QStringLiteral("Reply::map"));
    return {};
}
} // namespace Reply

namespace Argument
{
QVariantMap map(const QVariantMap & /*map*/)
{
    calledNamesakes.append(QStringLiteral("Argument::map"));
    return {};
}
} // namespace Argument

namespace Generic
{
QVariant unwrapped(const QVariant & /*value*/)
{
    calledNamesakes.append(QStringLiteral("Generic::unwrapped"));
    return {};
}
std::optional<QVariantMap> asMap(const QVariant & /*value*/)
{
    calledNamesakes.append(QStringLiteral("Generic::asMap"));
    return {};
}
} // namespace Generic

bool subscribe(const QDBusInterface & /*proxy*/, const QString & /*name*/, QObject * /*receiver*/,
               const char * /*slot*/)
{
    calledNamesakes.append(QStringLiteral("subscribe"));
    return false;
}

bool unsubscribe(const QDBusInterface & /*proxy*/, const QString & /*name*/, QObject * /*receiver*/,
                 const char * /*slot*/)
{
    calledNamesakes.append(QStringLiteral("unsubscribe"));
    return false;
}

const QDBusConnection &withoutIntrospection(const QDBusConnection &connection, const QString & /*interface*/)
{
    calledNamesakes.append(QStringLiteral("withoutIntrospection"));
    return connection;
}

/// A program that has namesakes of what is inside the proxy library links with it, and each calls its own.
class TestProxyNamesakes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void jsonMembers_workAndCallNoNamesake();
    void mapMembers_workAndCallNoNamesake();
    void subscription_worksAndCallsNoNamesake();
    void namesake_isStillTheProgramsOwn();

private:
    static QDBusConnection connection() { return QDBusConnection(QStringLiteral("client")); }

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
    const QVariantMap map{{QStringLiteral("key"), 7}};
};

void TestProxyNamesakes::initTestCase()
{
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(
        bus.address(), QStringList{QStringLiteral("vorlet.daemon"), QStringLiteral("com.btnotifications")});
    QVERIFY(fake->isRunning());
    QVERIFY(QDBusConnection::connectToBus(bus.address(), QStringLiteral("client")).isConnected());
}

void TestProxyNamesakes::cleanupTestCase()
{
    fake.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("client"));
}

void TestProxyNamesakes::init()
{
    fake->takeCalls();
    calledNamesakes.clear();
}

void TestProxyNamesakes::jsonMembers_workAndCallNoNamesake()
{
    Daemon::ClockProxy clock(nullptr, connection());
    fake->answerWith({QByteArray(R"({"key":"value"})")});

    clock.setClockConfig(map, QDBus::Block);
    const QVariantMap state = clock.getClockState(QDBus::Block);

    QCOMPARE(state.value(QStringLiteral("key")).toString(), QStringLiteral("value"));
    QCOMPARE(fake->takeCalls().value(0).arguments, QVariantList{QByteArray(R"({"key":7})")});
    QCOMPARE(calledNamesakes, QStringList());
}

void TestProxyNamesakes::mapMembers_workAndCallNoNamesake()
{
    BtNotifications::BTNotificationsProxy phone(nullptr, connection());
    fake->answerWith({map});

    phone.saveDevice(map, QDBus::Block);
    const QVariantMap devices = phone.savedDevices(QDBus::Block);

    QCOMPARE(devices, map);
    QCOMPARE(fake->takeCalls().value(0).arguments, QVariantList{map});
    QCOMPARE(calledNamesakes, QStringList());
}

void TestProxyNamesakes::subscription_worksAndCallsNoNamesake()
{
    Daemon::NetworkProxy network(nullptr, connection());

    const bool connected = network.connectExternalIpChanged(this, SLOT(deleteLater()));
    const bool disconnected = network.disconnectExternalIpChanged(this, SLOT(deleteLater()));

    QVERIFY(connected);
    QVERIFY(disconnected);
    QCOMPARE(calledNamesakes, QStringList());
}

void TestProxyNamesakes::namesake_isStillTheProgramsOwn()
{
    Daemon::NetworkProxy network(nullptr, connection());

    const bool result = subscribe(network, QStringLiteral("externalIpChanged"), this, SLOT(deleteLater()));
    Json::write(map, nullptr);

    QVERIFY(!result);
    QCOMPARE(calledNamesakes, (QStringList{QStringLiteral("subscribe"), QStringLiteral("Json::write")}));
}

QTEST_GUILESS_MAIN(TestProxyNamesakes)
#include "tst_proxynamesakes.moc"
