#include "devicesimulator.h"

#include "tracetext.h"

#include <QTime>

namespace
{
const auto hidden = QStringLiteral("\"***\"");

bool carriesTheKey(const QString &member)
{
    return member == QStringLiteral("apiKey") || member == QStringLiteral("apiKeyDidSet");
}

// The values of a member, with the API key's hidden; an empty key is no secret.
QString shown(const QString &member, const QVariantList &values)
{
    const bool hasSecret = carriesTheKey(member) && !values.value(0).toString().isEmpty();
    return hasSecret ? QLatin1Char('(') + hidden + QLatin1Char(')') : TraceText::arguments(values);
}

QString requestText(const HttpRequest &request)
{
    QString text = QStringLiteral("%1 %2").arg(TraceText::printable(request.method),
                                               TraceText::printable(request.target));
    if (!request.body.isEmpty()) {
        text += QLatin1Char(' ') + TraceText::printable(request.body);
    }
    return text;
}
} // namespace

DeviceSimulator::DeviceSimulator(const QString &busAddress, QObject *parent)
    : QObject(parent)
    , daemonService(busAddress)
    , widgetManagerService(busAddress)
    , daemonWatcher(busAddress)
{
    follow(daemonService);
    follow(widgetManagerService);
    connect(&developerServer, &DeveloperServer::held, this, [this](const HttpRequest &request, int delayMs) {
        trace("http", QStringLiteral("%1 -> held back for %2 ms").arg(requestText(request)).arg(delayMs));
    });
    connect(&developerServer, &DeveloperServer::answered, this, &DeviceSimulator::traceRequest);
    connect(&developerServer, &DeveloperServer::handshakeFailed, this, [this](const QString &reason) {
        trace("http", QStringLiteral("TLS handshake failed: ") + TraceText::printable(reason));
    });
    connect(&daemonWatcher, &DaemonWatcher::received, this,
            [this](const QString &member, const QStringList &arguments) {
                trace("signal",
                      QStringLiteral("com.vorlet.qwixtd.") + member + TraceText::arguments(arguments));
            });
    connect(&daemonWatcher, &DaemonWatcher::answered, this,
            [this](const QString &member, const QStringList &arguments, const QString &error) {
                trace("widget",
                      member + TraceText::arguments(arguments) +
                          (error.isEmpty() ? QStringLiteral(" -> answered")
                                           : QStringLiteral(" -> error ") + TraceText::printable(error)));
            });
    connect(&daemonWatcher, &DaemonWatcher::daemonAppeared, this,
            [this] { trace("device", QStringLiteral("com.qwixtd is on the bus")); });
    connect(&daemonWatcher, &DaemonWatcher::daemonVanished, this,
            [this] { trace("device", QStringLiteral("com.qwixtd is gone from the bus")); });
}

DeviceSimulator::~DeviceSimulator() = default;

DaemonService &DeviceSimulator::daemon()
{
    return daemonService;
}

WidgetManagerService &DeviceSimulator::widgetManager()
{
    return widgetManagerService;
}

DeveloperServer &DeviceSimulator::server()
{
    return developerServer;
}

DaemonWatcher &DeviceSimulator::watcher()
{
    return daemonWatcher;
}

DaemonProcess &DeviceSimulator::daemonProcess()
{
    return process;
}

void DeviceSimulator::setApiKey(const QString &key)
{
    developerServer.setApiKey(key);
    daemonService.setApiKey(key);
}

void DeviceSimulator::setApiKeyQuietly(const QString &key)
{
    developerServer.setApiKey(key);
    daemonService.setApiKeyQuietly(key);
}

void DeviceSimulator::clearApiKey()
{
    daemonService.setApiKey(QString::fromLatin1(""));
}

void DeviceSimulator::note(const QString &text)
{
    trace("note", TraceText::printable(text));
    Q_EMIT noted(text);
}

void DeviceSimulator::trace(const char *kind, const QString &text)
{
    Q_EMIT traced(QStringLiteral("%1 %2 %3")
                      .arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz")),
                           QString::fromLatin1(kind).leftJustified(6), text));
}

void DeviceSimulator::follow(BusService &service)
{
    const QString name = service.serviceName();
    connect(&service, &BusService::started, this,
            [this, name] { trace("device", name + QStringLiteral(" starts")); });
    connect(&service, &BusService::stopped, this,
            [this, name] { trace("device", name + QStringLiteral(" stops")); });
    connect(&service, &BusService::called, this,
            [this, name](const QString &member, const QVariantList &values, const QString &error) {
                const QString answer = error.isEmpty()
                                           ? shown(member, values)
                                           : QStringLiteral("error ") + TraceText::printable(error);
                trace("bus", QStringLiteral("%1 %2() -> %3").arg(name, member, answer));
            });
    connect(&service, &BusService::signalSent, this,
            [this, name](const QString &member, const QVariantList &arguments) {
                trace("device", QStringLiteral("%1 says %2%3").arg(name, member, shown(member, arguments)));
            });
}

void DeviceSimulator::traceRequest(const HttpRequest &request)
{
    const QString answer =
        request.status == 0
            ? QStringLiteral("connection closed")
            : QStringLiteral("%1 %2").arg(request.status).arg(TraceText::printable(request.answerBody));
    trace("http", requestText(request) + QStringLiteral(" -> ") + answer);
}
