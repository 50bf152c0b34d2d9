#include "platformcapture.h"
#include "serverhost.h"

#include <QFile>
#include <QtTest>

class TestServerHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_isAHostNameOrRefused_data();
    void text_isAHostNameOrRefused();
    void environment_isReadOnceAndRefusedWithAWarning();
};

void TestServerHost::text_isAHostNameOrRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isHost");
    // Each line "good" or "bad", then the host; the rule for the built-in server is asked about the same.
    QFile hosts(QStringLiteral(QWIXTD_SERVER_HOSTS));
    QVERIFY(hosts.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(hosts.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString host = line.section(QLatin1Char(' '), 1);
        if (!line.isEmpty()) {
            QTest::newRow(qPrintable(line)) << host << line.startsWith(QStringLiteral("good "));
        }
    }
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("space") << QStringLiteral("a b") << false;
    QTest::newRow("trailing space") << QStringLiteral("a ") << false;
    QTest::newRow("line feed") << QStringLiteral("a\nb") << false;
    QTest::newRow("escape") << QStringLiteral("a\x1b") << false;
    QTest::newRow("delete character") << QStringLiteral("a\x7f") << false;
}

void TestServerHost::text_isAHostNameOrRefused()
{
    QFETCH(QString, text);

    const bool isAccepted = isHostName(text);

    QTEST(isAccepted, "isHost");
}

void TestServerHost::environment_isReadOnceAndRefusedWithAWarning()
{
    qputenv("QWIXTD_SERVER_HOST", "user@evil.example");

    const QString builtIn = serverHost();
    qputenv("QWIXTD_SERVER_HOST", "later.example");
    const QString later = serverHost();

    QCOMPARE(PlatformCapture::texts(LogPriority::Warning),
             QList<QByteArray>{"QWIXTD: ignoring QWIXTD_SERVER_HOST: not a host name"});
    QVERIFY(isHostName(builtIn));
    QVERIFY(!builtIn.contains(QStringLiteral("evil")));
    QCOMPARE(later, builtIn);
    QCOMPARE(PlatformCapture::lines().size(), 1);
}

QTEST_GUILESS_MAIN(TestServerHost)
#include "tst_serverhost.moc"
