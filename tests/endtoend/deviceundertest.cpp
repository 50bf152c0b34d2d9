#include "deviceundertest.h"

#include "certificates.h"

#include <QUuid>

namespace
{
const auto service = QStringLiteral("com.qwixtd");
const auto interfaceName = QStringLiteral("com.vorlet.qwixtd");

QString programPath(DeviceUnderTest::Build build)
{
    return build == DeviceUnderTest::Shipped ? QStringLiteral(QWIXTD_PROGRAM)
                                             : QStringLiteral(QWIXTD_DEBUGLOG_PROGRAM);
}
} // namespace

QByteArray curlsWords(CURLcode code)
{
    return QByteArray(" ") + curl_easy_strerror(code);
}

const QString DeviceUnderTest::apiKey = QStringLiteral("k3y-0f/th3+dev1ce");

DeviceUnderTest::DeviceUnderTest(Build build)
    : DeviceUnderTest(programPath(build))
{
}

DeviceUnderTest::DeviceUnderTest(const QString &program)
    : connectionName(QUuid::createUuid().toString())
    , process(program, Certificates::shared().bundle())
{
    if (!privateBus.start()) {
        qFatal("no private bus to test on");
    }
    // The framework's own messages too, wherever it would send them.
    process.setEnvironment(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));

    simulator = std::make_unique<DeviceSimulator>(privateBus.address());
    simulator->setApiKeyQuietly(apiKey);
    daemon().setRemoteId(QStringLiteral("d9"));
    daemon().setSerial(QStringLiteral("serial-1"));
    widgetManager().setWidgetsQuietly({QStringLiteral("u1"), QStringLiteral("u2"), QStringLiteral("u3")});
    if (!server().start(Certificates::shared().serverCertificate(), Certificates::shared().serverKey()) ||
        !watcher().start()) {
        qFatal("no device to test on: %s", qPrintable(server().errorText()));
    }
    serverHost = server().host();
    connect(&watcher(), &DaemonWatcher::received, this,
            [this](const QString &member, const QStringList &arguments) {
                announcements.append(
                    QStringLiteral("%1(%2)").arg(member, arguments.join(QStringLiteral(", "))));
            });

    QDBusConnection observer = QDBusConnection::connectToBus(privateBus.address(), connectionName);
    const QStringList interfaces = {QStringLiteral("com.vorlet.daemon.general"),
                                    QStringLiteral("com.vorlet.daemon.network"),
                                    QStringLiteral("com.vorlet.widget_manager.general")};
    for (const QString &interface : interfaces) {
        observer.connect(QString(), QString(), interface, QString(), this,
                         SLOT(noteDeviceSignal(QDBusMessage)));
    }
}

DeviceUnderTest::~DeviceUnderTest()
{
    QDBusConnection::disconnectFromBus(connectionName);
    if (process.processId() == 0) {
        return; // the test started none
    }
    const bool hasEnded = !process.isRunning();
    const QByteArray output = process.output();
    QVERIFY2(mayExit || !hasEnded, "the daemon ended by itself: " + output);
    QVERIFY2(!QwixtdProcess::hasComplaint(output), output.constData());
}

PrivateBus &DeviceUnderTest::bus()
{
    return privateBus;
}

DaemonService &DeviceUnderTest::daemon()
{
    return simulator->daemon();
}

WidgetManagerService &DeviceUnderTest::widgetManager()
{
    return simulator->widgetManager();
}

DeveloperServer &DeviceUnderTest::server()
{
    return simulator->server();
}

DaemonWatcher &DeviceUnderTest::watcher()
{
    return simulator->watcher();
}

QwixtdProcess &DeviceUnderTest::program()
{
    return process;
}

QDBusConnection DeviceUnderTest::connection() const
{
    return QDBusConnection(connectionName);
}

bool DeviceUnderTest::startServices()
{
    return widgetManager().start() && daemon().start();
}

bool DeviceUnderTest::startProgram()
{
    return process.start(privateBus.address(), serverHost) &&
           QTest::qWaitFor([this] { return answers() || !process.isRunning(); }, patienceMs) &&
           process.isRunning();
}

bool DeviceUnderTest::startAll()
{
    return startServices() && startProgram() &&
           QTest::qWaitFor([this] { return announced().contains(QStringLiteral("daemonDidStarted()")); },
                           patienceMs);
}

