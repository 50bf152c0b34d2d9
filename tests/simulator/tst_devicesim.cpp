#include "certificates.h"
#include "developerserver.h"
#include "privatebus.h"

#include <QtTest>

#include <QProcess>

#include <memory>

namespace
{
constexpr int timeoutMs = 20000;

// Whether a process does something still; one that nobody has collected yet does not.
bool isRunning(const QByteArray &pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(QString::fromLatin1(pid)));
    return status.open(QIODevice::ReadOnly) && !status.readAll().contains("\nState:\tZ");
}
} // namespace

// The simulator as a person starts it.
class TestDevicesim : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void allUp_printsReadyAndObeys();
    void options_setTheStateAtStart();
    void servicesNotWanted_areNotStarted();
    void busOfTheEnvironment_isUsed();
    void partialLines_arePutTogether();
    void endOfInput_endsTheProgram();
    void endOfInputWithKeepRunning_goesOn();
    void badStart_isOneLineAndStatus1_data();
    void badStart_isOneLineAndStatus1();
    void lostBus_endsTheProgramWithAMessage();
    void page_isNamedBeforeTheProgramIsReady();
    void daemonProgram_isRunWithTheServersHost();
    void daemonProgram_isStoppedAndStarted();
    void daemonProgramThatEnds_isReported();
    void daemonProgram_endsWithAKilledSimulator();
    void takenName_isReported();
    void takenPort_isReported();

private:
    QStringList withServer(const QStringList &more = {}) const;
    void start(const QStringList &arguments, bool withBusInEnvironment = false);
    QByteArray readUntil(const QByteArray &text);
    void type(const QByteArray &line);
    QString daemonThat(const QByteArray &commands) const;

    PrivateBus bus;
    QTemporaryDir directory;
    std::unique_ptr<QProcess> program;
    QByteArray output;
};

void TestDevicesim::initTestCase()
{
    QVERIFY(bus.start());
}

void TestDevicesim::init()
{
    output.clear();
    program = std::make_unique<QProcess>();
}

void TestDevicesim::cleanup()
{
    if (program->state() != QProcess::NotRunning) {
        program->kill();
        program->waitForFinished(timeoutMs);
    }
    program.reset();
}

QStringList TestDevicesim::withServer(const QStringList &more) const
{
    return QStringList{QStringLiteral("--bus"),         bus.address(),
                       QStringLiteral("--certificate"), Certificates::shared().serverCertificate(),
                       QStringLiteral("--key"),         Certificates::shared().serverKey()} +
           more;
}

void TestDevicesim::start(const QStringList &arguments, bool withBusInEnvironment)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"));
    if (withBusInEnvironment) {
        environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
    }
    program->setProcessEnvironment(environment);
    program->start(QStringLiteral(QWIXT_DEVICESIM), arguments);
    QVERIFY(program->waitForStarted(timeoutMs));
}

// All output so far, once it holds the text; empty when it does not come.
QByteArray TestDevicesim::readUntil(const QByteArray &text)
{
    output += program->readAllStandardOutput();
    while (!output.contains(text)) {
        if (!program->waitForReadyRead(timeoutMs)) {
            qWarning("no \"%s\" in: %s%s", text.constData(), output.constData(),
                     program->readAllStandardError().constData());
            return {};
        }
        output += program->readAllStandardOutput();
    }
    return output;
}

void TestDevicesim::type(const QByteArray &line)
{
    program->write(line);
    program->waitForBytesWritten(timeoutMs);
}

