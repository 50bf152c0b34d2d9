#include "daemonservice.h"
#include "daemonwatcher.h"
#include "privatebus.h"
#include "widgetmanagerservice.h"

#include <QtTest>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <memory>

namespace
{
const auto general = QStringLiteral("com.vorlet.daemon.general");
const auto network = QStringLiteral("com.vorlet.daemon.network");
const auto widgetsInterface = QStringLiteral("com.vorlet.widget_manager.general");
} // namespace

// Takes any signal that it is subscribed to, and keeps its name and arguments.
class SignalLog : public QObject
{
    Q_OBJECT
public:
    QList<QVariantList> seen;

public Q_SLOTS:
    void take(const QDBusMessage &message)
    {
        QVariantList entry{message.path(), message.interface(), message.member()};
        entry.append(message.arguments());
        seen.append(entry);
    }
};

// Stands in for the application daemon, on a connection of its own.
class FakeApplicationDaemon : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vorlet.qwixtd")
public:
    QList<QStringList> requests;

public Q_SLOTS:
    void registerQwixtApplication(const QString &uuid, const QString &name, const QString &type)
    {
        requests.append({QStringLiteral("register"), uuid, name, type});
    }
    void updateQwixtApplication(const QString &id, const QString &uuid, const QString &name,
                                const QString &type)
    {
        requests.append({QStringLiteral("update"), id, uuid, name, type});
    }
    void deleteQwixtApplication(const QString &id, const QString &uuid, const QString &type)
    {
        requests.append({QStringLiteral("delete"), id, uuid, type});
    }

Q_SIGNALS:
    void daemonDidStarted();
    void applicationRegistered(const QString &uuid, const QString &qwixId, const QString &type);
    void applicationDeleted(const QString &uuid, const QString &qwixtid, const QString &type);
};

class TestDeviceServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void getters_answerTheState();
    void callFromTheOwnersThread_isAnsweredWhileItBlocks();
    void daemonStart_claimsTheNameThenAnnouncesIt();
    void daemonStop_leavesNobodyToAnswer();
    void daemonStartedAgain_answers();
    void secondOwner_isRefused();
    void secondOwner_isAcceptedWhenTheFirstHasGone();
    void setApiKey_isAnnounced();
    void quietKey_isNotAnnounced();
    void internetChange_isAnnouncedOnce();
    void failingMember_answersItsError();
    void calls_areCountedInOrder();
    void unknownMember_isRefused_data();
    void unknownMember_isRefused();
    void introspection_listsTheMembers();
    void widgetManagerStart_isAnnounced();
    void widgets_comeAndGo();
    void withoutABus_startFails();
    void watcher_reportsTheDaemonsSignals();
    void watcher_reportsTheDaemonsComingAndGoing();
    void watcher_callsAsAWidget();
    void watcher_reportsAnAbsentDaemon();

private:
    QDBusMessage ask(const QString &service, const QString &path, const QString &interface,
                     const QString &member, const QVariantList &arguments = {}) const;
    QDBusMessage askDaemon(const QString &member) const;
    void listen(const QString &path, const QString &interface, const QStringList &members);

    PrivateBus bus;
    std::unique_ptr<QDBusConnection> connection;
    std::unique_ptr<DaemonService> daemon;
    std::unique_ptr<WidgetManagerService> widgetManager;
    std::unique_ptr<SignalLog> log;
};

void TestDeviceServices::initTestCase()
{
    QVERIFY(bus.start());
}

void TestDeviceServices::init()
{
    connection = std::make_unique<QDBusConnection>(
        QDBusConnection::connectToBus(bus.address(), QStringLiteral("test")));
    QVERIFY(connection->isConnected());
    daemon = std::make_unique<DaemonService>(bus.address());
    widgetManager = std::make_unique<WidgetManagerService>(bus.address());
    log = std::make_unique<SignalLog>();
}

void TestDeviceServices::cleanup()
{
    log.reset();
    widgetManager.reset();
    daemon.reset();
    connection.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("test"));
}

QDBusMessage TestDeviceServices::ask(const QString &service, const QString &path, const QString &interface,
                                     const QString &member, const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, member);
    message.setArguments(arguments);
    return connection->call(message);
}

