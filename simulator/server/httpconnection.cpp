#include "httpconnection.h"

#include <QSslSocket>

#include <sys/socket.h>

namespace
{
// An endless answer grows by this much at a time.
constexpr int repeatedSize = 64 * 1024;
// What comes while a request is being answered waits in the socket, and beyond this with the client.
constexpr int mostUnread = 64 * 1024;
} // namespace

HttpConnection::HttpConnection(QTcpSocket *socket_, int largestBody, QObject *parent)
    : QObject(parent)
    , socket(socket_)
    , reader(largestBody)
{
    socket->setParent(this);
    socket->setReadBufferSize(mostUnread);
    connect(socket, &QTcpSocket::readyRead, this, &HttpConnection::readWhatIsThere);
    connect(socket, &QTcpSocket::disconnected, this, &HttpConnection::closed);
    auto *const tls = qobject_cast<QSslSocket *>(socket);
    if (tls == nullptr) {
        connect(socket, &QTcpSocket::bytesWritten, this, &HttpConnection::goOn);
    } else {
        // What is written is still to be encrypted; only what is encrypted can be sent.
        connect(tls, &QSslSocket::encryptedBytesWritten, this, &HttpConnection::goOn);
        connect(tls, &QSslSocket::errorOccurred, this, &HttpConnection::checkHandshake);
    }
}

HttpConnection::~HttpConnection()
{
    // A socket that closes late has nobody to report to.
    socket->disconnect(this);
    // An answer that is written may still wait for the event loop, which may have ended with the program.
    socket->flush();
}

void HttpConnection::send(const HttpAnswer &answer)
{
    ending = answer.ending;
    isAwaitingAnswer = false;
    isSending = true;
    repeated.clear();
    source = answer.framing == HttpAnswer::Framing::Streamed ? answer.source : nullptr;
    if (answer.framing == HttpAnswer::Framing::Endless) {
        const QByteArray block = answer.body.isEmpty() ? QByteArray(1, ' ') : answer.body;
        repeated = block.repeated(repeatedSize / static_cast<int>(block.size()) + 1);
    }
    socket->write(answer.text());
    goOn();
}

void HttpConnection::cutOff()
{
    endAs(HttpAnswer::Ending::CutOff);
}

void HttpConnection::checkHandshake()
{
    const auto *const tls = qobject_cast<const QSslSocket *>(socket);
    if (tls->isEncrypted() || hasFailed) {
        return;
    }
    hasFailed = true;
    const QString reason = tls->errorString();
    cutOff();
    Q_EMIT handshakeFailed(reason);
}

void HttpConnection::readWhatIsThere()
{
    if (!isAwaitingAnswer && !isSending) {
        reader.add(socket->readAll());
        takeRequest();
    }
}

void HttpConnection::takeRequest()
{
    if (const std::optional<HttpRequest> request = reader.take()) {
        isAwaitingAnswer = true;
        HttpRequest whole = *request;
        whole.remotePort = socket->peerPort();
        Q_EMIT received(whole);
    } else if (reader.isMalformed()) {
        send(HttpAnswer::exactly(
            "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"));
    }
}

void HttpConnection::goOn()
{
    if (!isSending || !isAllSent()) {
        return;
    }
    if (!repeated.isEmpty()) {
        socket->write(repeated);
        return;
    }
    if (source) {
        const QByteArray next = source();
        if (!next.isEmpty()) {
            socket->write(next);
        }
        return;
    }
    isSending = false;
    endAs(ending);
}

bool HttpConnection::isAllSent() const
{
    const auto *const tls = qobject_cast<const QSslSocket *>(socket);
    return socket->bytesToWrite() == 0 && (tls == nullptr || tls->encryptedBytesToWrite() == 0);
}

void HttpConnection::endAs(HttpAnswer::Ending how)
{
    switch (how) {
    case HttpAnswer::Ending::KeepOpen:
        readWhatIsThere();
        break;
    case HttpAnswer::Ending::Close:
        socket->disconnectFromHost();
        break;
    case HttpAnswer::Ending::CutOff:
        socket->abort();
        break;
    case HttpAnswer::Ending::Reset:
        reset();
        break;
    }
}

void HttpConnection::reset()
{
    const linger immediately{1, 0};
    setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &immediately,
               sizeof immediately);
    socket->abort();
}
