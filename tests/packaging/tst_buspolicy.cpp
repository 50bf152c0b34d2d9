#include "deviceunderpolicy.h"
#include "deviceundertest.h"

#include <QUuid>

#include <unistd.h>

/// Who may do what under the installed bus policy, on a bus that is otherwise configured as the system's.
class TestBusPolicy : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void policyInstalled_busTakesItWithoutAComplaint();
    void nameAskedFor_isGivenToTheDaemonsUserAlone_data();
    void nameAskedFor_isGivenToTheDaemonsUserAlone();
    void callOfTheDaemon_isCarriedOnlyToItsInterfaces_data();
    void callOfTheDaemon_isCarriedOnlyToItsInterfaces();
    void interfaceLeftOut_isRefused();
    void callOfTheDevice_isCarriedOnlyForWhatTheDaemonReads_data();
    void callOfTheDevice_isCarriedOnlyForWhatTheDaemonReads();
    void widgetRegisters_applicationIsRegisteredAndAnnounced();
    void signalForged_changesNothing_data();
    void signalForged_changesNothing();

private:
    std::unique_ptr<InstalledTree> installed;
    // For the tests of who may call whom, which leave nothing behind that changes another's answer.
    std::unique_ptr<DeviceUnderPolicy> shared;
};

namespace
{
using User = SystemBus::User;

const auto daemonName = "com.qwixtd"_text;

SystemBus::Answer askForName(const SystemBus &bus, User user, const QString &name)
{
    return bus.call(user, "org.freedesktop.DBus"_text,
                    {"org.freedesktop.DBus.RequestName"_text, "string:"_text + name, "uint32:4"_text});
}
} // namespace

void TestBusPolicy::initTestCase()
{
    if (::geteuid() != 0) {
        QSKIP("needs root: the bus knows its callers by their users, and only root can be several of them");
    }
    installed = std::make_unique<InstalledTree>();
    shared = std::make_unique<DeviceUnderPolicy>(*installed);
    QVERIFY(shared->start());
}

void TestBusPolicy::policyInstalled_busTakesItWithoutAComplaint()
{
    SystemBus bus;

    QVERIFY(bus.start(installed->busPolicies(), DeviceUnderPolicy::servicesRules));

    // Whoever gets an answer finds a bus that has read all of its configuration.
    QCOMPARE(askForName(bus, User::Widget, daemonName).isRefused(), true);
    QCOMPARE(bus.complaints(), QList<QByteArray>());
}

void TestBusPolicy::nameAskedFor_isGivenToTheDaemonsUserAlone_data()
{
    QTest::addColumn<uint>("user");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isGiven");

    QTest::newRow("the daemon's user") << uint(User::Qwixtd) << daemonName << true;
    QTest::newRow("a widget's user") << uint(User::Widget) << daemonName << false;
    QTest::newRow("an intruder") << uint(User::Intruder) << daemonName << false;
    QTest::newRow("root") << uint(User::Root) << daemonName << false;
    QTest::newRow("the daemon's user, a name below") << uint(User::Qwixtd) << "com.qwixtd.more"_text << false;
    QTest::newRow("the daemon's user, a service's") << uint(User::Qwixtd) << "vorlet.daemon"_text << false;
    QTest::newRow("an intruder, a service's") << uint(User::Intruder) << "widget.manager"_text << false;
}

void TestBusPolicy::nameAskedFor_isGivenToTheDaemonsUserAlone()
{
    QFETCH(uint, user);
    QFETCH(QString, name);
    QFETCH(bool, isGiven);
    SystemBus bus;
    QVERIFY(bus.start(installed->busPolicies(), DeviceUnderPolicy::servicesRules));

    const SystemBus::Answer answer = askForName(bus, User(user), name);

    QVERIFY2(answer.isRefused() == !isGiven, answer.text.constData());
    QVERIFY2(answer.text.contains("uint32 1") == isGiven, answer.text.constData());
}

