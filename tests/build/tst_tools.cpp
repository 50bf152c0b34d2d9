#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace
{

constexpr int timeoutMs = 30000;

struct Outcome {
    bool ended;
    int status;
    QString output;
    QString errors;
};

} // namespace

/// The scripts that a person types, in a checkout of their own that holds nothing to build. Stubs stand in
/// for what the scripts ask of the machine.
class TestTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void testOfNoPreset_isRefusedByName();
    void fuzzerThatCannotRun_isRefusedBeforeAnythingIsBuilt_data();
    void fuzzerThatCannotRun_isRefusedBeforeAnythingIsBuilt();
    void noSandbox_isSaidBeforeAnythingIsBuilt_data();
    void noSandbox_isSaidBeforeAnythingIsBuilt();
    void demoThatIsNone_isRefused_data();
    void demoThatIsNone_isRefused();
    void browserThatCannotBeHad_isSaidAndLeftOut();
    void qtOfTheDevice_isFiveOrSix();
    void devicesPackagesNotToBeHad_isSaidAndNothingIsBuilt_data();
    void devicesPackagesNotToBeHad_isSaidAndNothingIsBuilt();
    void anotherRootForABuildDirectory_isRefused_data();
    void anotherRootForABuildDirectory_isRefused();

private:
    void writeStub(const char *name, const QByteArray &commands);
    QString inCheckout(const char *path) const { return checkout->filePath(QLatin1String(path)); }
    Outcome runScript(const QStringList &words) const;

    std::unique_ptr<QTemporaryDir> checkout;
};

void TestTools::init()
{
    const QDir sources(QStringLiteral(SOURCE_DIRECTORY));
    checkout = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(checkout->path()).mkpath(QStringLiteral("tools")));
    QVERIFY(QDir(checkout->path()).mkpath(QStringLiteral("tests/fuzz")));
    QVERIFY(QDir(checkout->path()).mkpath(QStringLiteral("stubs")));
    for (const char *file : {"CMakePresets.json", "tools/lib.sh", "tools/machine.sh", "tools/device.sh",
                             "tools/test.sh", "tools/demo.sh", "tools/fuzz.sh", "tools/armhf.sh",
                             "tools/package.sh", "tools/bench.sh", "tests/fuzz/fuzz_json.cpp"}) {
        QVERIFY(QFile::copy(sources.filePath(QLatin1String(file)), inCheckout(file)));
    }
    // Every package is there, so that none is installed.
    writeStub("dpkg-query", "printf installed");
    writeStub("bwrap", "exit 0");
}

void TestTools::writeStub(const char *name, const QByteArray &commands)
{
    QFile stub(inCheckout("stubs/") + QLatin1String(name));
    QVERIFY(stub.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QVERIFY(stub.write("#!/bin/bash\n" + commands + "\n") > 0);
    QVERIFY(stub.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

Outcome TestTools::runScript(const QStringList &words) const
{
    QProcess script;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"),
                       inCheckout("stubs:") + environment.value(QStringLiteral("PATH")));
    environment.remove(QStringLiteral("QWIXTD_SYSROOT"));
    script.setProcessEnvironment(environment);
    script.setStandardInputFile(QProcess::nullDevice());
    script.start(inCheckout("tools/") + words.first(), words.mid(1));
    const bool ended = script.waitForFinished(timeoutMs) && script.exitStatus() == QProcess::NormalExit;
    return {ended, script.exitCode(), QString::fromLocal8Bit(script.readAllStandardOutput()),
            QString::fromLocal8Bit(script.readAllStandardError())};
}

void TestTools::testOfNoPreset_isRefusedByName()
{
    const QStringList words{QStringLiteral("test.sh"), QStringLiteral("nonsuch")};

    const Outcome outcome = runScript(words);

    QVERIFY(outcome.ended);
    QVERIFY(outcome.status != 0);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors,
             QStringLiteral("test.sh: there is no preset \"nonsuch\" with tests; those with tests are: "
                            "release debug asan qt5\n"));
    QVERIFY(!QDir(inCheckout("build")).exists());
}

void TestTools::fuzzerThatCannotRun_isRefusedBeforeAnythingIsBuilt_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such fuzzer") << QStringList{QStringLiteral("fuzz_nonsuch")}
                                    << QStringLiteral(
                                           "there is no fuzzer \"fuzz_nonsuch\"; there are: fuzz_json");
    QTest::newRow("no such option") << QStringList{QStringLiteral("--minutes"), QStringLiteral("1")}
                                    << QStringLiteral("no such option: --minutes");
    QTest::newRow("no number") << QStringList{QStringLiteral("--seconds")}
                               << QStringLiteral("--seconds needs a number above 0");
    QTest::newRow("number in words") << QStringList{QStringLiteral("--runs"), QStringLiteral("fuzz_json")}
                                     << QStringLiteral("--runs needs a number above 0");
    QTest::newRow("number 0") << QStringList{QStringLiteral("--runs"), QStringLiteral("0")}
                              << QStringLiteral("--runs needs a number above 0");
}

