#include "frontserver.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace
{
// A status of 444 from the developer server becomes a stream that is reset without an answer. Nothing is sent
// to the developer server a second time.
const char configuration[] =
    R"(  log_format runs escape=json '{"id":"$request_id","end":"$msec","took":"$request_time",'
    '"method":"$request_method","body":"$request_body","protocol":"$server_protocol","status":"$status",'
    '"length":"$upstream_http_content_length","received":"$upstream_response_length"}';
  access_log access.log runs;
  reset_timedout_connection on;
  server {
    listen 127.0.0.1:%1 ssl http2;
    ssl_certificate "%2";
    ssl_certificate_key "%3";
    location / {
      proxy_pass http://127.0.0.1:%4;
      proxy_set_header X-Run $request_id;
      proxy_next_upstream off;
      proxy_intercept_errors on;
      error_page 444 = @reset;
    }
    location @reset { return 444; }
  }
)";

qint64 milliseconds(const QJsonValue &seconds)
{
    return qRound64(seconds.toString().toDouble() * 1000);
}

FrontRun runOf(const QByteArray &line)
{
    const QJsonObject entry = QJsonDocument::fromJson(line).object();
    const auto text = [&entry](const char *key) {
        return entry.value(QLatin1String(key)).toString().toUtf8();
    };
    FrontRun run;
    run.id = text("id");
    run.endMs = milliseconds(entry.value(QStringLiteral("end")));
    run.beginMs = run.endMs - milliseconds(entry.value(QStringLiteral("took")));
    run.request = (text("method") + ' ' + text("body")).trimmed();
    run.protocol = text("protocol");
    run.status = text("status").toInt();
    run.isWhole = text("length") == text("received") || run.status >= 500;
    return run;
}
} // namespace

FrontServer::FrontServer(const QString &place, const QString &certificate, const QString &key,
                         quint16 backendPort)
    : Nginx(place)
{
    configure(QString::fromLatin1(configuration)
                  .arg(QString::number(port()), certificate, key, QString::number(backendPort)));
}

QList<FrontRun> FrontServer::newRuns()
{
    QList<FrontRun> runs;
    const QList<QByteArray> lines = newLogLines();
    for (const QByteArray &line : lines) {
        runs.append(runOf(line));
    }
    return runs;
}
