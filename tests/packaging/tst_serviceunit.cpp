#include "buildundertest.h"
#include "certificates.h"
#include "deviceundertest.h"
#include "installedtree.h"
#include "serviceunit.h"
#include "unitsandbox.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

/// The installed service unit: what the service manager thinks of it, and the daemon at work under its
/// restrictions, as far as bubblewrap can set them.
class TestServiceUnit : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void serviceManager_hasNothingToSayOfIt();
    void exposure_isSmall();
    void setting_isAsTheDaemonNeedsIt_data();
    void setting_isAsTheDaemonNeedsIt();
    void sandbox_refusesWhatTheUnitForbids_data();
    void sandbox_refusesWhatTheUnitForbids();
    void sandboxed_processHasNoPrivileges();
    void sandboxed_daemonDoesItsWholeJob();
    void sandboxedServerOfSeveralAddresses_isFound();

private:
    // The start of the daemon under the unit's restrictions.
    void confine(DeviceUnderTest &device, const QStringList &further = {});

    const InstalledTree installed;
    std::unique_ptr<UnitSandbox> sandbox;
};

void TestServiceUnit::confine(DeviceUnderTest &device, const QStringList &further)
{
    const QRegularExpression path("unix:path=([^,]*)"_text);
    const QString bus = QFileInfo(path.match(device.bus().address()).captured(1)).path();
    const ServiceUnit unit(installed.serviceUnit());
    sandbox = std::make_unique<UnitSandbox>(unit, QStringList{installed.program(), bus});
    device.program().setSandbox(sandbox->arguments() + further);
}

void TestServiceUnit::serviceManager_hasNothingToSayOfIt()
{
    // Where the unit looks for the program, and on this machine nothing else has to be.
    const QString place = "/usr/local/bin"_text;
    QString problem;

    const QByteArray said = BuildUnderTest::run(
        "bwrap"_text,
        {"--dev-bind"_text, "/"_text, "/"_text, "--die-with-parent"_text, "--tmpfs"_text, place,
         "--ro-bind"_text, installed.program(), place + "/qwixtd"_text, "sh"_text, "-c"_text,
         "exec systemd-analyze --man=no verify \"$0\" 2>&1"_text, installed.serviceUnit()},
        &problem);

    QCOMPARE(problem, QString());
    QCOMPARE(said, QByteArray());
}

void TestServiceUnit::exposure_isSmall()
{
    QString problem;

    BuildUnderTest::run(
        "systemd-analyze"_text,
        {"security"_text, "--offline=true"_text, "--threshold=15"_text, installed.serviceUnit()}, &problem);

    QCOMPARE(problem, QString());
}

void TestServiceUnit::setting_isAsTheDaemonNeedsIt_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("words");

    QTest::newRow("never given up") << "Unit/StartLimitIntervalSec"_text << QStringList{"0"_text};
    QTest::newRow("started when it has its name") << "Service/Type"_text << QStringList{"dbus"_text};
    QTest::newRow("its name") << "Service/BusName"_text << QStringList{"com.qwixtd"_text};
    QTest::newRow("its user, as in the bus policy") << "Service/User"_text << QStringList{"qwixtd"_text};
    QTest::newRow("restarted however it ends") << "Service/Restart"_text << QStringList{"always"_text};
    QTest::newRow("restarted without a hurry") << "Service/RestartSec"_text << QStringList{"5"_text};
    QTest::newRow("environment that may be missing")
        << "Service/EnvironmentFile"_text << QStringList{"-/etc/default/qwixtd"_text};
    QTest::newRow("no secrets in files")
        << "Service/UnsetEnvironment"_text << QStringList{"QDBUS_DEBUG"_text, "SSLKEYLOGFILE"_text};
    QTest::newRow("a locale of UTF-8") << "Service/Environment"_text << QStringList{"LC_ALL=C.UTF-8"_text};
    QTest::newRow("refused calls fail") << "Service/SystemCallErrorNumber"_text << QStringList{"EPERM"_text};
    QTest::newRow("started with the system")
        << "Install/WantedBy"_text << QStringList{"multi-user.target"_text};
}

void TestServiceUnit::setting_isAsTheDaemonNeedsIt()
{
    QFETCH(QString, key);
    QFETCH(QStringList, words);

    const ServiceUnit unit(installed.serviceUnit());

    QCOMPARE(unit.words(key), words);
}