void TestTools::fuzzerThatCannotRun_isRefusedBeforeAnythingIsBuilt()
{
    QFETCH(QStringList, words);
    QFETCH(QString, reason);

    const Outcome outcome = runScript(QStringList{QStringLiteral("fuzz.sh")} + words);

    QVERIFY(outcome.ended);
    QVERIFY(outcome.status != 0);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, QStringLiteral("fuzz.sh: %1\n").arg(reason));
    QVERIFY(!QDir(inCheckout("build")).exists());
}

void TestTools::noSandbox_isSaidBeforeAnythingIsBuilt_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("demo") << QStringList{QStringLiteral("demo.sh")};
    QTest::newRow("interactive demo")
        << QStringList{QStringLiteral("demo.sh"), QStringLiteral("--interactive")};
    QTest::newRow("demo in a browser") << QStringList{QStringLiteral("demo.sh"), QStringLiteral("--web")};
    QTest::newRow("tests") << QStringList{QStringLiteral("test.sh")};
    QTest::newRow("benchmarks") << QStringList{QStringLiteral("bench.sh")};
    QTest::newRow("small benchmarks") << QStringList{QStringLiteral("bench.sh"), QStringLiteral("--smoke")};
    QTest::newRow("fleet") << QStringList{QStringLiteral("bench.sh"), QStringLiteral("fleet")};
}

void TestTools::noSandbox_isSaidBeforeAnythingIsBuilt()
{
    QFETCH(QStringList, words);
    writeStub("bwrap", "echo 'bwrap: no permission to make a name space' >&2; exit 1");

    const Outcome outcome = runScript(words);

    QVERIFY(outcome.ended);
    QVERIFY(outcome.status != 0);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors,
             words.first() +
                 QStringLiteral(
                     ": no sandbox can be made here (bwrap: no permission to make a name space), and the "
                     "tests and the demo need one: allow user namespaces on this machine, or run in a "
                     "container that is allowed to make them.\n"));
    QVERIFY(!QDir(inCheckout("build")).exists());
}

void TestTools::demoThatIsNone_isRefused_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such option") << QStringList{QStringLiteral("--page")}
                                    << QStringLiteral("usage: demo.sh [--interactive | --web [PORT]]");
    QTest::newRow("no port") << QStringList{QStringLiteral("--web"), QStringLiteral("http")}
                             << QStringLiteral("not a port: http");
}

void TestTools::demoThatIsNone_isRefused()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, reason);

    const Outcome outcome = runScript(QStringList{QStringLiteral("demo.sh")} + options);

    QVERIFY(outcome.ended);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.errors, QStringLiteral("demo.sh: %1\n").arg(reason));
    QVERIFY(!QDir(inCheckout("build")).exists());
}