void TestBusPolicy::callOfTheDaemon_isCarriedOnlyToItsInterfaces_data()
{
    QTest::addColumn<uint>("user");
    QTest::addColumn<QStringList>("call");
    QTest::addColumn<bool>("isCarried");

    const QStringList registration = {"com.vorlet.qwixtd.registerQwixtApplication"_text, "string:u2"_text,
                                      "string:Radio"_text, "string:t"_text};
    const QString properties = "org.freedesktop.DBus.Properties."_text;
    QTest::newRow("register") << uint(User::Widget) << registration << true;
    QTest::newRow("register, another user") << uint(User::Intruder) << registration << true;
    QTest::newRow("register, the daemon's user") << uint(User::Qwixtd) << registration << true;
    QTest::newRow("update") << uint(User::Widget)
                            << QStringList{"com.vorlet.qwixtd.updateQwixtApplication"_text, "string:a1"_text,
                                           "string:u1"_text, "string:Watch"_text, "string:t"_text}
                            << true;
    QTest::newRow("delete") << uint(User::Widget)
                            << QStringList{"com.vorlet.qwixtd.deleteQwixtApplication"_text, "string:a1"_text,
                                           "string:u1"_text, "string:t"_text}
                            << true;
    QTest::newRow("introspect") << uint(User::Widget)
                                << QStringList{"org.freedesktop.DBus.Introspectable.Introspect"_text} << true;
    QTest::newRow("ping") << uint(User::Widget) << QStringList{"org.freedesktop.DBus.Peer.Ping"_text} << true;
    for (const User user : {User::Widget, User::Root, User::Qwixtd}) {
        const QByteArray suffix = ", user " + QByteArray::number(user);
        QTest::newRow("get" + suffix)
            << uint(user)
            << QStringList{properties + "Get"_text, "string:com.vorlet.qwixtd"_text, "string:x"_text}
            << false;
        QTest::newRow("get all" + suffix)
            << uint(user) << QStringList{properties + "GetAll"_text, "string:com.vorlet.qwixtd"_text}
            << false;
        QTest::newRow("set" + suffix) << uint(user)
                                      << QStringList{properties + "Set"_text, "string:com.vorlet.qwixtd"_text,
                                                     "string:x"_text, "variant:string:y"_text}
                                      << false;
    }
    QTest::newRow("another interface")
        << uint(User::Widget) << QStringList{"com.vorlet.qwixtd2.registerQwixtApplication"_text} << false;
    QTest::newRow("object manager")
        << uint(User::Widget) << QStringList{"org.freedesktop.DBus.ObjectManager.GetManagedObjects"_text}
        << false;
}

void TestBusPolicy::callOfTheDaemon_isCarriedOnlyToItsInterfaces()
{
    QFETCH(uint, user);
    QFETCH(QStringList, call);
    QFETCH(bool, isCarried);

    const SystemBus::Answer answer = shared->bus().call(User(user), daemonName, call);

    QVERIFY2(answer.isRefused() == !isCarried, answer.text.constData());
    QVERIFY2((answer.status == 0) == isCarried, answer.text.constData());
}

// The bus knows the interface of a call only by what the call says.
void TestBusPolicy::interfaceLeftOut_isRefused()
{
    const QString name = QUuid::createUuid().toString();
    QDBusMessage call =
        QDBusMessage::createMethodCall(daemonName, "/"_text, QString(), "registerQwixtApplication"_text);
    call.setArguments({"u2"_text, "Radio"_text, "t"_text});

    const QDBusMessage answer = QDBusConnection::connectToBus(shared->bus().address(), name)
                                    .call(call, QDBus::Block, DeviceUnderTest::patienceMs);

    QDBusConnection::disconnectFromBus(name);
    QCOMPARE(answer.errorName(), "org.freedesktop.DBus.Error.AccessDenied"_text);
}

void TestBusPolicy::callOfTheDevice_isCarriedOnlyForWhatTheDaemonReads_data()
{
    QTest::addColumn<uint>("user");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("member");
    QTest::addColumn<bool>("isCarried");

    const QString daemon = "vorlet.daemon"_text;
    const QString manager = "widget.manager"_text;
    const QString general = "com.vorlet.daemon.general."_text;
    const QString network = "com.vorlet.daemon.network."_text;
    const QString widgets = "com.vorlet.widget_manager.general."_text;
    QTest::newRow("key") << uint(User::Qwixtd) << daemon << "/general"_text << general + "apiKey"_text
                         << true;
    QTest::newRow("key, a widget") << uint(User::Widget) << daemon << "/general"_text
                                   << general + "apiKey"_text << false;
    QTest::newRow("serial") << uint(User::Qwixtd) << daemon << "/general"_text << general + "serial"_text
                            << true;
    QTest::newRow("remote id") << uint(User::Qwixtd) << daemon << "/general"_text << general + "remoteId"_text
                               << true;
    QTest::newRow("set the key") << uint(User::Qwixtd) << daemon << "/general"_text
                                 << general + "setApiKey"_text << false;
    QTest::newRow("internet") << uint(User::Qwixtd) << daemon << "/com/vorlet/network"_text
                              << network + "isInternetAvailable"_text << true;
    QTest::newRow("another of the network") << uint(User::Qwixtd) << daemon << "/com/vorlet/network"_text
                                            << network + "clearSettings"_text << false;
    QTest::newRow("widgets") << uint(User::Qwixtd) << manager << "/"_text
                             << widgets + "listOfInstalledWidgets"_text << true;
    QTest::newRow("another of the widgets")
        << uint(User::Qwixtd) << manager << "/"_text << widgets + "removeWidget"_text << false;
}

