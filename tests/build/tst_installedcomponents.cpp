#include "buildundertest.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace BuildUnderTest;

namespace
{

const QString binaries = QStringLiteral(INSTALL_BINDIR "/");
const QString libraries = QStringLiteral(INSTALL_LIBDIR "/");
const QString headers = QStringLiteral(INSTALL_INCLUDEDIR "/vorletproxies/");
const QString data = QStringLiteral(INSTALL_DATAROOTDIR "/");
const QString documents = QStringLiteral(INSTALL_DATAROOTDIR "/doc/VorletProxies/");
const QString buildType = QStringLiteral(CONFIGURATION).toLower();

// The words of a string, each with a directory in front.
QStringList in(const QString &directory, const char *words)
{
    QStringList paths = QString::fromLatin1(words).simplified().split(QLatin1Char(' '));
    return paths.replaceInStrings(QRegularExpression(QStringLiteral("^")), directory);
}

QStringList proxyHeaders()
{
    return in(headers, "dbusconversion.h vorletproxies.h") +
           in(headers + QStringLiteral("btnotifications/"), "btnotificationsproxy.h") +
           in(headers + QStringLiteral("daemon/"),
              "audioproxy.h batteryproxy.h bluetoothproxy.h brigntnessproxy.h clockproxy.h crashlogsproxy.h "
              "devicestate.h filesystemproxy.h generalproxy.h lightsensorproxy.h networkproxy.h "
              "oomkillerproxy.h "
              "packagemanagerproxy.h restserverproxy.h screensaverproxy.h setupproxy.h "
              "soundnotificationproxy.h") +
           in(headers + QStringLiteral("mqttclient/"), "generalproxy.h") +
           in(headers + QStringLiteral("spotify/"), "clientproxy.h") +
           in(headers + QStringLiteral("windowmanager/"),
              "apearanceproxy.h dynamicwidgetpropertiesproxy.h generalproxy.h notificationsproxy.h "
              "sharedscreenproxy.h");
}

QStringList proxyFiles(const char *library)
{
    const QString package = libraries + QStringLiteral("cmake/VorletProxies/VorletProxies");
    return proxyHeaders() + in(libraries, library) +
           in(libraries + QStringLiteral("pkgconfig/"), "VorletProxies.pc") +
           in(package, "Config.cmake ConfigVersion.cmake Targets.cmake") +
           QStringList{package + QStringLiteral("Targets-%1.cmake").arg(buildType)} +
           in(documents, "proxies.md");
}

QStringList sorted(QStringList files)
{
    files.sort();
    return files;
}

} // namespace

/// Installs what the build under test has made, in parts and as a whole.
class TestInstalledComponents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void component_holdsItsFilesAlone_data();
    void component_holdsItsFilesAlone();
    void components_areAllThatIsInstalled();
};

void TestInstalledComponents::component_holdsItsFilesAlone_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("daemon")
        << QStringLiteral("qwixtd")
        << in(binaries, "qwixtd") +
               in(data, "dbus-1/interfaces/com.vorlet.qwixtd.xml dbus-1/system.d/com.qwixtd.conf "
                        "doc/qwixtd/examples/short-bundle.conf man/man8/qwixtd.8") +
               QStringList{QStringLiteral("lib/systemd/system/qwixtd.service")};
#ifdef WITH_SIMULATOR
    QTest::newRow("simulator") << QStringLiteral("simulator")
                               << in(binaries, "qwixt-devicesim") +
                                      in(data, "doc/qwixt-devicesim/examples/make-certificates.sh "
                                               "man/man1/qwixt-devicesim.1");
#endif
#ifdef SHARED_LIBRARY
    QTest::newRow("proxies, shared") << QStringLiteral("VorletProxies")
                                     << proxyFiles("libVorletProxies.so libVorletProxies.so.1 "
                                                   "libVorletProxies.so.1.0.0");
#else
    QTest::newRow("proxies") << QStringLiteral("VorletProxies") << proxyFiles("libVorletProxies.a");
#endif
}

void TestInstalledComponents::component_holdsItsFilesAlone()
{
    QFETCH(QString, component);
    QFETCH(QStringList, expected);
    const QTemporaryDir prefix;
    QString problem;

    install(directory(), component, prefix.path(), &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QCOMPARE(filesBelow(prefix.path()), sorted(expected));
}

// A file that belongs to no component is installed with all and missed by whoever installs one.
void TestInstalledComponents::components_areAllThatIsInstalled()
{
    const QTemporaryDir parts;
    const QTemporaryDir whole;
    QString problem;

    for (const char *component : {"qwixtd", "VorletProxies", "simulator"}) {
        install(directory(), QString::fromLatin1(component), parts.path(), &problem);
    }
    install(directory(), QString(), whole.path(), &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QCOMPARE(filesBelow(whole.path()), filesBelow(parts.path()));
}

QTEST_GUILESS_MAIN(TestInstalledComponents)
#include "tst_installedcomponents.moc"
