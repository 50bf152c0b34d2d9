#include "buildundertest.h"
#include "fakeservice.h"
#include "privatebus.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace BuildUnderTest;

namespace
{

constexpr int answerTimeoutMs = 10000;

const QString pkgConfig = QStringLiteral(PKG_CONFIG_PROGRAM);
const QString consumerDirectory = QStringLiteral(CONSUMER_DIRECTORY);
const QString qtMajor = QStringLiteral(QT_MAJOR);
const QString extraFlags = QStringLiteral(EXTRA_FLAGS);

// The library without the daemon, in a world that has no libcurl and no threads library to find.
QStringList proxiesAlone()
{
    QStringList options{QStringLiteral("-DQWIXTD_PROXIES_ONLY=ON"),
                        QStringLiteral("-DQWIXTD_QT_MAJOR=") + qtMajor,
                        QStringLiteral("-DCMAKE_DISABLE_FIND_PACKAGE_CURL=ON"),
                        QStringLiteral("-DCMAKE_DISABLE_FIND_PACKAGE_Qt%1Test=ON").arg(qtMajor),
                        QStringLiteral("-DCMAKE_DISABLE_FIND_PACKAGE_Qt%1Network=ON").arg(qtMajor)};
    if (qtMajor == QLatin1String("5")) {
        // The package of Qt 6 asks for the threads library itself.
        options.append(QStringLiteral("-DCMAKE_DISABLE_FIND_PACKAGE_Threads=ON"));
    }
    return options;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The lines of code that the comments of a header show.
QList<QByteArray> exampleLines(const QByteArray &header)
{
    const QByteArray indent("///     ");
    QList<QByteArray> lines;
    for (const QByteArray &line : header.split('\n')) {
        if (line.startsWith(indent)) {
            lines.append(line.mid(indent.size()).trimmed());
        }
    }
    return lines;
}

} // namespace

/// Installs the library into an empty directory and builds a program of somebody else against it.
class TestProxyInstall : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void exportedTarget_isUnderstoodByAnOlderCMake();
    void consumerFoundByCMake_speaksToItsServices();
    void consumerFoundByPkgConfig_speaksToItsServices();
    void exampleInTheHeader_compilesAndDoesWhatItSays();
    void libraryAlone_isSharedWithAVersionedName();
    void pkgConfigFile_namesTheDirectories_data();
    void pkgConfigFile_namesTheDirectories();

private:
    // Builds the consumer's programs against an installed tree; gives the directory that they stand in.
    QString builtConsumer(const QString &installed, QString *problem);
    void buildAndRunConsumer(const QString &installed);
    void startOnTheBus(QProcess &process, const QString &program) const;
    void runConsumer(const QString &program);

    QTemporaryDir work;
    QString prefix;
    PrivateBus bus;
    std::unique_ptr<FakeService> fake;
};

void TestProxyInstall::initTestCase()
{
    prefix = work.filePath(QStringLiteral("installed"));
    QString problem;
    install(directory(), QStringLiteral("VorletProxies"), prefix, &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));

    QVERIFY(bus.start());
    fake = std::make_unique<FakeService>(bus.address(), QStringList{QStringLiteral("vorlet.daemon"),
                                                                    QStringLiteral("widget.manager"),
                                                                    QStringLiteral("vorlet.mqtt.client")});
    QVERIFY(fake->isRunning());
}

// CMake before 3.23 knows no file sets, and would pass over the headers in one without a word.
void TestProxyInstall::exportedTarget_isUnderstoodByAnOlderCMake()
{
    const QStringList targets = filesBelow(prefix).filter(QStringLiteral("VorletProxiesTargets.cmake"));
    QCOMPARE(targets.size(), 1);

    const QByteArray content = contentOf(prefix + QLatin1Char('/') + targets.first());

    QVERIFY(content.contains("INTERFACE_INCLUDE_DIRECTORIES \"${_IMPORT_PREFIX}/include/vorletproxies\""));
    QVERIFY(!content.contains("FILE_SET"));
}

void TestProxyInstall::startOnTheBus(QProcess &process, const QString &program) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, QStringList());
}