void TestDevicesim::allUp_printsReadyAndObeys()
{
    start(withServer());
    QVERIFY(!readUntil("ready: https://127.0.0.1:").isEmpty());

    type("list\n");
    QVERIFY(!readUntil("the server holds 0 application(s)\n").isEmpty());
    type("quit\n");

    QVERIFY(program->waitForFinished(timeoutMs));
    QCOMPARE(program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(program->exitCode(), 0);
    QVERIFY((output + program->readAllStandardOutput()).contains("\nbye\n"));
}

void TestDevicesim::options_setTheStateAtStart()
{
    start(withServer({QStringLiteral("--api-key"), QStringLiteral("k"), QStringLiteral("--remote-id"),
                      QStringLiteral("d9"), QStringLiteral("--serial"), QStringLiteral("s7"),
                      QStringLiteral("--widget"), QStringLiteral("w1"), QStringLiteral("--widget"),
                      QStringLiteral("w2"), QStringLiteral("--offline")}));

    type("status\n");

    QVERIFY(!readUntil("\nserver: https://").isEmpty());
    QVERIFY2(output.contains("daemon: running, widget-manager: running, com.qwixtd: absent\n"
                             "API key: ***, remote id: \"d9\", serial: \"s7\", internet: off\n"
                             "widgets: [\"w1\", \"w2\"]\n"),
             output.constData());
    QVERIFY(!output.contains("apiKeyDidSet"));
}

void TestDevicesim::servicesNotWanted_areNotStarted()
{
    start(withServer({QStringLiteral("--no-daemon"), QStringLiteral("--no-widget-manager")}));
    type("status\n");
    QVERIFY(!readUntil("daemon: stopped, widget-manager: stopped").isEmpty());

    type("start-service daemon\n");

    QVERIFY(!readUntil("vorlet.daemon says daemonDidStart()").isEmpty());
}

void TestDevicesim::busOfTheEnvironment_isUsed()
{
    const QStringList withoutBus = withServer().mid(2);

    start(withoutBus, true);

    QVERIFY(!readUntil("ready: ").isEmpty());
}

void TestDevicesim::partialLines_arePutTogether()
{
    start(withServer());
    QVERIFY(!readUntil("ready: ").isEmpty());

    type("li");
    type("st\nlist 1\nli");
    QVERIFY(!readUntil("error: usage: list\n").isEmpty());
    QCOMPARE(output.count("the server holds"), 1);
    type("st\n");

    QTRY_VERIFY(readUntil("the server holds").count("the server holds") == 2);
}

void TestDevicesim::endOfInput_endsTheProgram()
{
    start(withServer());
    QVERIFY(!readUntil("ready: ").isEmpty());

    type("list");
    program->closeWriteChannel();

    QVERIFY(program->waitForFinished(timeoutMs));
    QCOMPARE(program->exitCode(), 0);
    // The last line counts without its end.
    QVERIFY((output + program->readAllStandardOutput()).contains("the server holds"));
}

void TestDevicesim::endOfInputWithKeepRunning_goesOn()
{
    constexpr int graceMs = 300;
    start(withServer({QStringLiteral("--keep-running")}));
    QVERIFY(!readUntil("ready: ").isEmpty());

    program->closeWriteChannel();

    QVERIFY(!program->waitForFinished(graceMs));
    QCOMPARE(program->state(), QProcess::Running);
}

void TestDevicesim::badStart_isOneLineAndStatus1_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("line");
    const QString nowhere = QStringLiteral("unix:path=/nonexistent/bus");
    const QString noFile = QStringLiteral("/nonexistent.pem");
    const QStringList certificates = withServer().mid(2);
    QTest::newRow("no bus given")
        << certificates << QByteArray("qwixt-devicesim: no bus: give --bus or set DBUS_SYSTEM_BUS_ADDRESS\n");
    QTest::newRow("no bus there") << QStringList{QStringLiteral("--bus"), nowhere} + certificates
                                  << QByteArray("qwixt-devicesim: cannot reach the bus at "
                                                "unix:path=/nonexistent/bus\n");
    QTest::newRow("no certificate given")
        << QStringList{QStringLiteral("--bus"), bus.address()}
        << QByteArray("qwixt-devicesim: the server needs --certificate and --key\n");
    QTest::newRow("no certificate there")
        << QStringList{QStringLiteral("--bus"), bus.address(), QStringLiteral("--certificate"), noFile,
                       QStringLiteral("--key"), noFile}
        << QByteArray("qwixt-devicesim: cannot read the certificate /nonexistent.pem\n");
    QTest::newRow("port") << withServer({QStringLiteral("--port"), QStringLiteral("70000")})
                          << QByteArray("qwixt-devicesim: not a port: 70000\n");
    QTest::newRow("page's port") << withServer({QStringLiteral("--web"), QStringLiteral("http")})
                                 << QByteArray("qwixt-devicesim: not a port: http\n");
    QTest::newRow("no daemon there")
        << withServer({QStringLiteral("--qwixtd"), noFile})
        << QByteArray("qwixt-devicesim: cannot start /nonexistent.pem: it is not there, or no program\n");
    QTest::newRow("no pipe there") << withServer({QStringLiteral("--show"), noFile})
                                   << QByteArray("qwixt-devicesim: cannot read from /nonexistent.pem\n");
    QTest::newRow("stray word") << withServer({QStringLiteral("word")})
                                << QByteArray("qwixt-devicesim: not understood: word\n");
}

void TestDevicesim::badStart_isOneLineAndStatus1()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, line);

    start(arguments);

    QVERIFY(program->waitForFinished(timeoutMs));
    QCOMPARE(program->exitCode(), 1);
    QCOMPARE(program->readAllStandardError(), line);
    QVERIFY(!program->readAllStandardOutput().contains("ready"));
}

