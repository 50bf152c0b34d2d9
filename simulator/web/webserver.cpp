#include "webserver.h"

#include "devicestate.h"
#include "eventstream.h"
#include "requestguard.h"
#include "tracefile.h"

#include <QJsonDocument>

namespace
{
constexpr int gatheringMs = 20;
constexpr int mostConnections = 64;
constexpr int largestCommand = 16 * 1024;

// The page takes nothing from elsewhere and stands in nobody's frame.
const auto protection = QByteArrayLiteral(
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
    "img-src 'self' data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "Referrer-Policy: no-referrer\r\n"
    "Cross-Origin-Resource-Policy: same-origin\r\n"
    "Cross-Origin-Opener-Policy: same-origin\r\n"
    "Cache-Control: no-store\r\n");

HttpAnswer answerOf(int status, const QByteArray &contentType, const QByteArray &body)
{
    HttpAnswer answer;
    answer.status = status;
    answer.contentType = contentType;
    answer.headers = protection;
    answer.body = body;
    return answer;
}

HttpAnswer refusal(int status, const QString &reason)
{
    return answerOf(status, "text/plain; charset=utf-8", reason.toUtf8() + '\n');
}

QByteArray typeOf(const QString &name)
{
    const QString ending = name.section(QLatin1Char('.'), -1);
    if (ending == QStringLiteral("js")) {
        return "text/javascript; charset=utf-8";
    }
    return "text/" + ending.toLatin1() + "; charset=utf-8";
}

QByteArray queryValue(const QByteArray &target, const QByteArray &key)
{
    const auto start = target.indexOf('?' + key + '=');
    return start < 0 ? QByteArray() : target.mid(start + key.size() + 2);
}
} // namespace

WebServer::WebServer(DeviceSimulator &simulator_, CommandInterpreter &interpreter_, QObject *parent)
    : HttpServer(parent)
    , simulator(simulator_)
    , interpreter(interpreter_)
    , busEvents(monitor, log)
    , httpEvents(simulator.server(), monitor, log)
{
    setMostConnections(mostConnections);
    setLargestBody(largestCommand);
    // Nobody asks this server what it was asked.
    setMostOnRecord(0);
    pause.setSingleShot(true);
    pause.setInterval(gatheringMs);
    connect(&pause, &QTimer::timeout, this, &HttpServer::wakeStreams);
    connect(&log, &EventLog::appended, this, &WebServer::announce);
    connect(&interpreter, &CommandInterpreter::executed, this, &WebServer::announce);
    connect(&simulator, &DeviceSimulator::noted, this, [this](const QString &text) {
        log.append({{QStringLiteral("kind"), QStringLiteral("note")},
                    {QStringLiteral("from"), QString()},
                    {QStringLiteral("to"), QString()},
                    {QStringLiteral("title"), text}});
    });
}

QString WebServer::open(const QString &busAddress, quint16 port)
{
    if (!monitor.start(busAddress)) {
        return QStringLiteral("cannot watch the bus at %1: %2").arg(busAddress, monitor.errorText());
    }
    return start(port) ? QString() : errorText();
}

const EventLog &WebServer::events() const
{
    return log;
}

HttpAnswer WebServer::ordinaryAnswer(const HttpRequest &request)
{
    const QString problem = RequestGuard::refusal(request, port());
    if (!problem.isEmpty()) {
        return refusal(403, problem);
    }
    const QByteArray path = request.target.split('?').first();
    if (path == "/commands") {
        return request.method == "POST" ? obey(request)
                                        : refusal(405, QStringLiteral("commands come by POST"));
    }
    if (request.method != "GET") {
        return refusal(405, QStringLiteral("only GET is understood here"));
    }
    if (path == "/events") {
        return stream(request);
    }
    if (path == "/trace.html") {
        return traceFile();
    }
    return page(path == "/" ? QStringLiteral("index.html") : QString::fromLatin1(path.mid(1)));
}

HttpAnswer WebServer::page(const QString &name) const
{
    const QByteArray text = PageFiles::read(name);
    return text.isEmpty() ? refusal(404, QStringLiteral("there is no such page"))
                          : answerOf(200, typeOf(name), text);
}

HttpAnswer WebServer::stream(const HttpRequest &request)
{
    // A browser names the last event by itself when it reconnects, the page when it has to begin anew.
    const QByteArray header = request.header("Last-Event-ID");
    const QByteArray lastId = header.isEmpty() ? queryValue(request.target, "after") : header;
    HttpAnswer answer = answerOf(200, "text/event-stream", {});
    answer.framing = HttpAnswer::Framing::Streamed;
    const auto state = [this] { return DeviceState::json(simulator, monitor); };
    answer.source = [events = std::make_shared<EventStream>(log, state, lastId)] { return events->next(); };
    return answer;
}

HttpAnswer WebServer::obey(const HttpRequest &request)
{
    const QString line = QString::fromUtf8(request.body);
    if (line.contains(QLatin1Char('\n')) || line.contains(QLatin1Char('\r'))) {
        return refusal(400, QStringLiteral("a command is one line"));
    }
    const QJsonObject answer{{QStringLiteral("answer"), interpreter.execute(line)}};
    return answerOf(200, "application/json", QJsonDocument(answer).toJson(QJsonDocument::Compact));
}

HttpAnswer WebServer::traceFile() const
{
    HttpAnswer answer = answerOf(200, "text/html; charset=utf-8", TraceFile::html(log));
    answer.headers += "Content-Disposition: attachment; filename=\"qwixt-trace.html\"\r\n";
    return answer;
}

void WebServer::announce()
{
    if (!pause.isActive()) {
        pause.start();
    }
}
