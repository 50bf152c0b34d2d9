#include "staticserver.h"

#include "certificates.h"
#include "measures.h"

#include <QFile>
#include <QTest>

#include <csignal>

namespace
{
constexpr int pollMs = 20;
constexpr int patienceMs = 600000;
constexpr int ok = 200;

const char configuration[] = R"(
  log_format answered '$msec $request_length $content_length $status $request_method';
  access_log access.log answered;
  default_type application/json;
  server {
    listen 127.0.0.1:%1 ssl http2;
    ssl_certificate "%2";
    ssl_certificate_key "%3";
    ssl_protocols TLSv1.3;
    location / {
      if ($request_method = GET) { rewrite ^ /list.json last; }
      return 200 '{"app_id":"app-1","status":"ok"}';
    }
    location = /list.json {
      internal;
      root "%4";
    }
  }
)";

AnsweredRequest readLine(const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    require(words.size() == 5, QStringLiteral("nginx wrote \"%1\"").arg(QString::fromUtf8(line)));
    // The length of a request is that of its head here, and without a body there is a "-".
    const int bytes = words.at(1).toInt() + words.at(2).toInt();
    return {words.at(0).toDouble() * 1000, bytes, words.at(3).toInt(), words.at(4)};
}
} // namespace

StaticServer::StaticServer()
    : nginx(directory.path())
{
    const Certificates &certificates = Certificates::shared();
    nginx.configure(QString::fromLatin1(configuration)
                        .arg(QString::number(nginx.port()), certificates.serverCertificate(),
                             certificates.serverKey(), directory.path()));
    setList("{\"apps\":[]}");
    require(nginx.start(), QStringLiteral("nginx does not start"));
}

QString StaticServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(nginx.port());
}

qint64 StaticServer::processId() const
{
    return nginx.processId();
}

void StaticServer::setList(const QByteArray &reply)
{
    QFile file(nginx.filePath(QStringLiteral("list.json")));
    require(file.open(QIODevice::WriteOnly) && file.write(reply) == reply.size() && file.flush(),
            QStringLiteral("the list cannot be written"));
}

void StaticServer::freeze()
{
    ::kill(static_cast<pid_t>(nginx.processId()), SIGSTOP);
}

void StaticServer::thaw()
{
    ::kill(static_cast<pid_t>(nginx.processId()), SIGCONT);
}

void StaticServer::clear()
{
    nginx.newLogLines();
    answered.clear();
}

QVector<AnsweredRequest> StaticServer::waitForAnswered(int count)
{
    require(QTest::qWaitFor(
                [&] {
                    QTest::qWait(pollMs);
                    return answeredCount() >= count;
                },
                patienceMs),
            QStringLiteral("%1 of %2 requests came").arg(answered.size()).arg(count));
    return answered;
}

int StaticServer::answeredCount()
{
    collect();
    return static_cast<int>(answered.size());
}

void StaticServer::collect()
{
    const QList<QByteArray> lines = nginx.newLogLines();
    for (const QByteArray &line : lines) {
        answered.append(readLine(line));
        require(answered.last().status == ok,
                QStringLiteral("the server answered %1").arg(answered.last().status));
    }
}