QDBusMessage TestDeviceServices::askDaemon(const QString &member) const
{
    return ask(QStringLiteral("vorlet.daemon"), QStringLiteral("/general"), general, member);
}

void TestDeviceServices::listen(const QString &path, const QString &interface, const QStringList &members)
{
    for (const QString &member : members) {
        QVERIFY(connection->connect(QString(), path, interface, member, log.get(), SLOT(take(QDBusMessage))));
    }
    // The bus answers in order: once it has answered this, the subscriptions are in force.
    QVERIFY(connection->interface()->isServiceRegistered(QStringLiteral("org.freedesktop.DBus")));
}

void TestDeviceServices::getters_answerTheState()
{
    daemon->setApiKeyQuietly(QStringLiteral("k"));
    daemon->setSerial(QStringLiteral("s1"));
    daemon->setRemoteId(QStringLiteral("d9"));
    QVERIFY(daemon->start());

    const QDBusMessage key = askDaemon(QStringLiteral("apiKey"));
    const QDBusMessage serial = askDaemon(QStringLiteral("serial"));
    const QDBusMessage remoteId = askDaemon(QStringLiteral("remoteId"));
    const QDBusMessage internet = ask(QStringLiteral("vorlet.daemon"), QStringLiteral("/com/vorlet/network"),
                                      network, QStringLiteral("isInternetAvailable"));

    QCOMPARE(key.arguments(), QVariantList{QStringLiteral("k")});
    QCOMPARE(serial.arguments(), QVariantList{QStringLiteral("s1")});
    QCOMPARE(remoteId.arguments(), QVariantList{QStringLiteral("d9")});
    QCOMPARE(internet.signature(), QStringLiteral("b"));
    QCOMPARE(internet.arguments(), QVariantList{true});
}

void TestDeviceServices::callFromTheOwnersThread_isAnsweredWhileItBlocks()
{
    QVERIFY(daemon->start());
    QElapsedTimer elapsed;
    elapsed.start();

    const QDBusMessage reply = askDaemon(QStringLiteral("apiKey"));

    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QVERIFY(elapsed.elapsed() < 5000);
}

void TestDeviceServices::daemonStart_claimsTheNameThenAnnouncesIt()
{
    listen(QStringLiteral("/general"), general, {QStringLiteral("daemonDidStart")});
    QVERIFY(!daemon->isRunning());

    QVERIFY(daemon->start());

    QVERIFY(daemon->isRunning());
    QTRY_COMPARE(log->seen.size(), 1);
    const QVariantList expected{QStringLiteral("/general"), general, QStringLiteral("daemonDidStart")};
    QCOMPARE(log->seen.at(0), expected);
    QVERIFY(connection->interface()->isServiceRegistered(QStringLiteral("vorlet.daemon")));
}

