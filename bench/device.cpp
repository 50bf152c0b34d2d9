#include "device.h"

#include "measures.h"

#include <QTest>
#include <QUuid>

namespace
{
constexpr int patienceMs = 60000;
constexpr int widgetDigits = 6;

bool isAnswered(const QDBusMessage &reply)
{
    return reply.type() == QDBusMessage::ReplyMessage;
}
} // namespace

const QString Device::service = QStringLiteral("com.qwixtd");
const QString Device::interfaceName = QStringLiteral("com.vorlet.qwixtd");
const QString Device::apiKey = QStringLiteral("k3y-0f/th3+dev1ce");
const QString Device::remoteId = QStringLiteral("d9");

Device::Device(const QString &bundle)
    : connectionName(QUuid::createUuid().toString())
    , process(QStringLiteral(QWIXTD_PROGRAM), bundle)
{
    require(bus.start(), QStringLiteral("no bus"));
    daemon = std::make_unique<DaemonService>(bus.address());
    daemon->setApiKeyQuietly(apiKey);
    daemon->setRemoteId(remoteId);
    daemon->setSerial(QStringLiteral("serial-1"));
    widgets = std::make_unique<WidgetManagerService>(bus.address());
    QDBusConnection observer = QDBusConnection::connectToBus(bus.address(), connectionName);
    observer.connect(QString(), QString(), interfaceName, QStringLiteral("daemonDidStarted"), this,
                     SLOT(noteStarted()));
    observer.connect(QString(), QString(), QStringLiteral("com.vorlet.daemon.network"),
                     QStringLiteral("internetAvailabilityChanged"), this, SLOT(noteInternet(bool)));
}

Device::~Device()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

DaemonService &Device::daemonService()
{
    return *daemon;
}

WidgetManagerService &Device::widgetManager()
{
    return *widgets;
}

QString Device::busAddress() const
{
    return bus.address();
}

QDBusConnection Device::connection() const
{
    return QDBusConnection(connectionName);
}

qint64 Device::processId() const
{
    return process.processId();
}

void Device::start(const QString &serverHost)
{
    daemon->setInternetAvailable(false);
    require(widgets->start() && daemon->start(), QStringLiteral("the device does not start"));
    require(process.start(bus.address(), serverHost), QStringLiteral("the daemon does not start"));
    require(QTest::qWaitFor([this] { return introspect(connection()).contains(interfaceName); }, patienceMs),
            QStringLiteral("the daemon does not answer"));
}

void Device::startReady(const QString &serverHost)
{
    start(serverHost);
    goOnline();
    waitForList();
    waitForMainThread();
}

void Device::goOffline()
{
    require(QTest::qWaitFor([this] { return isOnline; }, patienceMs),
            QStringLiteral("the device is offline"));
    daemon->setInternetAvailable(false);
    require(QTest::qWaitFor([this] { return !isOnline; }, patienceMs),
            QStringLiteral("the bus does not carry the device's signal"));
    waitForMainThread();
}

void Device::goOnline()
{
    daemon->setInternetAvailable(true);
}

bool Device::hasList() const
{
    return starts > 0;
}

void Device::waitForList()
{
    require(QTest::qWaitFor([this] { return hasList(); }, patienceMs),
            QStringLiteral("the daemon does not get its list"));
}

void Device::registerWidgets(int first, int count)
{
    for (int number = first; number < first + count; ++number) {
        registerWidget(number);
    }
}

void Device::registerWidget(int number)
{
    require(isAnswered(connection().call(registration(service, number), QDBus::Block, patienceMs)),
            QStringLiteral("a registration is not answered"));
}

void Device::waitForMainThread()
{
    require(!introspect(connection()).isEmpty(), QStringLiteral("the daemon does not answer"));
}

QString Device::introspect(const QDBusConnection &bus)
{
    const QDBusMessage call = QDBusMessage::createMethodCall(
        service, QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Introspectable"),
        QStringLiteral("Introspect"));
    return bus.call(call, QDBus::Block, patienceMs).arguments().value(0).toString();
}

QString Device::widget(int number)
{
    return QStringLiteral("w%1").arg(number, widgetDigits, 10, QLatin1Char('0'));
}

QDBusMessage Device::registration(const QString &serviceName, int number)
{
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName, QStringLiteral("/"), interfaceName,
                                                          QStringLiteral("registerQwixtApplication"));
    message.setArguments({widget(number), QStringLiteral("Clock"), QStringLiteral("t")});
    return message;
}

void Device::noteStarted()
{
    ++starts;
}

void Device::noteInternet(bool isAvailable)
{
    isOnline = isAvailable;
}
