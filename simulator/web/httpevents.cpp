#include "httpevents.h"

#include "lane.h"
#include "tracetext.h"

#include <QJsonDocument>

#include <algorithm>

namespace
{
constexpr int largestShown = 64 * 1024;
constexpr int mostFailures = 10000;

QByteArray whatIsAsked(const HttpRequest &request)
{
    return request.method + ' ' + request.target + ' ' + request.body;
}

QString titleOf(const HttpRequest &request)
{
    return TraceText::printable(request.body.isEmpty() ? request.method + ' ' + request.target
                                                       : whatIsAsked(request));
}

QByteArray fieldOf(const QByteArray &body, const QByteArray &key)
{
    const QList<QByteArray> pairs = body.split('&');
    for (const QByteArray &pair : pairs) {
        if (pair.startsWith(key + '=')) {
            return pair.mid(key.size() + 1);
        }
    }
    return {};
}

// Why the client cannot be content with an answer; empty when it can.
QString whatFailed(const HttpRequest &request)
{
    if (request.status == 0) {
        return QStringLiteral("connection closed");
    }
    if (request.status < 200 || request.status > 299) {
        return QStringLiteral("status %1").arg(request.status);
    }
    QJsonParseError error{};
    QJsonDocument::fromJson(request.answerBody, &error);
    return error.error == QJsonParseError::NoError ? QString() : QStringLiteral("the body is no JSON");
}
} // namespace

HttpEvents::HttpEvents(DeveloperServer &server_, BusMonitor &monitor_, EventLog &log_, QObject *parent)
    : QObject(parent)
    , server(server_)
    , monitor(monitor_)
    , log(log_)
{
    connect(&server, &HttpServer::received, this, &HttpEvents::takeRequest);
    connect(&server, &HttpServer::answered, this, &HttpEvents::takeAnswer);
    connect(&server, &HttpServer::held, this, [this](const HttpRequest & /*request*/, int delayMs) {
        note(QStringLiteral("answer held back for %1 ms").arg(delayMs), false);
    });
    connect(&server, &HttpServer::handshakeFailed, this, [this](const QString &reason) {
        note(QStringLiteral("TLS handshake failed: ") + TraceText::printable(reason), true);
    });
}

QByteArray HttpEvents::withoutSecrets(const HttpRequest &request)
{
    const auto bodyStart = request.bytes.indexOf("\r\n\r\n") + 4;
    QList<QByteArray> lines = request.bytes.left(bodyStart).split('\n');
    for (QByteArray &line : lines) {
        const auto colon = line.indexOf(':');
        if (line.left(colon).compare("Authorization", Qt::CaseInsensitive) == 0) {
            line = line.left(colon + 1) + " ***\r";
        }
    }
    return (lines.join('\n') + request.body).left(largestShown);
}

void HttpEvents::takeRequest(const HttpRequest &request)
{
    monitor.readWhatIsThere();
    const QByteArray bytes = withoutSecrets(request);
    const QString widget = widgetOf(request);
    QJsonObject event{{QStringLiteral("kind"), QStringLiteral("request")},
                      {QStringLiteral("from"), Lane::qwixtd},
                      {QStringLiteral("to"), Lane::server},
                      {QStringLiteral("title"), titleOf(request)},
                      {QStringLiteral("widget"), widget},
                      {QStringLiteral("bytes"), QString::fromLatin1(bytes)}};
    const auto failure = failures.constFind(whatIsAsked(request));
    if (failure != failures.constEnd()) {
        event.insert(QStringLiteral("retryOf"), failure->number);
        event.insert(QStringLiteral("retryAfterMs"), EventLog::nowMs() - failure->time);
    }
    asked[request.number] = {log.append(event), widget};
}

void HttpEvents::takeAnswer(const HttpRequest &request)
{
    monitor.readWhatIsThere();
    const Asked question = asked.take(request.number);
    const QString failure = whatFailed(request);
    const QString title =
        request.status == 0
            ? failure
            : QStringLiteral("%1 %2").arg(request.status).arg(TraceText::printable(request.answerBody));
    const QJsonObject event{{QStringLiteral("kind"), QStringLiteral("response")},
                            {QStringLiteral("from"), Lane::server},
                            {QStringLiteral("to"), Lane::qwixtd},
                            {QStringLiteral("title"), title},
                            {QStringLiteral("widget"), question.widget},
                            {QStringLiteral("re"), question.number},
                            {QStringLiteral("status"), request.status},
                            {QStringLiteral("ms"), request.answeredAtMs - request.receivedAtMs},
                            {QStringLiteral("failed"), !failure.isEmpty()},
                            {QStringLiteral("failure"), failure},
                            {QStringLiteral("size"), static_cast<qint64>(request.answerBody.size())},
                            {QStringLiteral("bytes"), QString::fromLatin1(request.answerBytes)}};
    const qint64 number = log.append(event);
    failures.remove(whatIsAsked(request));
    if (!failure.isEmpty()) {
        failures[whatIsAsked(request)] = {number, EventLog::nowMs()};
        forgetTheOldestFailure();
    }
}

void HttpEvents::forgetTheOldestFailure()
{
    if (failures.size() > mostFailures) {
        failures.erase(std::min_element(
            failures.cbegin(), failures.cend(),
            [](const Failure &one, const Failure &other) { return one.number < other.number; }));
    }
}

void HttpEvents::note(const QString &text, bool isFailure)
{
    log.append({{QStringLiteral("kind"), QStringLiteral("note")},
                {QStringLiteral("from"), Lane::server},
                {QStringLiteral("to"), Lane::server},
                {QStringLiteral("title"), text},
                {QStringLiteral("failed"), isFailure}});
}

// A registration names its widget; an update or a deletion names the application that the server has for it.
QString HttpEvents::widgetOf(const HttpRequest &request) const
{
    const QByteArray identifier = fieldOf(request.body, "identifier");
    if (!identifier.isEmpty()) {
        return QString::fromUtf8(identifier);
    }
    const QString appId = QString::fromUtf8(fieldOf(request.body, "app_id"));
    const QList<ServerApplication> applications = server.applications();
    for (const ServerApplication &application : applications) {
        if (application.appId == appId) {
            return application.identifier;
        }
    }
    return {};
}