void DeviceUnderTest::useServer(const QString &host)
{
    serverHost = host;
}

void DeviceUnderTest::expectExit()
{
    mayExit = true;
}

bool DeviceUnderTest::setInternetAvailable(bool available)
{
    if (daemon().isInternetAvailable() == available) {
        return true; // the device says nothing then
    }
    const auto member = QStringLiteral("internetAvailabilityChanged");
    const int before = deviceSignals.value(member);
    daemon().setInternetAvailable(available);
    return waitForDeviceSignal(member, before);
}

bool DeviceUnderTest::setApiKey(const QString &key)
{
    const auto member = QStringLiteral("apiKeyDidSet");
    const int before = deviceSignals.value(member);
    simulator->setApiKey(key);
    return waitForDeviceSignal(member, before);
}

bool DeviceUnderTest::deleteWidget(const QString &id)
{
    const auto member = QStringLiteral("widgetDeleted");
    const int before = deviceSignals.value(member);
    return widgetManager().deleteWidget(id) && waitForDeviceSignal(member, before);
}

bool DeviceUnderTest::createWidget(const QString &id)
{
    const auto member = QStringLiteral("newWidgetCreated");
    const int before = deviceSignals.value(member);
    widgetManager().createWidget(id);
    return waitForDeviceSignal(member, before);
}

bool DeviceUnderTest::registerApplication(const QString &uuid, const QString &name, const QString &type)
{
    return isAnsweredEmpty(QStringLiteral("registerQwixtApplication"), {uuid, name, type});
}

bool DeviceUnderTest::updateApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                                        const QString &type)
{
    return isAnsweredEmpty(QStringLiteral("updateQwixtApplication"), {qwixtId, uuid, name, type});
}

bool DeviceUnderTest::deleteApplication(const QString &qwixtId, const QString &uuid, const QString &type)
{
    return isAnsweredEmpty(QStringLiteral("deleteQwixtApplication"), {qwixtId, uuid, type});
}

QDBusMessage DeviceUnderTest::call(const QString &interface, const QString &member,
                                   const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, QStringLiteral("/"), interface, member);
    message.setArguments(arguments);
    return connection().call(message, QDBus::Block, patienceMs);
}

QDBusMessage DeviceUnderTest::call(const QString &member, const QVariantList &arguments) const
{
    return call(interfaceName, member, arguments);
}

QStringList DeviceUnderTest::announced() const
{
    return announcements;
}

QStringList DeviceUnderTest::requested() const
{
    QStringList texts;
    const QList<HttpRequest> requests = simulator->server().requests();
    for (const HttpRequest &request : requests) {
        texts.append(QString::fromUtf8(request.method + ' ' + request.body).trimmed());
    }
    return texts;
}

QList<QByteArray> DeviceUnderTest::lines()
{
    return process.errorLines();
}

QList<QByteArray> DeviceUnderTest::lines(char level)
{
    const QByteArray beginning = level + QByteArray("/QWIXTD: ");
    QList<QByteArray> texts;
    const QList<QByteArray> all = lines();
    for (const QByteArray &line : all) {
        if (line.startsWith(beginning)) {
            texts.append(line.mid(beginning.size()));
        }
    }
    return texts;
}

bool DeviceUnderTest::hasLine(const QByteArray &line)
{
    return lines().contains(line);
}

void DeviceUnderTest::noteDeviceSignal(const QDBusMessage &message)
{
    ++deviceSignals[message.member()];
}

// The object is there and the main thread is in its event loop, so the device has been read.
bool DeviceUnderTest::answers() const
{
    const QDBusMessage reply =
        call(QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"), {});
    return reply.type() == QDBusMessage::ReplyMessage &&
           reply.arguments().value(0).toString().contains(interfaceName);
}

bool DeviceUnderTest::waitForDeviceSignal(const QString &member, int countBefore)
{
    return QTest::qWaitFor([&] { return deviceSignals.value(member) > countBefore; }, patienceMs);
}

bool DeviceUnderTest::isAnsweredEmpty(const QString &member, const QVariantList &arguments) const
{
    const QDBusMessage reply = call(member, arguments);
    return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().isEmpty();
}
