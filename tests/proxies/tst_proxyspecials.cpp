#include "btnotifications/btnotificationsproxy.h"
#include "daemon/clockproxy.h"
#include "daemon/screensaverproxy.h"
#include "described.h"
#include "fakeservice.h"
#include "messagecapture.h"
#include "mqttclient/generalproxy.h"
#include "privatebus.h"
#include "proxytable.h"
#include "spotify/clientproxy.h"
#include "windowmanager/apearanceproxy.h"
#include "windowmanager/dynamicwidgetpropertiesproxy.h"
#include "windowmanager/generalproxy.h"
#include "windowmanager/notificationsproxy.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QMetaMethod>
#include <QtTest>

#include <limits>
#include <memory>
#include <set>
#include <string>

namespace
{

const char connectionName[] = "client";

class Receiver : public QObject
{
    Q_OBJECT

public:
    QStringList received;

public Q_SLOTS:
    void text(const QString &value) { received.append(value); }
};

} // namespace

/// What single classes do besides their tables.
class TestProxySpecials : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void bothFamilies_readTheSameValueTheirWay();
    void widgetPropertyThatCannotBeWritten_isLoggedAndSentAllTheSame();
    void widgetProperty_isSentAsJson();
    void jsonCommandThatCannotBeWritten_sendsNoBytes();
    void channelCommand_waitsForTheReply();
    void lastCall_isJudgedByItsAnswer();
    void screenSaverSignal_hasTwoPairs();
    void metaObject_isOwnedByTheListedClasses();

private:
    QDBusConnection connection() const { return QDBusConnection(QLatin1String(connectionName)); }

    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
};

void TestProxySpecials::initTestCase()
{
    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(bus.address());
    QVERIFY(fake->isRunning());
    QVERIFY(QDBusConnection::connectToBus(bus.address(), QLatin1String(connectionName)).isConnected());
}

void TestProxySpecials::cleanupTestCase()
{
    fake.reset();
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

void TestProxySpecials::init()
{
    fake->answerWith({});
    fake->takeCalls();
}

void TestProxySpecials::bothFamilies_readTheSameValueTheirWay()
{
    WindowManager::NotificationsProxy flattening(nullptr, connection());
    WindowManager::ApearanceProxy scrolling(nullptr, connection());
    BtNotifications::BTNotificationsProxy nesting(nullptr, connection());
    const QString key = QStringLiteral("key");
    const QVariant path = QVariant::fromValue(QDBusObjectPath(QStringLiteral("/one")));
    fake->answerWith({list({list({1, list({2})}), QVariantMap{{key, list({list({path})})}}})});

    const QVariantList notifications = flattening.listOfQueuedNotifications(QDBus::Block);
    const QVariantList scrollTypes = scrolling.scrollTypeInfos(QDBus::Block);
    const QVariantList applications = nesting.supportedAppList(QDBus::Block);

    const QVariantList flat{1, 2, QVariantMap{{key, list({QStringLiteral("/one")})}}};
    const QVariantList nested{list({1, list({2})}),
                              QVariantMap{{key, list({list({QStringLiteral("/one")})})}}};
    QCOMPARE(described(notifications), described(flat));
    QCOMPARE(described(scrollTypes), described(flat));
    QCOMPARE(described(applications), described(nested));
}

void TestProxySpecials::widgetPropertyThatCannotBeWritten_isLoggedAndSentAllTheSame()
{
    WindowManager::DynamicWidgetPropertiesProxy proxy(nullptr, connection());
    const QString widget = QStringLiteral("widget");
    const QString property = QStringLiteral("property");
    const MessageCapture capture;

    proxy.updateProperty(widget, property, std::numeric_limits<double>::quiet_NaN(), QDBus::Block);

    QCOMPARE(capture.debugTexts(),
             QStringList{QStringLiteral(
                 "DynamicWidgetPropertiesProxy: Failed tot serialize data for update property")});
    const QList<RecordedCall> calls = fake->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().member, QStringLiteral("updateProperty"));
    QCOMPARE(calls.first().signature, QStringLiteral("ssay"));
    QCOMPARE(calls.first().arguments, (QVariantList{widget, property, QByteArray("")}));
}

void TestProxySpecials::widgetProperty_isSentAsJson()
{
    WindowManager::DynamicWidgetPropertiesProxy proxy(nullptr, connection());
    const QString widget = QStringLiteral("widget");
    const QString property = QStringLiteral("property");
    const MessageCapture capture;

    proxy.updateProperty(widget, property, 5, QDBus::Block);

    QCOMPARE(capture.debugTexts(), QStringList());
    const QList<RecordedCall> calls = fake->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().arguments, (QVariantList{widget, property, QByteArray("5")}));
}