void TestBusPolicy::callOfTheDevice_isCarriedOnlyForWhatTheDaemonReads()
{
    QFETCH(uint, user);
    QFETCH(QString, destination);
    QFETCH(QString, path);
    QFETCH(QString, member);
    QFETCH(bool, isCarried);

    const SystemBus::Answer answer =
        shared->bus().send(User(user), {"--print-reply"_text, "--dest="_text + destination, path, member});

    QVERIFY2(answer.isRefused() == !isCarried, answer.text.constData());
    QVERIFY2((answer.status == 0) == isCarried, answer.text.constData());
}

void TestBusPolicy::widgetRegisters_applicationIsRegisteredAndAnnounced()
{
    DeviceUnderPolicy device(*installed);
    QVERIFY(device.start());
    QCOMPARE(device.program().statusField("Uid").split('\t').constFirst(), QByteArray::number(User::Qwixtd));

    const SystemBus::Answer answer = device.registerSecondWidget(User::Widget);

    QVERIFY2(answer.status == 0, answer.text.constData());
    EVENTUALLY(device.announced().contains("applicationRegistered u2 app-1 t"_text));
    QCOMPARE(device.requests(), QByteArray("GET \nPOST id=d9&identifier=u2&name=Radio&type=t\n"));
    QCOMPARE(device.bus().complaints(), QList<QByteArray>());
}

void TestBusPolicy::signalForged_changesNothing_data()
{
    QTest::addColumn<bool>("isForTheDaemonAlone");
    QTest::addColumn<QStringList>("forgery");

    const QList<QPair<QByteArray, QStringList>> forgeries = {
        {"key",
         {"/general"_text, "com.vorlet.daemon.general.apiKeyDidSet"_text, "string:the-intruders"_text}},
        {"start", {"/general"_text, "com.vorlet.daemon.general.daemonDidStart"_text}},
        {"no internet",
         {"/com/vorlet/network"_text, "com.vorlet.daemon.network.internetAvailabilityChanged"_text,
          "boolean:false"_text}},
        {"widget deleted",
         {"/"_text, "com.vorlet.widget_manager.general.widgetDeleted"_text, "string:p"_text,
          "string:u1"_text}},
        {"widgets start", {"/"_text, "com.vorlet.widget_manager.general.windowServerDidStarted"_text}},
        {"name taken over",
         {"/org/freedesktop/DBus"_text, "org.freedesktop.DBus.NameOwnerChanged"_text,
          "string:vorlet.daemon"_text, "string::1.1"_text, "string:"_text}},
        {"bus lost", {"/org/freedesktop/DBus/Local"_text, "org.freedesktop.DBus.Local.Disconnected"_text}},
    };
    for (const auto &[name, forgery] : forgeries) {
        QTest::newRow("to all: " + name) << false << forgery;
        QTest::newRow("to the daemon: " + name) << true << forgery;
    }
}

void TestBusPolicy::signalForged_changesNothing()
{
    QFETCH(bool, isForTheDaemonAlone);
    QFETCH(QStringList, forgery);
    DeviceUnderPolicy device(*installed);
    QVERIFY(device.start());
    const QStringList reads =
        device.simulator().daemon().calls() + device.simulator().widgetManager().calls();
    const QStringList receiver =
        isForTheDaemonAlone ? QStringList{"--dest="_text + daemonName} : QStringList();

    device.bus().send(User::Intruder, QStringList{"--type=signal"_text} + receiver + forgery);
    // A call that the bus takes later; the daemon has seen the signal when it answers.
    const SystemBus::Answer answer = device.registerSecondWidget(User::Intruder);

    QVERIFY2(answer.status == 0, answer.text.constData());
    EVENTUALLY(device.announced().contains("applicationRegistered u2 app-1 t"_text));
    const QList<HttpRequest> requests = device.simulator().server().requests();
    QCOMPARE(device.requests(), QByteArray("GET \nPOST id=d9&identifier=u2&name=Radio&type=t\n"));
    QCOMPARE(requests.at(1).header("Authorization"), requests.at(0).header("Authorization"));
    QCOMPARE(device.simulator().daemon().calls() + device.simulator().widgetManager().calls(), reads);
    // The device's own signals still arrive: nothing has come between them and the daemon.
    QVERIFY(device.simulator().widgetManager().deleteWidget("u1"_text));
    EVENTUALLY(device.announced().contains("applicationDeleted u1 a1 "_text));
    device.simulator().setApiKey("next"_text);
    EVENTUALLY(device.simulator().daemon().callCount("remoteId"_text) == reads.count("remoteId"_text) + 1);
}

QTEST_GUILESS_MAIN(TestBusPolicy)
#include "tst_buspolicy.moc"
