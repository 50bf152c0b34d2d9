#include "rawhttpserver.h"

#include <QRegularExpression>
#include <QString>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

bool isComplete(const QByteArray &request)
{
    const auto end = request.indexOf("\r\n\r\n");
    if (end < 0) {
        return false;
    }
    static const QRegularExpression length(QStringLiteral("\r\nContent-Length: (\\d+)"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = length.match(QString::fromLatin1(request.left(end)));
    return request.size() - end - 4 >= match.captured(1).toInt();
}

bool isReadable(int socket, int timeoutMs)
{
    pollfd waiting = {socket, POLLIN, 0};
    return poll(&waiting, 1, timeoutMs) > 0;
}

} // namespace

RawHttpServer::RawHttpServer()
    : listener(socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr *>(&address), size) != 0 || listen(listener, 8) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
        qFatal("no loopback port to listen on");
    }
    boundPort = ntohs(address.sin_port);
    thread = std::thread([this] { serve(); });
}

RawHttpServer::~RawHttpServer()
{
    stopping = true;
    thread.join();
    close(listener);
}

QString RawHttpServer::url(const char *path) const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(boundPort) + QString::fromLatin1(path);
}

void RawHttpServer::queueAnswer(const QByteArray &raw)
{
    const std::lock_guard<std::mutex> lock(mutex);
    answers.append(raw);
}

void RawHttpServer::queueAnswer(int status, const QByteArray &body)
{
    queueAnswer("HTTP/1.1 " + QByteArray::number(status) +
                " Text\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

QList<QByteArray> RawHttpServer::requests() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return received;
}

void RawHttpServer::serve()
{
    while (!stopping) {
        if (isReadable(listener, 20)) {
            const int connection = accept(listener, nullptr, nullptr);
            answerOne(connection);
            close(connection);
        }
    }
}

void RawHttpServer::answerOne(int connection)
{
    QByteArray request;
    char buffer[65536];
    while (!stopping && !isComplete(request)) {
        if (!isReadable(connection, 20)) {
            continue;
        }
        const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
        if (count <= 0) {
            break;
        }
        request.append(buffer, static_cast<int>(count));
    }
    const std::lock_guard<std::mutex> lock(mutex);
    received.append(request);
    if (!answers.isEmpty()) {
        const QByteArray answer = answers.takeFirst();
        send(connection, answer.constData(), static_cast<size_t>(answer.size()), MSG_NOSIGNAL);
    }
}
