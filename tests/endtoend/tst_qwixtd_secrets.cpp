#include "connectproxy.h"
#include "deviceundertest.h"

/// The API key is nobody's business but the server's: no output shows it, in any form, whatever fails.
class TestSecrets : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everythingSucceeds_keyIsNotWritten_data();
    void everythingSucceeds_keyIsNotWritten();
    void everythingFails_keyIsNotWritten_data();
    void everythingFails_keyIsNotWritten();
    void hostDoesNotResolve_keyIsNotWritten_data();
    void hostDoesNotResolve_keyIsNotWritten();
    void proxyOfTheEnvironment_seesConnectAndNeverTheKey_data();
    void proxyOfTheEnvironment_seesConnectAndNeverTheKey();
    void keyInTheProcess_isNotToBeSeenFromOutside_data();
    void keyInTheProcess_isNotToBeSeenFromOutside();
};

namespace
{
using Build = DeviceUnderTest::Build;

// The key, what is sent in its place, and that without its padding.
const QList<QByteArray> secrets = {"k3y-0f/th3+dev1ce", "OmszeS0wZi90aDMrZGV2MWNl", "Basic ",
                                   "azN5LTBmL3RoMytkZXYxY2U"};
const QByteArray secondKey = "s3cond-k3y";
const QList<QByteArray> secondSecrets = {secondKey, "OnMzY29uZC1rM3k=", "OnMzY29uZC1rM3k"};

void addBuilds()
{
    QTest::addColumn<Build>("build");
    QTest::newRow("as shipped") << DeviceUnderTest::Shipped;
    QTest::newRow("with debug lines") << DeviceUnderTest::WithDebugLines;
}

QByteArray secretIn(const QByteArray &output)
{
    for (const QByteArray &secret : secrets + secondSecrets) {
        if (output.contains(secret)) {
            return secret + " in:\n" + output;
        }
    }
    return {};
}

// The debug lines show the header with its value hidden; the shipped program shows neither.
bool showsTheHeaderHidden(DeviceUnderTest &device, Build build)
{
    const bool isShown = device.program().output().contains("Authorization");
    return build == DeviceUnderTest::Shipped ? !isShown : device.hasLine("header Authorization : ***");
}
} // namespace

Q_DECLARE_METATYPE(Build)

void TestSecrets::everythingSucceeds_keyIsNotWritten_data()
{
    addBuilds();
}

void TestSecrets::everythingSucceeds_keyIsNotWritten()
{
    QFETCH(Build, build);
    DeviceUnderTest device(build);
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());

    QVERIFY(device.registerApplication("u2"_text, "Radio"_text, "t"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    EVENTUALLY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application updated"));
    QVERIFY(device.setApiKey(QString::fromLatin1(secondKey)));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced().size(), 3);
    EVENTUALLY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application deleted"));
    QCOMPARE(secretIn(device.program().output()), QByteArray());
    QVERIFY(showsTheHeaderHidden(device, build));
}

void TestSecrets::everythingFails_keyIsNotWritten_data()
{
    addBuilds();
}

void TestSecrets::everythingFails_keyIsNotWritten()
{
    QFETCH(Build, build);
    DeviceUnderTest device(build);
    device.server().addApplication(listedApplication("a1"_text, "u1"_text));
    QVERIFY(device.startAll());

    // The server refuses the second key with 401, then fails in the other ways, then is not there.
    QVERIFY(device.setApiKey(QString::fromLatin1(secondKey)));
    device.server().setApiKey("another"_text);
    QVERIFY(device.registerApplication("u2"_text, "refused"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('W').size(), 1);
    device.server().failNext(1, ServerFault::withStatus(503));
    QVERIFY(device.registerApplication("u2"_text, "busy"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('W').size(), 2);
    device.server().failNext(1, ServerFault::withClosedConnection());
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "closed"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('E').size(), 1);
    device.server().failNext(1, ServerFault::withStatus(400));
    QVERIFY(device.deleteApplication("a1"_text, "u1"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('W').size(), 3);
    device.server().stop();
    QVERIFY(device.registerApplication("u3"_text, "nobody there"_text, "t"_text));
    EVENTUALLY_EQUAL(device.lines('E').size(), 2);

    QCOMPARE(secretIn(device.program().output()), QByteArray());
    QVERIFY(showsTheHeaderHidden(device, build));
}

void TestSecrets::hostDoesNotResolve_keyIsNotWritten_data()
{
    addBuilds();
}

void TestSecrets::hostDoesNotResolve_keyIsNotWritten()
{
    QFETCH(Build, build);
    DeviceUnderTest device(build);
    device.useServer("no-such-host.invalid"_text);

    QVERIFY(device.startServices() && device.startProgram());

    EVENTUALLY_EQUAL(device.lines('E'),
                     QList<QByteArray>{"FetchTask: [Error] 6 https://no-such-host.invalid/api/v1/qwixt/apps" +
                                       curlsWords(CURLE_COULDNT_RESOLVE_HOST)});
    QCOMPARE(secretIn(device.program().output()), QByteArray());
    QVERIFY(showsTheHeaderHidden(device, build));
}

void TestSecrets::proxyOfTheEnvironment_seesConnectAndNeverTheKey_data()
{
    QTest::addColumn<QString>("variable");

    QTest::newRow("small letters") << "https_proxy"_text;
    QTest::newRow("capital letters") << "HTTPS_PROXY"_text;
    QTest::newRow("for all") << "ALL_PROXY"_text;
}

void TestSecrets::proxyOfTheEnvironment_seesConnectAndNeverTheKey()
{
    QFETCH(QString, variable);
    const ConnectProxy proxy;
    DeviceUnderTest device;
    device.program().setEnvironment(variable, proxy.url());

    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY(device.announced().contains("applicationRegistered(u1, app-1, t)"_text));
    // The server got the key, and the proxy passed it on without being able to read it.
    QVERIFY(device.server().requests().constLast().header("Authorization").startsWith("Basic "));
    QCOMPARE(proxy.received().count("CONNECT " + device.server().host().toLatin1() + " HTTP/1.1\r\n"), 2);
    QVERIFY(!proxy.received().toLower().contains("authorization"));
    QCOMPARE(secretIn(proxy.received()), QByteArray());
}

void TestSecrets::keyInTheProcess_isNotToBeSeenFromOutside_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("command line") << "cmdline"_text;
    QTest::newRow("environment") << "environ"_text;
}

void TestSecrets::keyInTheProcess_isNotToBeSeenFromOutside()
{
    QFETCH(QString, name);
    DeviceUnderTest device;
    QVERIFY(device.startAll());

    QFile file(QStringLiteral("/proc/%1/%2").arg(device.program().processId()).arg(name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();

    QVERIFY(!content.isEmpty());
    QCOMPARE(secretIn(content), QByteArray());
}

QTEST_GUILESS_MAIN(TestSecrets)
#include "tst_qwixtd_secrets.moc"
