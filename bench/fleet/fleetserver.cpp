#include "fleetserver.h"

#include "certificates.h"
#include "lastingport.h"
#include "measures.h"

namespace
{
constexpr int serviceUnavailable = 503;
constexpr int msPerSecond = 1000;

const char configuration[] = R"(
  log_format fleet '$msec $request_time $connection $ssl_session_reused $status $request_method';
  access_log access.log fleet;
  server {
    listen 127.0.0.1:%1 ssl http2 backlog=4096;
    ssl_certificate "%2";
    ssl_certificate_key "%3";
    ssl_protocols TLSv1.3;
    location / {
      proxy_pass http://127.0.0.1:%4;
      proxy_next_upstream off;
    }
  }
)";

FleetRequest readLine(const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    require(words.size() == 6, QStringLiteral("nginx wrote \"%1\"").arg(QString::fromUtf8(line)));
    // nginx writes the line at the request's end.
    const double startSeconds = words.at(0).toDouble() - words.at(1).toDouble();
    return {startSeconds * msPerSecond, words.at(2).toLongLong(), words.at(3) == "r", words.at(4).toInt(),
            words.at(5)};
}
} // namespace

FleetServer::FleetServer(const QString &apiKey)
    : front(directory.path())
    , developerPort(LastingPort::find())
{
    const Certificates &certificates = Certificates::shared();
    developer.setApiKey(apiKey);
    front.configure(QString::fromLatin1(configuration)
                        .arg(QString::number(front.port()), certificates.serverCertificate(),
                             certificates.serverKey(), QString::number(developerPort)));
    recover();
    require(front.start(), QStringLiteral("nginx does not start"));
}

quint16 FleetServer::port() const
{
    return front.port();
}

QString FleetServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(front.port());
}

qint64 FleetServer::processorNs() const
{
    return Measure::processorNs(front.processId());
}

void FleetServer::fail(int holdSeconds)
{
    if (holdSeconds == 0) {
        developer.stop();
        return;
    }
    ServerFault fault = ServerFault::withStatus(serviceUnavailable);
    fault.delayMs = holdSeconds * msPerSecond;
    developer.failAlways(fault);
}

void FleetServer::recover()
{
    developer.clearFaults();
    require(developer.isRunning() || developer.start(developerPort), developer.errorText());
}

int FleetServer::applicationCount() const
{
    return static_cast<int>(developer.applications().size());
}

QVector<FleetRequest> FleetServer::requests()
{
    const QList<QByteArray> lines = front.newLogLines();
    for (const QByteArray &line : lines) {
        seen.append(readLine(line));
    }
    return seen;
}