void TestProxyInstall::runConsumer(const QString &program)
{
    fake->takeCalls();
    QProcess consumer;

    // Every question gets the answer of its turn: a map is no serial number, and that must do no harm.
    fake->answerWith({QVariantMap{{QStringLiteral("title"), QStringLiteral("Night")}}});
    startOnTheBus(consumer, program);
    QByteArray output;
    while (!output.contains("waiting\n")) {
        QVERIFY2(consumer.waitForReadyRead(answerTimeoutMs), qPrintable(consumer.errorString()));
        output += consumer.readAllStandardOutput();
    }
    QCOMPARE(output, QByteArray("serial: \nwidget mode: Night\nplayer: failed\nconversion: text\nwaiting\n"));
    const QList<RecordedCall> calls = fake->takeCalls();
    QCOMPARE(calls.size(), 4);
    QCOMPARE(calls.first().path + calls.first().interface + calls.first().member,
             QStringLiteral("/generalcom.vorlet.daemon.generalserial"));
    QCOMPARE(calls.at(1).arguments, (QVariantList{QStringLiteral("w1"), QStringLiteral("night")}));
    QCOMPARE(calls.at(2).arguments, (QVariantList{QStringLiteral("text"), QByteArray("\xc3\xa9")}));
    QCOMPARE(calls.at(3).arguments, (QVariantList{QStringLiteral("bytes"), QByteArray("\xff")}));

    QVERIFY(fake->sendSignal(QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
                             QStringLiteral("com.vorlet.daemon.general"), QStringLiteral("nameChanged"), {}));
    QVERIFY(consumer.waitForFinished(answerTimeoutMs));
    QCOMPARE(consumer.exitStatus(), QProcess::NormalExit);
    QCOMPARE(consumer.exitCode(), 0);
}

QString TestProxyInstall::builtConsumer(const QString &installed, QString *problem)
{
    const QString build = installed + QStringLiteral("-consumer");
    configure(consumerDirectory, build,
              {QStringLiteral("-DCMAKE_CXX_FLAGS=") + extraFlags,
               QStringLiteral("-DCMAKE_PREFIX_PATH=") + installed},
              problem);
    if (problem->isEmpty()) {
        buildAll(build, problem);
    }
    return build;
}

