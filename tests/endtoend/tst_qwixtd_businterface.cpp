#include "deviceundertest.h"

#include <QXmlStreamReader>

/// Keeps the name and the signature of each signal that it receives.
class SignalReceiver : public QObject
{
    Q_OBJECT
public:
    QStringList notes;

public Q_SLOTS:
    void note(const QDBusMessage &message)
    {
        notes.append(message.member() + QLatin1Char(' ') + message.signature());
    }
};

/// The daemon's interface on the bus as its callers see it.
class TestBusInterface : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void introspection_listsTheMembersAsPublished();
    void wrongCall_isRefusedByTheBusLibrary_data();
    void wrongCall_isRefusedByTheBusLibrary();
    void interfaceLeftOut_isTheDaemons();
    void allEmpty_isAnsweredAndSent();
    void signalsCome_fromTheDaemonsOwnName();
    void manyCalls_areAllTakenInOrder();
    void anyCaller_mayDeleteWhatAnotherRegistered();
};

namespace
{
const auto daemonInterface = "com.vorlet.qwixtd"_text;

// One line a member: "method name(argument:type)", arguments in order, those that come back marked.
QStringList membersOf(const QString &xml, const QString &interface)
{
    QStringList members;
    QXmlStreamReader reader(xml);
    bool isInside = false;
    QString member;
    QStringList arguments;
    while (!reader.atEnd()) {
        reader.readNext();
        const QString element = reader.name().toString();
        const auto attribute = [&reader](const QString &name) {
            return reader.attributes().value(name).toString();
        };
        const bool isMember = element == "method"_text || element == "signal"_text;
        if (element == "interface"_text) {
            isInside = reader.isStartElement() && attribute("name"_text) == interface;
        } else if (isInside && isMember && reader.isStartElement()) {
            member = element + " "_text + attribute("name"_text);
            arguments.clear();
        } else if (isInside && isMember && reader.isEndElement()) {
            members.append(QStringLiteral("%1(%2)").arg(member, arguments.join(", "_text)));
        } else if (isInside && element == "arg"_text && reader.isStartElement()) {
            const bool comesBack =
                member.startsWith("method"_text) && attribute("direction"_text) == "out"_text;
            arguments.append(QStringLiteral("%1%2:%3").arg(comesBack ? "<- "_text : QString(),
                                                           attribute("name"_text), attribute("type"_text)));
        }
    }
    return members;
}
} // namespace

void TestBusInterface::introspection_listsTheMembersAsPublished()
{
    DeviceUnderTest device;
    QVERIFY(device.startProgram());

    const QDBusMessage reply = device.call("org.freedesktop.DBus.Introspectable"_text, "Introspect"_text, {});

    QStringList members = membersOf(reply.arguments().value(0).toString(), daemonInterface);
    members.sort();
    QCOMPARE(members, QStringList({"method deleteQwixtApplication(qwixtId:s, uuid:s, type:s)"_text,
                                   "method registerQwixtApplication(uuid:s, name:s, type:s)"_text,
                                   "method updateQwixtApplication(qwixtId:s, uuid:s, name:s, type:s)"_text,
                                   "signal applicationDeleted(uuid:s, qwixtid:s, type:s)"_text,
                                   "signal applicationRegistered(uuid:s, qwixId:s, type:s)"_text,
                                   "signal daemonDidStarted()"_text}));
}

void TestBusInterface::wrongCall_isRefusedByTheBusLibrary_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("error");

    const auto unknownMethod = "org.freedesktop.DBus.Error.UnknownMethod"_text;
    const auto unknownInterface = "org.freedesktop.DBus.Error.UnknownInterface"_text;
    const auto registerMember = "registerQwixtApplication"_text;
    const QVariantList threeTexts = {"u1"_text, "Clock"_text, "t"_text};
    QTest::newRow("too few") << daemonInterface << registerMember << threeTexts.mid(1) << unknownMethod;
    QTest::newRow("too many for a registration")
        << daemonInterface << registerMember << threeTexts + QVariantList{"more"_text, 1} << unknownMethod;
    QTest::newRow("none") << daemonInterface << "deleteQwixtApplication"_text << QVariantList()
                          << unknownMethod;
    QTest::newRow("number for text") << daemonInterface << registerMember
                                     << QVariantList{"u1"_text, 7, "t"_text} << unknownMethod;
    QTest::newRow("three for an update")
        << daemonInterface << "updateQwixtApplication"_text << threeTexts << unknownMethod;
    QTest::newRow("unknown method") << daemonInterface << "listQwixtApplications"_text << QVariantList()
                                    << unknownMethod;
    QTest::newRow("manager's method") << daemonInterface << "start"_text << QVariantList() << unknownMethod;
    QTest::newRow("other interface") << "com.vorlet.other"_text << registerMember << threeTexts
                                     << unknownInterface;
}

