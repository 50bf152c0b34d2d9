#include "nginx.h"

#include "lastingport.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTcpSocket>

namespace
{
constexpr int startTimeoutMs = 10000;
constexpr int stopTimeoutMs = 5000;
constexpr int connectTimeoutMs = 200;

const char configuration[] = R"(daemon off;
master_process off;
pid nginx.pid;
error_log error.log;
events { worker_connections 4096; }
http {
  client_body_temp_path body;
  proxy_temp_path proxy;
  fastcgi_temp_path fastcgi;
  uwsgi_temp_path uwsgi;
  scgi_temp_path scgi;
%1}
)";
} // namespace

Nginx::Nginx(const QString &directory_)
    : directory(directory_)
    , boundPort(LastingPort::find())
{
}

Nginx::~Nginx()
{
    stop(End::Killed);
}

quint16 Nginx::port() const
{
    return boundPort;
}

QString Nginx::filePath(const QString &name) const
{
    return directory.filePath(name);
}

void Nginx::configure(const QString &http)
{
    QFile file(filePath(QStringLiteral("nginx.conf")));
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    file.write(QString::fromLatin1(configuration).arg(http).toUtf8());
}

bool Nginx::start()
{
    // setpriv has it killed with the program that made it, however that ends.
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

void Nginx::stop(End how)
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

bool Nginx::isRunning() const
{
    return process.state() != QProcess::NotRunning;
}

qint64 Nginx::processId() const
{
    return process.processId();
}

QList<QByteArray> Nginx::newLogLines()
{
    QFile log(filePath(QStringLiteral("access.log")));
    if (!log.open(QIODevice::ReadOnly) || !log.seek(logRead)) {
        return {};
    }
    const QByteArray text = log.readAll();
    const auto wholeLines = text.lastIndexOf('\n') + 1;
    logRead += wholeLines;
    QList<QByteArray> lines = text.left(wholeLines).split('\n');
    lines.removeLast();
    return lines;
}

bool Nginx::takesConnections() const
{
    QTcpSocket probe;
    probe.connectToHost(QStringLiteral("127.0.0.1"), boundPort);
    return probe.waitForConnected(connectTimeoutMs);
}
