#include "rawtlsserver.h"

#include <QtGlobal>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{
constexpr int timeoutSeconds = 10;
const QByteArray endOfHead = QByteArrayLiteral("\r\n\r\n");

// How long a request whose head is there has to become.
int wholeSize(const QByteArray &head)
{
    const QList<QByteArray> lines = head.split('\n');
    for (const QByteArray &line : lines) {
        if (line.toLower().startsWith("content-length:")) {
            return static_cast<int>(head.size()) + line.mid(line.indexOf(':') + 1).trimmed().toInt();
        }
    }
    return static_cast<int>(head.size());
}
} // namespace

RawTlsServer::RawTlsServer()
    : context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free)
    , answer("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\n"
             "Connection: close\r\n\r\n{}")
{
}

RawTlsServer::~RawTlsServer()
{
    stop();
}

bool RawTlsServer::start(const QString &certificatePath, const QString &keyPath)
{
    // A client that hangs up early is not the end of the test program.
    std::signal(SIGPIPE, SIG_IGN);
    if (SSL_CTX_use_certificate_chain_file(context.get(), certificatePath.toLocal8Bit().constData()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context.get(), keyPath.toLocal8Bit().constData(), SSL_FILETYPE_PEM) !=
            1) {
        qWarning("cannot use the certificate %s", qPrintable(certificatePath));
        return false;
    }
    listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    if (bind(listener, generic, length) != 0 || listen(listener, 16) != 0 ||
        getsockname(listener, generic, &length) != 0) {
        qWarning("cannot listen on 127.0.0.1");
        close(listener);
        return false;
    }
    listeningPort = ntohs(address.sin_port);
    stopping = false;
    thread = std::thread([this] { run(); });
    return true;
}

void RawTlsServer::stop()
{
    if (!thread.joinable()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
        if (openConnection >= 0) {
            shutdown(openConnection, SHUT_RDWR);
        }
    }
    // Wakes the thread where it waits for the next connection.
    shutdown(listener, SHUT_RDWR);
    thread.join();
    close(listener);
}

quint16 RawTlsServer::port() const
{
    return listeningPort;
}

QString RawTlsServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(listeningPort);
}

void RawTlsServer::setAnswer(const QByteArray &text)
{
    const std::lock_guard<std::mutex> lock(mutex);
    answer = text;
}

QList<QByteArray> RawTlsServer::requests() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return received;
}

void RawTlsServer::run()
{
    for (;;) {
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        {
            const std::lock_guard<std::mutex> lock(mutex);
            if (stopping) {
                if (connection >= 0) {
                    close(connection);
                }
                return;
            }
            openConnection = connection;
        }
        if (connection >= 0) {
            serve(connection);
            const std::lock_guard<std::mutex> lock(mutex);
            openConnection = -1;
            close(connection);
        }
    }
}

void RawTlsServer::serve(int connection)
{
    timeval timeout{};
    timeout.tv_sec = timeoutSeconds;
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    const std::unique_ptr<SSL, void (*)(SSL *)> tls(SSL_new(context.get()), &SSL_free);
    SSL_set_fd(tls.get(), connection);
    if (SSL_accept(tls.get()) != 1) {
        return;
    }
    const QByteArray request = readRequest(tls.get());
    if (request.isEmpty()) {
        return;
    }
    QByteArray text;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        received.append(request);
        text = answer;
    }
    SSL_write(tls.get(), text.constData(), static_cast<int>(text.size()));
    SSL_shutdown(tls.get());
}

// The bytes of a whole request, and of whatever came with its end; nothing when the client stopped before.
QByteArray RawTlsServer::readRequest(ssl_st *tls) const
{
    QByteArray bytes;
    int wanted = 0;
    char buffer[16384];
    while (wanted == 0 || bytes.size() < wanted) {
        const int count = SSL_read(tls, buffer, sizeof buffer);
        if (count <= 0) {
            return {};
        }
        bytes.append(buffer, count);
        const auto end = bytes.indexOf(endOfHead);
        if (wanted == 0 && end >= 0) {
            wanted = wholeSize(bytes.left(end + endOfHead.size()));
        }
    }
    return bytes;
}
