#include "platformcapture.h"
#include "serverhost.h"

#include <QtTest>

class TestServerHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostName_data();
    void hostName();
    void environment_isReadOnceAndRefusedWithAWarning();
};

void TestServerHost::hostName_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isHost");
    QTest::newRow("name") << QStringLiteral("developer.vorlet.example") << true;
    QTest::newRow("name and port") << QStringLiteral("localhost:8443") << true;
    QTest::newRow("address") << QStringLiteral("127.0.0.1:1") << true;
    QTest::newRow("IPv6 address") << QStringLiteral("[::1]:8443") << true;
    QTest::newRow("underscore") << QStringLiteral("build_host.example") << true;
    QTest::newRow("port out of range") << QStringLiteral("a:99999") << false;
    QTest::newRow("port that is no number") << QStringLiteral("a:b") << false;
    QTest::newRow("open bracket") << QStringLiteral("[::1") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("blank") << QStringLiteral("a b") << false;
    QTest::newRow("trailing blank") << QStringLiteral("a ") << false;
    QTest::newRow("line feed") << QStringLiteral("a\nb") << false;
    QTest::newRow("escape") << QStringLiteral("a\x1b") << false;
    QTest::newRow("delete character") << QStringLiteral("a\x7f") << false;
    QTest::newRow("slash") << QStringLiteral("a/b") << false;
    QTest::newRow("at") << QStringLiteral("user@a") << false;
    QTest::newRow("question mark") << QStringLiteral("a?b") << false;
    QTest::newRow("hash") << QStringLiteral("a#b") << false;
}

void TestServerHost::hostName()
{
    QFETCH(QString, text);
    QTEST(isHostName(text), "isHost");
}

void TestServerHost::environment_isReadOnceAndRefusedWithAWarning()
{
    qputenv("QWIXTD_SERVER_HOST", "user@evil.example");
    const QString builtIn = serverHost();
    QCOMPARE(PlatformCapture::texts(5),
             QList<QByteArray>{"QWIXTD: ignoring QWIXTD_SERVER_HOST: not a host name"});
    QVERIFY(isHostName(builtIn));
    QVERIFY(!builtIn.contains(QStringLiteral("evil")));

    qputenv("QWIXTD_SERVER_HOST", "later.example");
    QCOMPARE(serverHost(), builtIn);
    QCOMPARE(PlatformCapture::lines().size(), 1);
}

QTEST_GUILESS_MAIN(TestServerHost)
#include "tst_serverhost.moc"