void TestTools::browserThatCannotBeHad_isSaidAndLeftOut()
{
    QVERIFY(QDir(checkout->path()).mkpath(QStringLiteral("tests/web")));
    for (const char *file : {"tests/web/package.json", "tests/web/package-lock.json"}) {
        QVERIFY(QFile::copy(QDir(QStringLiteral(SOURCE_DIRECTORY)).filePath(QLatin1String(file)),
                            inCheckout(file)));
    }
    writeStub("chromium", "exit 0");
    writeStub("npm", "echo 'npm: no network' >&2; exit 1");
    writeStub("../tools/try.sh",
              "set -euo pipefail; . \"$(dirname \"$0\")/lib.sh\"; install_browser || echo left out");

    const Outcome outcome = runScript({QStringLiteral("try.sh")});

    QVERIFY(outcome.ended);
    QCOMPARE(outcome.output,
             QStringLiteral("installing what drives the browser\n"
                            "the page is not tested in a browser: npm could not install what drives it\n"
                            "left out\n"));
    QCOMPARE(outcome.errors, QStringLiteral("npm: no network\n"));
}

void TestTools::qtOfTheDevice_isFiveOrSix()
{
    const QStringList words{QStringLiteral("armhf.sh"), QStringLiteral("--qt"), QStringLiteral("4")};

    const Outcome outcome = runScript(words);

    QVERIFY(outcome.ended);
    QVERIFY(outcome.status != 0);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, QStringLiteral("armhf.sh: usage: armhf.sh [--qt 5|6]\n"));
    QVERIFY(!QDir(inCheckout("build")).exists());
}

void TestTools::devicesPackagesNotToBeHad_isSaidAndNothingIsBuilt_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("build") << QStringList{QStringLiteral("armhf.sh")};
    QTest::newRow("packages") << QStringList{QStringLiteral("package.sh"), QStringLiteral("--armhf")};
}

void TestTools::devicesPackagesNotToBeHad_isSaidAndNothingIsBuilt()
{
    QFETCH(QStringList, words);
    writeStub("apt-get", "echo http://mirror.example/debian/");
    writeStub("arm-linux-gnueabihf-g++", "echo 12");
    writeStub("mmdebstrap", "echo 'E: cannot reach mirror.example' >&2; exit 1");

    const Outcome outcome = runScript(words);

    QVERIFY(outcome.ended);
    QVERIFY(outcome.status != 0);
    QVERIFY2(outcome.errors.contains(QStringLiteral("E: cannot reach mirror.example\n")),
             qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(words.first() + QStringLiteral(": the packages of the device (Debian ")),
             qPrintable(outcome.errors));
    QCOMPARE(QDir(inCheckout("build")).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("armhf")));
    QVERIFY(QDir(inCheckout("build/armhf")).isEmpty());
}

void TestTools::anotherRootForABuildDirectory_isRefused_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("another") << QStringLiteral("other") << true;
    QTest::newRow("the same") << QStringLiteral("root") << false;
    QTest::newRow("the same, by another path") << QStringLiteral("other/../root/") << false;
    QTest::newRow("the same, by a link") << QStringLiteral("link") << false;
    QTest::newRow("none") << QString() << false;
}

void TestTools::anotherRootForABuildDirectory_isRefused()
{
    QFETCH(const QString, asked);
    QFETCH(const bool, isRefused);
    QVERIFY(QDir(checkout->path()).mkpath(QStringLiteral("root/usr/include")));
    QVERIFY(QDir(checkout->path()).mkpath(QStringLiteral("other/usr/include")));
    QVERIFY(QFile::link(inCheckout("root"), inCheckout("link")));
    writeStub("../tools/try.sh", "QWIXTD_SYSROOT=${2:+$1/$2} cmake -D QWIXTD_SYSROOT=\"$1/root\""
                                 " -P " SOURCE_DIRECTORY "/cmake/armhf-toolchain.cmake");

    const Outcome outcome = runScript({QStringLiteral("try.sh"), checkout->path(), asked});

    QVERIFY(outcome.ended);
    const QString said = outcome.errors.simplified();
    QCOMPARE(said.contains(QStringLiteral("is configured for the root of a device in ")), isRefused);
    QCOMPARE(said.contains(QStringLiteral("take another build directory")), isRefused);
}

QTEST_GUILESS_MAIN(TestTools)
#include "tst_tools.moc"
