#include "deviceundertest.h"
#include "shellprelude.h"

/// The server's host as the environment sets it.
class TestServerHost : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void goodHost_isUsed_data();
    void goodHost_isUsed();
    void badHost_isIgnoredWithAWarning_data();
    void badHost_isIgnoredWithAWarning();
    void emptyOrUnset_meansTheBuiltInHost_data();
    void emptyOrUnset_meansTheBuiltInHost();
    void builtInHost_doesNotResolveHere();
    void hostNameOfTheCertificate_isReached();
};

namespace
{
const QByteArray warning = "W/QWIXTD: QWIXTD: ignoring QWIXTD_SERVER_HOST: not a host name";

QByteArray requestTo(const QByteArray &host)
{
    return "D/QWIXTD: FetchTask: Making request to https://" + host + "/api/v1/qwixt/apps";
}

QByteArray requestToBuiltInHost()
{
    return requestTo(QWIXTD_SERVER_HOST);
}
} // namespace

void TestServerHost::goodHost_isUsed_data()
{
    QTest::addColumn<QString>("host");

    QTest::newRow("without a port") << "localhost"_text;
    QTest::newRow("with a port") << "localhost:1"_text;
    QTest::newRow("address") << "127.0.0.1:1"_text;
    QTest::newRow("address of version 6") << "[::1]:1"_text;
    QTest::newRow("dot at the end") << "localhost.:1"_text;
}

void TestServerHost::goodHost_isUsed()
{
    QFETCH(QString, host);
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    device.useServer(host);

    QVERIFY(device.startServices() && device.startProgram());

    EVENTUALLY(device.hasLine(requestTo(host.toLatin1())));
    QVERIFY(!device.hasLine(warning));
}

void TestServerHost::badHost_isIgnoredWithAWarning_data()
{
    QTest::addColumn<QString>("host");

    QTest::newRow("space alone") << " "_text;
    QTest::newRow("space inside") << "local host"_text;
    QTest::newRow("space at the end") << "localhost "_text;
    QTest::newRow("line feed") << "localhost\n"_text;
    QTest::newRow("tab") << "local\thost"_text;
    QTest::newRow("escape") << "local\x1bhost"_text;
    QTest::newRow("delete") << "local\x7fhost"_text;
    QTest::newRow("slash") << "localhost/path"_text;
    QTest::newRow("scheme") << "https://localhost"_text;
    QTest::newRow("user") << "user@localhost"_text;
    QTest::newRow("query") << "localhost?query"_text;
    QTest::newRow("fragment") << "localhost#part"_text;
    QTest::newRow("port alone") << ":443"_text;
    QTest::newRow("port 0") << "localhost:0"_text;
    QTest::newRow("port beyond the last") << "localhost:99999"_text;
    QTest::newRow("port that is a word") << "localhost:https"_text;
    QTest::newRow("address of three numbers") << "127.0.1"_text;
    QTest::newRow("address as one number") << "0x7f000001"_text;
    QTest::newRow("percent escape") << "%6cocalhost"_text;
    QTest::newRow("open bracket") << "[::1"_text;
}

void TestServerHost::badHost_isIgnoredWithAWarning()
{
    QFETCH(QString, host);
    DeviceUnderTest device(DeviceUnderTest::WithDebugLines);
    device.useServer(host);

    QVERIFY(device.startServices() && device.startProgram());

    EVENTUALLY(device.hasLine(requestToBuiltInHost()));
    QCOMPARE(device.lines().count(warning), 1);
}

void TestServerHost::emptyOrUnset_meansTheBuiltInHost_data()
{
    QTest::addColumn<QByteArray>("setting");

    QTest::newRow("unset") << QByteArray("unset QWIXTD_SERVER_HOST");
    QTest::newRow("empty") << QByteArray("export QWIXTD_SERVER_HOST=");
}

void TestServerHost::emptyOrUnset_meansTheBuiltInHost()
{
    QFETCH(QByteArray, setting);
    const ShellPrelude prelude(QStringLiteral(QWIXTD_DEBUGLOG_PROGRAM), setting);
    DeviceUnderTest device(prelude.path());

    QVERIFY(device.startServices() && device.startProgram());

    EVENTUALLY(device.hasLine(requestToBuiltInHost()));
    QVERIFY(!device.hasLine(warning));
}

void TestServerHost::builtInHost_doesNotResolveHere()
{
    DeviceUnderTest device;
    device.useServer(" "_text);

    QVERIFY(device.startServices() && device.startProgram());

    EVENTUALLY_EQUAL(device.lines(),
                     QList<QByteArray>({warning, "E/QWIXTD: FetchTask: [Error] 6 https://" QWIXTD_SERVER_HOST
                                                 "/api/v1/qwixt/apps" +
                                                     curlsWords(CURLE_COULDNT_RESOLVE_HOST)}));
}

void TestServerHost::hostNameOfTheCertificate_isReached()
{
    DeviceUnderTest device;
    device.useServer(QStringLiteral("localhost:%1").arg(device.server().port()));

    QVERIFY(device.startAll());

    QCOMPARE(device.server().requests().at(0).header("Host"),
             "localhost:" + QByteArray::number(device.server().port()));
}

QTEST_GUILESS_MAIN(TestServerHost)
#include "tst_qwixtd_serverhost.moc"