void TestDevicesim::lostBus_endsTheProgramWithAMessage()
{
    PrivateBus shortLived;
    QVERIFY(shortLived.start());
    start(withServer({QStringLiteral("--bus"), shortLived.address(), QStringLiteral("--keep-running")}));
    QVERIFY(!readUntil("ready: ").isEmpty());

    shortLived.stop();

    QVERIFY(program->waitForFinished(timeoutMs));
    QCOMPARE(program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(program->exitCode(), 1);
    QCOMPARE(program->readAllStandardError(),
             "qwixt-devicesim: lost the bus at " + shortLived.address().toUtf8() + '\n');
}

// Writes a program that stands in for the daemon.
QString TestDevicesim::daemonThat(const QByteArray &commands) const
{
    const QString path = directory.filePath(QStringLiteral("daemon"));
    QFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.write("#!/bin/sh\n" + commands + '\n') > 0 &&
                           file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return isWritten ? path : QString();
}

void TestDevicesim::page_isNamedBeforeTheProgramIsReady()
{
    start(withServer({QStringLiteral("--web"), QStringLiteral("0")}));

    QVERIFY(!readUntil("ready: ").isEmpty());

    const auto at = output.indexOf("page: http://127.0.0.1:");
    QVERIFY(at >= 0 && at < output.indexOf("ready: "));
}

void TestDevicesim::daemonProgram_isRunWithTheServersHost()
{
    const QString stub = daemonThat("echo \"host $QWIXTD_SERVER_HOST\"; echo oops >&2; exec sleep 60");

    start(withServer({QStringLiteral("--qwixtd"), stub}));

    QVERIFY(!readUntil("oops\n").isEmpty());
    const QByteArray host = output.mid(output.indexOf("ready: https://") + 15).split('\n').first();
    QVERIFY2(output.contains("host " + host + '\n'), output.constData());
}

void TestDevicesim::daemonProgram_isStoppedAndStarted()
{
    start(withServer({QStringLiteral("--qwixtd"), daemonThat("echo up; exec sleep 60")}));
    QVERIFY(!readUntil("up\n").isEmpty());

    type("start-service qwixtd\nstop-service qwixtd\nstop-service qwixtd\nstart-service qwixtd\nlist\n");

    QVERIFY(!readUntil("the server holds").isEmpty());
    QVERIFY2(output.contains("\nok: it was running already\nok\nok: it was stopped already\nok\n"),
             output.constData());
    QTRY_COMPARE(readUntil("up\n").count("up\n"), 2);
}

void TestDevicesim::daemonProgramThatEnds_isReported()
{
    start(withServer({QStringLiteral("--qwixtd"), daemonThat("echo last words; exit 7")}));

    QVERIFY(!readUntil("qwixtd ended with status 7\n").isEmpty());
    QVERIFY(output.contains("last words\n"));
}

void TestDevicesim::daemonProgram_endsWithAKilledSimulator()
{
    start(withServer({QStringLiteral("--qwixtd"), daemonThat("echo \"pid $$.\"; exec sleep 60")}));
    QVERIFY(!readUntil(".\n").isEmpty());
    const QByteArray pid = output.mid(output.indexOf("pid ") + 4).split('.').first();
    QVERIFY2(isRunning(pid), pid.constData());

    program->kill();
    QVERIFY(program->waitForFinished(timeoutMs));

    QTRY_VERIFY(!isRunning(pid));
}

void TestDevicesim::takenName_isReported()
{
    QProcess first;
    first.start(QStringLiteral(QWIXT_DEVICESIM), withServer());
    QVERIFY(first.waitForReadyRead(timeoutMs));

    start(withServer());

    QVERIFY(program->waitForFinished(timeoutMs));
    QCOMPARE(program->exitCode(), 1);
    QCOMPARE(program->readAllStandardError(),
             QByteArray("qwixt-devicesim: cannot own vorlet.daemon on the bus: the name is taken\n"));
    first.closeWriteChannel();
    QVERIFY(first.waitForFinished(timeoutMs));
}

void TestDevicesim::takenPort_isReported()
{
    DeveloperServer server;
    QVERIFY(server.start(Certificates::shared().serverCertificate(), Certificates::shared().serverKey()));

    start(withServer({QStringLiteral("--port"), QString::number(server.port())}));

    QVERIFY(program->waitForFinished(timeoutMs));
    QCOMPARE(program->exitCode(), 1);
    QCOMPARE(program->readAllStandardError(), "qwixt-devicesim: cannot listen on " + server.host().toUtf8() +
                                                  ": the port is taken or not allowed\n");
}

QTEST_GUILESS_MAIN(TestDevicesim)
#include "tst_devicesim.moc"
