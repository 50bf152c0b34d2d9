#include "frontserver.h"

#include "lastingport.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>

namespace
{
constexpr int startTimeoutMs = 10000;
constexpr int stopTimeoutMs = 5000;
constexpr int connectTimeoutMs = 200;

// A status of 444 from the developer server becomes a stream that is reset without an answer. Nothing is sent
// to the developer server a second time.
const char configuration[] = R"(daemon off;
master_process off;
pid nginx.pid;
error_log error.log;
events { worker_connections 64; }
http {
  log_format runs escape=json '{"id":"$request_id","end":"$msec","took":"$request_time",'
    '"method":"$request_method","body":"$request_body","protocol":"$server_protocol","status":"$status",'
    '"length":"$upstream_http_content_length","received":"$upstream_response_length"}';
  access_log access.log runs;
  client_body_temp_path body;
  proxy_temp_path proxy;
  fastcgi_temp_path fastcgi;
  uwsgi_temp_path uwsgi;
  scgi_temp_path scgi;
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

FrontServer::FrontServer(const QString &directory_, const QString &certificate, const QString &key,
                         quint16 backendPort)
    : directory(directory_)
    , boundPort(LastingPort::find())
{
    QFile file(directory.filePath(QStringLiteral("nginx.conf")));
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    file.write(QString::fromLatin1(configuration)
                   .arg(QString::number(boundPort), certificate, key, QString::number(backendPort))
                   .toUtf8());
}

FrontServer::~FrontServer()
{
    stop(End::Killed);
}

bool FrontServer::start()
{
    // setpriv has it killed with the test program, however that ends.
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("setpriv"),
                  {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"), QStringLiteral("nginx"),
                   QStringLiteral("-e"), QStringLiteral("error.log"), QStringLiteral("-c"),
                   QStringLiteral("nginx.conf"), QStringLiteral("-p"), directory.path() + QLatin1Char('/')});
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < startTimeoutMs && process.state() != QProcess::NotRunning) {
        if (takesConnections()) {
            return true;
        }
        process.waitForFinished(10);
    }
    qWarning("nginx does not start: %s; see error.log in %s", qPrintable(process.errorString()),
             qPrintable(directory.path()));
    return false;
}

void FrontServer::stop(End how)
{
    if (!isRunning()) {
        return;
    }
    if (how == End::Killed) {
        process.kill();
    } else {
        process.terminate();
    }
    process.waitForFinished(stopTimeoutMs);
}

bool FrontServer::isRunning() const
{
    return process.state() != QProcess::NotRunning;
}

quint16 FrontServer::port() const
{
    return boundPort;
}

QList<FrontRun> FrontServer::newRuns()
{
    QFile log(directory.filePath(QStringLiteral("access.log")));
    if (!log.open(QIODevice::ReadOnly) || !log.seek(logRead)) {
        return {};
    }
    const QByteArray text = log.readAll();
    const auto wholeLines = text.lastIndexOf('\n') + 1;
    logRead += wholeLines;
    QList<FrontRun> runs;
    const QList<QByteArray> lines = text.left(wholeLines).split('\n');
    for (const QByteArray &line : lines) {
        if (!line.isEmpty()) {
            runs.append(runOf(line));
        }
    }
    return runs;
}

bool FrontServer::takesConnections() const
{
    QTcpSocket probe;
    probe.connectToHost(QStringLiteral("127.0.0.1"), boundPort);
    return probe.waitForConnected(connectTimeoutMs);
}