void TestProxyInstall::buildAndRunConsumer(const QString &installed)
{
    QString problem;
    const QString build = builtConsumer(installed, &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    runConsumer(build + QStringLiteral("/consumer"));
}

void TestProxyInstall::consumerFoundByCMake_speaksToItsServices()
{
    buildAndRunConsumer(prefix);
}

void TestProxyInstall::consumerFoundByPkgConfig_speaksToItsServices()
{
    const QStringList pcFile = filesBelow(prefix).filter(QStringLiteral(".pc"));
    QCOMPARE(pcFile.size(), 1);
    const QString pcDirectory = QFileInfo(prefix + QLatin1Char('/') + pcFile.first()).path();
    QString problem;
    const QByteArray flags = run(
        pkgConfig, {QStringLiteral("--cflags"), QStringLiteral("--libs"), QStringLiteral("VorletProxies")},
        &problem, {QStringLiteral("PKG_CONFIG_PATH=") + pcDirectory});
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY(flags.contains("-lVorletProxies"));
    const QString program = work.filePath(QStringLiteral("program"));
    QStringList arguments{QStringLiteral("-std=c++17"), consumerDirectory + QStringLiteral("/main.cpp"),
                          QStringLiteral("-o"), program};
    arguments += extraFlags.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    arguments += QString::fromUtf8(flags).simplified().split(QLatin1Char(' '));
    // A shared library is found where it was installed.
    arguments << QStringLiteral("-Wl,-rpath,") + QFileInfo(pcDirectory).path();

    run(compiler(), arguments, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    runConsumer(program);
}

// The example once stood in the header without ever being compiled.
void TestProxyInstall::exampleInTheHeader_compilesAndDoesWhatItSays()
{
    const QList<QByteArray> shown =
        exampleLines(contentOf(prefix + QStringLiteral("/include/vorletproxies/vorletproxies.h")));
    const QByteArray program = contentOf(consumerDirectory + QStringLiteral("/example.cpp"));
    QString problem;
    const QString build = builtConsumer(prefix, &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    fake->answerWith({QStringLiteral("S-1")});
    fake->takeCalls();

    QProcess example;
    startOnTheBus(example, build + QStringLiteral("/example"));
    QVERIFY2(example.waitForReadyRead(answerTimeoutMs), qPrintable(example.errorString()));
    QVERIFY(fake->sendSignal(QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
                             QStringLiteral("com.vorlet.daemon.general"), QStringLiteral("nameChanged"),
                             {QStringLiteral("hall")}));
    QVERIFY(example.waitForFinished(answerTimeoutMs));

    QCOMPARE(shown.size(), 5);
    QByteArray remaining = program;
    for (const QByteArray &line : shown) {
        const auto at = remaining.indexOf(line);
        QVERIFY2(at >= 0, line.constData());
        remaining = remaining.mid(at);
    }
    QCOMPARE(example.exitCode(), 0);
    QCOMPARE(example.readAllStandardOutput(), QByteArray("serial: S-1\nlabel: hall\n"));
    // The example waits for the first call alone.
    QList<RecordedCall> calls;
    QTRY_VERIFY((calls += fake->takeCalls()).size() >= 2);
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls.at(0).member, QStringLiteral("serial"));
    QCOMPARE(calls.at(1).member, QStringLiteral("setName"));
    QCOMPARE(calls.at(1).arguments, QVariantList{QStringLiteral("kitchen")});
}

void TestProxyInstall::libraryAlone_isSharedWithAVersionedName()
{
    const QString build = work.filePath(QStringLiteral("shared-build"));
    const QString shared = work.filePath(QStringLiteral("shared"));
    QString problem;
    configure(sources(), build,
              proxiesAlone() << QStringLiteral("-DBUILD_SHARED_LIBS=ON")
                             << QStringLiteral("-DCMAKE_BUILD_TYPE=Debug"),
              &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));

    buildAll(build, &problem);
    install(build, QString(), shared, &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));

    const QStringList files = filesBelow(shared);
    const QStringList library =
        files.filter(QRegularExpression(QStringLiteral("/libVorletProxies\\.so\\.1$")));
    QCOMPARE(library.size(), 1);
    QCOMPARE(files.filter(QStringLiteral(".a")), QStringList());
    const QByteArray dynamic =
        run(QStringLiteral("readelf"), {QStringLiteral("-d"), shared + QLatin1Char('/') + library.first()},
            &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY2(dynamic.contains("soname: [libVorletProxies.so.1]"), dynamic.constData());
    buildAndRunConsumer(shared);
}

void TestProxyInstall::pkgConfigFile_namesTheDirectories_data()
{
    const auto option = [](const char *name, const char *value) {
        return QStringLiteral("-DCMAKE_INSTALL_%1=%2").arg(QLatin1String(name), QLatin1String(value));
    };
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("beginning");
    QTest::newRow("relative") << QStringList{option("LIBDIR", "lib/device")}
                              << QByteArray("prefix=${pcfiledir}/../../..\nlibdir=${prefix}/lib/device\n"
                                            "includedir=${prefix}/include/vorletproxies\n");
    QTest::newRow("absolute library directory")
        << QStringList{option("PREFIX", "/opt/device"), option("LIBDIR", "/opt/device/lib64")}
        << QByteArray("prefix=/opt/device\nlibdir=/opt/device/lib64\n"
                      "includedir=${prefix}/include/vorletproxies\n");
    QTest::newRow("absolute header directory")
        << QStringList{option("LIBDIR", "lib"), option("INCLUDEDIR", "/opt/headers")}
        << QByteArray("prefix=${pcfiledir}/../..\nlibdir=${prefix}/lib\n"
                      "includedir=/opt/headers/vorletproxies\n");
}

void TestProxyInstall::pkgConfigFile_namesTheDirectories()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, beginning);
    const QString build = work.filePath(QStringLiteral("directories"));
    QString problem;

    configure(sources(), build, proxiesAlone() + options, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    const QByteArray content = contentOf(build + QStringLiteral("/proxies/VorletProxies.pc"));
    QVERIFY2(content.startsWith(beginning), content.constData());
    QVERIFY(QDir(build).removeRecursively());
}

QTEST_GUILESS_MAIN(TestProxyInstall)
#include "tst_proxyinstall.moc"