void TestBusInterface::wrongCall_isRefusedByTheBusLibrary()
{
    QFETCH(QString, interface);
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    QFETCH(QString, error);
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    const QDBusMessage reply = device.call(interface, member, arguments);

    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(reply.errorName(), error);
    QCOMPARE(device.lines(), QList<QByteArray>());
    // The next request is the next proper one's.
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.requested(), QStringList({"GET"_text, "DELETE app_id=a1&type=t"_text}));
}

void TestBusInterface::interfaceLeftOut_isTheDaemons()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    const QDBusMessage reply =
        device.call(QString(), "registerQwixtApplication"_text, {"u1"_text, "Clock"_text, "t"_text});

    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    EVENTUALLY(device.announced().contains("applicationRegistered(u1, app-1, t)"_text));
}

void TestBusInterface::allEmpty_isAnsweredAndSent()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication(""_text, ""_text, ""_text));

    EVENTUALLY(device.announced().contains("applicationRegistered(, app-1, )"_text));
    QCOMPARE(device.requested(), QStringList({"GET"_text, "POST id=d9&identifier=&name=&type="_text}));
}

void TestBusInterface::signalsCome_fromTheDaemonsOwnName()
{
    DeviceUnderTest device;
    SignalReceiver receiver;
    QDBusConnection connection = device.connection();
    const QStringList members = {"daemonDidStarted"_text, "applicationRegistered"_text,
                                 "applicationDeleted"_text};
    for (const QString &member : members) {
        QVERIFY(connection.connect("com.qwixtd"_text, "/"_text, daemonInterface, member, &receiver,
                                   SLOT(note(QDBusMessage))));
    }

    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    QVERIFY(device.deleteApplication("app-1"_text, "u1"_text, "t"_text));

    EVENTUALLY_EQUAL(receiver.notes, QStringList({"daemonDidStarted "_text, "applicationRegistered sss"_text,
                                                  "applicationDeleted sss"_text}));
}

void TestBusInterface::manyCalls_areAllTakenInOrder()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    QStringList expected = {"GET"_text};

    for (int i = 0; i < 50; ++i) {
        const QString uuid = QStringLiteral("w%1").arg(i);
        device.watcher().registerApplication(uuid, "Name"_text, "t"_text);
        expected.append(QStringLiteral("POST id=d9&identifier=%1&name=Name&type=t").arg(uuid));
    }

    EVENTUALLY_EQUAL(device.announced().size(), 51);
    QCOMPARE(device.requested(), expected);
    QCOMPARE(device.server().maximumConcurrent(), 1);
}

void TestBusInterface::anyCaller_mayDeleteWhatAnotherRegistered()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text}));
    QDBusConnection stranger = QDBusConnection::connectToBus(device.bus().address(), "stranger"_text);
    QVERIFY(stranger.baseService() != device.connection().baseService());
    QDBusMessage deletion = QDBusMessage::createMethodCall("com.qwixtd"_text, "/"_text, daemonInterface,
                                                           "deleteQwixtApplication"_text);
    deletion.setArguments({"app-1"_text, "u1"_text, "t"_text});

    const QDBusMessage reply = stranger.call(deletion, QDBus::Block, DeviceUnderTest::patienceMs);
    QDBusConnection::disconnectFromBus("stranger"_text);

    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    EVENTUALLY(device.announced().contains("applicationDeleted(u1, app-1, t)"_text));
}

QTEST_GUILESS_MAIN(TestBusInterface)
#include "tst_qwixtd_businterface.moc"