void TestDeviceServices::daemonStop_leavesNobodyToAnswer()
{
    QVERIFY(daemon->start());

    daemon->stop();

    QCOMPARE(askDaemon(QStringLiteral("apiKey")).errorName(),
             QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"));
}

void TestDeviceServices::daemonStartedAgain_answers()
{
    QVERIFY(daemon->start());
    daemon->stop();

    const bool isStarted = daemon->start();

    QVERIFY(isStarted);
    QCOMPARE(askDaemon(QStringLiteral("apiKey")).type(), QDBusMessage::ReplyMessage);
}

void TestDeviceServices::secondOwner_isRefused()
{
    QVERIFY(daemon->start());
    DaemonService second(bus.address());

    const bool isStarted = second.start();

    QVERIFY(!isStarted);
    QVERIFY(!second.isRunning());
    QVERIFY(second.errorText().contains(QStringLiteral("vorlet.daemon")));
}

void TestDeviceServices::secondOwner_isAcceptedWhenTheFirstHasGone()
{
    QVERIFY(daemon->start());
    DaemonService second(bus.address());
    QVERIFY(!second.start());
    daemon->stop();

    const bool isStarted = second.start();

    QVERIFY(isStarted);
    QCOMPARE(second.errorText(), QString());
}

void TestDeviceServices::setApiKey_isAnnounced()
{
    QVERIFY(daemon->start());
    listen(QStringLiteral("/general"), general, {QStringLiteral("apiKeyDidSet")});

    daemon->setApiKey(QStringLiteral("new"));

    QTRY_COMPARE(log->seen.size(), 1);
    const QVariantList expected{QStringLiteral("/general"), general, QStringLiteral("apiKeyDidSet"),
                                QStringLiteral("new")};
    QCOMPARE(log->seen.at(0), expected);
    QCOMPARE(askDaemon(QStringLiteral("apiKey")).arguments(), QVariantList{QStringLiteral("new")});
}

void TestDeviceServices::quietKey_isNotAnnounced()
{
    QVERIFY(daemon->start());
    listen(QStringLiteral("/general"), general, {QStringLiteral("apiKeyDidSet")});

    daemon->setApiKeyQuietly(QStringLiteral("quiet"));
    daemon->setApiKey(QStringLiteral("loud"));

    // The signals of one sender arrive in order, so that the second one shows that there was no first.
    QTRY_COMPARE(log->seen.size(), 1);
    QCOMPARE(log->seen.at(0).last().toString(), QStringLiteral("loud"));
}

void TestDeviceServices::internetChange_isAnnouncedOnce()
{
    QVERIFY(daemon->start());
    listen(QStringLiteral("/com/vorlet/network"), network, {QStringLiteral("internetAvailabilityChanged")});

    daemon->setInternetAvailable(true);
    daemon->setInternetAvailable(false);
    daemon->setInternetAvailable(false);
    daemon->setInternetAvailable(true);

    QTRY_COMPARE(log->seen.size(), 2);
    QCOMPARE(log->seen.at(0).last(), QVariant(false));
    QCOMPARE(log->seen.at(1).last(), QVariant(true));
}

void TestDeviceServices::failingMember_answersItsError()
{
    QVERIFY(daemon->start());
    daemon->failCallsOf(QStringLiteral("apiKey"), QStringLiteral("com.example.Broken"),
                        QStringLiteral("no key"));

    const QDBusMessage failed = askDaemon(QStringLiteral("apiKey"));
    const QDBusMessage another = askDaemon(QStringLiteral("serial"));
    daemon->answerCallsOf(QStringLiteral("apiKey"));
    const QDBusMessage answered = askDaemon(QStringLiteral("apiKey"));

    QCOMPARE(failed.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(failed.errorName(), QStringLiteral("com.example.Broken"));
    QCOMPARE(failed.errorMessage(), QStringLiteral("no key"));
    QCOMPARE(another.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(answered.type(), QDBusMessage::ReplyMessage);
}

void TestDeviceServices::calls_areCountedInOrder()
{
    QVERIFY(daemon->start());
    daemon->failCallsOf(QStringLiteral("serial"), QStringLiteral("com.example.Broken"), QString());
    QSignalSpy called(daemon.get(), &BusService::called);

    askDaemon(QStringLiteral("remoteId"));
    askDaemon(QStringLiteral("serial"));
    askDaemon(QStringLiteral("remoteId"));

    QCOMPARE(daemon->calls(),
             (QStringList{QStringLiteral("remoteId"), QStringLiteral("serial"), QStringLiteral("remoteId")}));
    QCOMPARE(daemon->callCount(QStringLiteral("remoteId")), 2);
    QCOMPARE(daemon->callCount(QStringLiteral("apiKey")), 0);
    QTRY_COMPARE(called.count(), 3);
    daemon->clearCalls();
    QCOMPARE(daemon->calls(), QStringList());
}

void TestDeviceServices::unknownMember_isRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("error");
    const auto path = QStringLiteral("/general");
    const auto unknownMethod = QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod");
    QTest::newRow("method") << path << general << QStringLiteral("apikey") << QVariantList() << unknownMethod;
    QTest::newRow("interface") << path << network << QStringLiteral("apiKey") << QVariantList()
                               << unknownMethod;
    QTest::newRow("argument") << path << general << QStringLiteral("apiKey")
                              << QVariantList{QStringLiteral("x")} << unknownMethod;
    QTest::newRow("path") << QStringLiteral("/other") << general << QStringLiteral("apiKey") << QVariantList()
                          << QStringLiteral("org.freedesktop.DBus.Error.UnknownObject");
}

void TestDeviceServices::unknownMember_isRefused()
{
    QFETCH(const QString, path);
    QFETCH(const QString, interface);
    QFETCH(const QString, member);
    QFETCH(const QVariantList, arguments);
    QFETCH(const QString, error);
    QVERIFY(daemon->start());

    const QDBusMessage reply = ask(QStringLiteral("vorlet.daemon"), path, interface, member, arguments);

    QCOMPARE(reply.errorName(), error);
    QCOMPARE(daemon->calls(), QStringList());
}

void TestDeviceServices::introspection_listsTheMembers()
{
    QVERIFY(widgetManager->start());

    const QString text =
        ask(QStringLiteral("widget.manager"), QStringLiteral("/"),
            QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"))
            .arguments()
            .value(0)
            .toString()
            .simplified();

    QVERIFY2(text.contains(QStringLiteral("<interface name=\"com.vorlet.widget_manager.general\">")),
             qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral(
                 "<method name=\"listOfInstalledWidgets\"> <arg type=\"as\" direction=\"out\"/> </method>")),
             qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral(
                 "<signal name=\"widgetDeleted\"> <arg type=\"s\"/> <arg type=\"s\"/> </signal>")),
             qPrintable(text));
}

void TestDeviceServices::widgetManagerStart_isAnnounced()
{
    listen(QStringLiteral("/"), widgetsInterface, {QStringLiteral("windowServerDidStarted")});

    QVERIFY(widgetManager->start());

    QTRY_COMPARE(log->seen.size(), 1);
    const QVariantList expected{QStringLiteral("/"), widgetsInterface,
                                QStringLiteral("windowServerDidStarted")};
    QCOMPARE(log->seen.at(0), expected);
}

void TestDeviceServices::widgets_comeAndGo()
{
    widgetManager->setWidgetsQuietly({QStringLiteral("w1")});
    QVERIFY(widgetManager->start());
    listen(QStringLiteral("/"), widgetsInterface,
           {QStringLiteral("newWidgetCreated"), QStringLiteral("widgetDeleted")});

    widgetManager->createWidget(QStringLiteral("w2"));
    const bool isDeleted = widgetManager->deleteWidget(QStringLiteral("w1"));
    const bool isDeletedAgain = widgetManager->deleteWidget(QStringLiteral("w1"));

    QVERIFY(isDeleted);
    QVERIFY(!isDeletedAgain);
    QTRY_COMPARE(log->seen.size(), 2);
    QCOMPARE(log->seen.at(0).mid(2, 1), QVariantList{QStringLiteral("newWidgetCreated")});
    QCOMPARE(log->seen.at(0).size(), 5);
    QVERIFY(!log->seen.at(0).at(3).toString().isEmpty());
    QCOMPARE(log->seen.at(0).last().toString(), QStringLiteral("w2"));
    QCOMPARE(log->seen.at(1).mid(2, 1), QVariantList{QStringLiteral("widgetDeleted")});
    QCOMPARE(log->seen.at(1).last().toString(), QStringLiteral("w1"));
    const QDBusMessage reply = ask(QStringLiteral("widget.manager"), QStringLiteral("/"), widgetsInterface,
                                   QStringLiteral("listOfInstalledWidgets"));
    QCOMPARE(reply.signature(), QStringLiteral("as"));
    QCOMPARE(reply.arguments().value(0).toStringList(), QStringList{QStringLiteral("w2")});
}

void TestDeviceServices::withoutABus_startFails()
{
    const auto nowhere = QStringLiteral("unix:path=/nonexistent/bus");
    DaemonService service(nowhere);
    DaemonWatcher watcher(nowhere);

    const bool isServiceStarted = service.start();
    const bool isWatcherStarted = watcher.start();

    QVERIFY(!isServiceStarted);
    QVERIFY(service.errorText().startsWith(QStringLiteral("cannot reach the bus")));
    QVERIFY(!isWatcherStarted);
}

void TestDeviceServices::watcher_reportsTheDaemonsSignals()
{
    DaemonWatcher watcher(bus.address());
    QVERIFY(watcher.start());
    QSignalSpy received(&watcher, &DaemonWatcher::received);
    FakeApplicationDaemon application;
    QVERIFY(
        connection->registerObject(QStringLiteral("/"), &application, QDBusConnection::ExportAllContents));

    Q_EMIT application.daemonDidStarted();
    Q_EMIT application.applicationRegistered(QStringLiteral("u"), QStringLiteral("a"), QStringLiteral("t"));
    Q_EMIT application.applicationDeleted(QStringLiteral("v"), QStringLiteral("b"), QString());

    QTRY_COMPARE(received.count(), 3);
    QCOMPARE(received.at(0), (QVariantList{QStringLiteral("daemonDidStarted"), QStringList()}));
    QCOMPARE(received.at(1),
             (QVariantList{QStringLiteral("applicationRegistered"),
                           QStringList{QStringLiteral("u"), QStringLiteral("a"), QStringLiteral("t")}}));
    QCOMPARE(received.at(2),
             (QVariantList{QStringLiteral("applicationDeleted"),
                           QStringList{QStringLiteral("v"), QStringLiteral("b"), QString()}}));
}

void TestDeviceServices::watcher_reportsTheDaemonsComingAndGoing()
{
    DaemonWatcher watcher(bus.address());
    QVERIFY(watcher.start());
    const QSignalSpy appeared(&watcher, &DaemonWatcher::daemonAppeared);
    const QSignalSpy vanished(&watcher, &DaemonWatcher::daemonVanished);
    QVERIFY(!watcher.isDaemonPresent());

    QVERIFY(connection->registerService(QStringLiteral("com.qwixtd")));
    const bool isPresent = watcher.isDaemonPresent();
    QTRY_COMPARE(appeared.count(), 1);
    QVERIFY(connection->unregisterService(QStringLiteral("com.qwixtd")));

    QVERIFY(isPresent);
    QTRY_COMPARE(vanished.count(), 1);
}

void TestDeviceServices::watcher_callsAsAWidget()
{
    FakeApplicationDaemon application;
    QVERIFY(connection->registerObject(QStringLiteral("/"), &application, QDBusConnection::ExportAllSlots));
    QVERIFY(connection->registerService(QStringLiteral("com.qwixtd")));
    DaemonWatcher watcher(bus.address());
    QVERIFY(watcher.start());
    const QSignalSpy answered(&watcher, &DaemonWatcher::answered);

    watcher.registerApplication(QStringLiteral("u"), QStringLiteral("n"), QStringLiteral("t"));
    watcher.updateApplication(QStringLiteral("a"), QStringLiteral("u"), QStringLiteral("n2"),
                              QStringLiteral("t"));
    watcher.deleteApplication(QStringLiteral("a"), QStringLiteral("u"), QString());

    QTRY_COMPARE(answered.count(), 3);
    const QList<QStringList> expected{
        {QStringLiteral("register"), QStringLiteral("u"), QStringLiteral("n"), QStringLiteral("t")},
        {QStringLiteral("update"), QStringLiteral("a"), QStringLiteral("u"), QStringLiteral("n2"),
         QStringLiteral("t")},
        {QStringLiteral("delete"), QStringLiteral("a"), QStringLiteral("u"), QString()}};
    QCOMPARE(application.requests, expected);
    QCOMPARE(answered.at(0).at(0).toString(), QStringLiteral("registerQwixtApplication"));
    QCOMPARE(answered.at(0).at(2).toString(), QString());
    QVERIFY(connection->unregisterService(QStringLiteral("com.qwixtd")));
}

void TestDeviceServices::watcher_reportsAnAbsentDaemon()
{
    DaemonWatcher watcher(bus.address());
    QVERIFY(watcher.start());
    QSignalSpy answered(&watcher, &DaemonWatcher::answered);

    watcher.registerApplication(QStringLiteral("u"), QStringLiteral("n"), QStringLiteral("t"));

    QTRY_COMPARE(answered.count(), 1);
    QVERIFY(answered.at(0).at(2).toString().startsWith(
        QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown")));
}

QTEST_GUILESS_MAIN(TestDeviceServices)
#include "tst_deviceservices.moc"