void TestServiceUnit::sandbox_refusesWhatTheUnitForbids_data()
{
    QTest::addColumn<QString>("attempt");
    QTest::addColumn<QByteArray>("result");

    const auto row = [](const char *attempt, const char *result) {
        QTest::newRow(attempt) << QString::fromLatin1(attempt) << QByteArray(result);
    };
    row("unix", "done");
    row("internet", "done");
    row("internet-6", "done");
    row("netlink", "EAFNOSUPPORT");
    row("packets", "EAFNOSUPPORT");
    row("write-and-execute", "EPERM");
    row("execute-later", "EPERM");
    row("change-owner", "EPERM");
    row("change-user", "EPERM");
    row("trace", "EPERM");
    row("schedule", "EPERM");
    row("write-root", "EROFS");
    row("write-etc", "EROFS");
    row("write-tmp", "done");
    row("kernel-settings", "ENOENT");
    row("kernel-log", "ENOENT");
}

void TestServiceUnit::sandbox_refusesWhatTheUnitForbids()
{
    QFETCH(QString, attempt);
    QFETCH(QByteArray, result);
    const QString probe = QStringLiteral(SANDBOX_PROBE);
    const UnitSandbox confinement(ServiceUnit(installed.serviceUnit()), {probe});
    QString problem;

    const QByteArray output =
        BuildUnderTest::run("bwrap"_text,
                            QStringList{"--dev-bind"_text, "/"_text, "/"_text, "--die-with-parent"_text} +
                                confinement.arguments() + QStringList{probe, attempt},
                            &problem);

    QCOMPARE(problem, QString());
    QCOMPARE(output, attempt.toLatin1() + ": " + result + '\n');
    QVERIFY(!QFile::exists("/tmp/sandboxprobe"_text));
}

void TestServiceUnit::sandboxed_processHasNoPrivileges()
{
    DeviceUnderTest device(installed.program());
    confine(device);

    QVERIFY(device.startServices() && device.startProgram());

    for (const char *set : {"CapInh", "CapPrm", "CapEff", "CapAmb"}) {
        QCOMPARE(device.program().statusField(set), QByteArray("0000000000000000"));
    }
    QCOMPARE(device.program().statusField("NoNewPrivs"), QByteArray("1"));
    QCOMPARE(device.program().statusField("Seccomp_filters"), QByteArray("3"));
}

void TestServiceUnit::sandboxed_daemonDoesItsWholeJob()
{
    DeviceUnderTest device(installed.program());
    device.server().addApplication({"d9"_text, "a1"_text, "u1"_text, "Clock"_text, "t"_text});
    device.server().addApplication({"d9"_text, "a9"_text, "gone"_text, "Old"_text, "t"_text});
    confine(device);

    QVERIFY(device.startAll());
    EVENTUALLY(device.announced().contains("applicationDeleted(gone, a9, t)"_text));
    device.server().failNext(1, ServerFault::withStatus(503));
    QVERIFY(device.registerApplication("u2"_text, QString(100000, QLatin1Char('n')), "t"_text));
    EVENTUALLY(device.announced().contains("applicationRegistered(u2, app-1, t)"_text));
    QVERIFY(device.updateApplication("a1"_text, "u1"_text, "Watch"_text, "t"_text));
    EVENTUALLY(device.hasLine("I/QWIXTD: QWixtApplicationManager: Application updated"));
    QVERIFY(device.setInternetAvailable(false));
    QVERIFY(device.deleteWidget("u1"_text));
    QVERIFY(device.setInternetAvailable(true));
    EVENTUALLY(device.announced().contains("applicationDeleted(u1, a1, )"_text));

    QCOMPARE(device.server().requestCount(), 6);
    QCOMPARE(device.server().applications().size(), 1);
}

// The C library sorts the addresses by means that the sandbox refuses, and does without.
void TestServiceUnit::sandboxedServerOfSeveralAddresses_isFound()
{
    const QTemporaryDir directory;
    QFile hosts(directory.filePath("hosts"_text));
    QVERIFY(hosts.open(QIODevice::WriteOnly));
    hosts.write("127.0.0.1 several.test\n127.0.0.2 several.test\n::1 several.test\n");
    hosts.close();
    DeviceUnderTest device(installed.program());
    confine(device, {"--ro-bind"_text, hosts.fileName(), "/etc/hosts"_text});
    device.useServer("several.test:"_text + device.server().host().section(QLatin1Char(':'), 1));

    QVERIFY(device.startServices() && device.startProgram());

    // Found and reached; its certificate is for another name.
    EVENTUALLY_EQUAL(device.lines('E').size(), 1);
    QVERIFY2(device.lines('E').constFirst().startsWith("FetchTask: [Error] 60 "),
             device.lines('E').constFirst().constData());
}

QTEST_GUILESS_MAIN(TestServiceUnit)
#include "tst_serviceunit.moc"