void TestProxySpecials::jsonCommandThatCannotBeWritten_sendsNoBytes()
{
    Daemon::ClockProxy proxy(nullptr, connection());
    const MessageCapture capture;

    proxy.setClockConfig(QVariantMap{{QStringLiteral("offset"), std::numeric_limits<double>::infinity()}},
                         QDBus::Block);

    const QList<RecordedCall> calls = fake->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().arguments, QVariantList{QByteArray("")});
    QCOMPARE(capture.debugTexts(), QStringList());
}

void TestProxySpecials::channelCommand_waitsForTheReply()
{
    MQTTClient::GeneralProxy proxy(nullptr, connection());
    fake->answerWithError(QStringLiteral("com.vorlet.Failed"), QStringLiteral("no such channel"));

    proxy.sendDataToChannel(QStringLiteral("channel"), QStringLiteral("\u00e9"));

    // Had it not waited, no error could be known.
    QCOMPARE(proxy.lastError().message(), QStringLiteral("no such channel"));
    const QList<RecordedCall> calls = fake->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().arguments, (QVariantList{QStringLiteral("channel"), QByteArray("\xc3\xa9")}));
}

void TestProxySpecials::lastCall_isJudgedByItsAnswer()
{
    Spotify::ClientProxy proxy(nullptr, connection());

    const bool atFirst = proxy.lastCallSucceeded();
    fake->answerWithError(QStringLiteral("com.vorlet.Failed"), QStringLiteral("no player"));
    proxy.SkipToNext(QDBus::Block);
    const bool afterAnError = proxy.lastCallSucceeded();
    fake->answerWith({});
    proxy.SkipToNext(QDBus::Block);
    fake->takeCalls();
    const bool afterAReply = proxy.lastCallSucceeded();

    QVERIFY(atFirst);
    QVERIFY(!afterAnError);
    QVERIFY(afterAReply);
    QVERIFY(fake->takeCalls().isEmpty()); // asking sends nothing
}

void TestProxySpecials::screenSaverSignal_hasTwoPairs()
{
    Daemon::ScreenSaverProxy proxy(nullptr, connection());
    Receiver first;
    Receiver second;
    const auto send = [this, &proxy](const char *text) {
        return fake->sendSignal(proxy.service(), proxy.path(), proxy.interface(),
                                QStringLiteral("screenSaverWidgetChanged"), {QLatin1String(text)});
    };

    QVERIFY(proxy.connectScreenSaverWidgetChanged(&first, SLOT(text(QString))));
    QVERIFY(proxy.connectWidgetChanged(&second, SLOT(text(QString))));
    QVERIFY(send("one"));
    QTRY_COMPARE(first.received, QStringList{QStringLiteral("one")});
    QTRY_COMPARE(second.received, QStringList{QStringLiteral("one")});
    QVERIFY(proxy.disconnectScreenSaverWidgetChanged(&first, SLOT(text(QString))));
    QVERIFY(send("two"));

    QTRY_COMPARE(second.received.size(), 2);
    QCOMPARE(first.received.size(), 1);
    QVERIFY(proxy.disconnectWidgetChanged(&second, SLOT(text(QString))));
}

void TestProxySpecials::metaObject_isOwnedByTheListedClasses()
{
    const std::set<std::string> owners{"WindowManager::SharedScreenProxy",
                                       "MQTTClient::GeneralProxy",
                                       "WindowManager::ApearanceProxy",
                                       "WindowManager::NotificationsProxy",
                                       "WindowManager::DynamicWidgetPropertiesProxy",
                                       "BtNotifications::BTNotificationsProxy",
                                       "Spotify::ClientProxy"};

    const std::vector<ProxyTable> tables = everyProxyTable(connection());

    size_t found = 0;
    for (const ProxyTable &table : tables) {
        const QMetaObject *const metaObject = table.proxy->metaObject();
        if (owners.count(table.className) == 1) {
            ++found;
            QCOMPARE(metaObject->className(), table.className);
            // No signals and slots of its own.
            QCOMPARE(metaObject->methodCount(), metaObject->methodOffset());
        } else {
            QVERIFY2(QByteArray(metaObject->className()).startsWith("com::vorlet::"), table.className);
        }
    }
    QCOMPARE(found, owners.size());
}

QTEST_GUILESS_MAIN(TestProxySpecials)
#include "tst_proxyspecials.moc"
