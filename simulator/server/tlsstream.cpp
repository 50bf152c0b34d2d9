#include "tlsstream.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <climits>

namespace
{
void readAddress(const sockaddr_in &address, std::string &ip, int &port)
{
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    ip = text;
    port = ntohs(address.sin_port);
}

int atMostInt(size_t size)
{
    return static_cast<int>(std::min(size, static_cast<size_t>(INT_MAX)));
}
} // namespace

TlsStream::TlsStream(SSL_CTX *context, socket_t socket, int timeoutSeconds)
    : descriptor(socket)
    , timeoutMs(timeoutSeconds * 1000)
    , ssl(SSL_new(context), &SSL_free)
{
    timeval timeout{};
    timeout.tv_sec = timeoutSeconds;
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    // The answer's header and body are written one after the other; neither waits for the other's receipt.
    const int yes = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    SSL_set_fd(ssl.get(), descriptor);
}

TlsStream::~TlsStream() = default;

bool TlsStream::accept()
{
    return SSL_accept(ssl.get()) == 1;
}

void TlsStream::close()
{
    if (!aborted) {
        SSL_shutdown(ssl.get());
    }
}

void TlsStream::abort()
{
    aborted = true;
    ::shutdown(descriptor, SHUT_RDWR);
}

const std::string &TlsStream::received() const
{
    return bytes;
}

void TlsStream::forgetReceived()
{
    bytes.clear();
}

bool TlsStream::is_readable() const
{
    if (SSL_pending(ssl.get()) > 0) {
        return true;
    }
    pollfd wanted{descriptor, POLLIN, 0};
    return ::poll(&wanted, 1, timeoutMs) > 0;
}

bool TlsStream::is_writable() const
{
    pollfd wanted{descriptor, POLLOUT, 0};
    return !aborted && ::poll(&wanted, 1, timeoutMs) > 0;
}

ssize_t TlsStream::read(char *data, size_t size)
{
    const int count = SSL_read(ssl.get(), data, atMostInt(size));
    if (count > 0) {
        bytes.append(data, static_cast<size_t>(count));
    }
    return count;
}

ssize_t TlsStream::write(const char *data, size_t size)
{
    if (aborted) {
        return -1;
    }
    return SSL_write(ssl.get(), data, atMostInt(size));
}

void TlsStream::get_remote_ip_and_port(std::string &ip, int &port) const
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (getpeername(descriptor, reinterpret_cast<sockaddr *>(&address), &length) == 0) {
        readAddress(address, ip, port);
    }
}

void TlsStream::get_local_ip_and_port(std::string &ip, int &port) const
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length) == 0) {
        readAddress(address, ip, port);
    }
}

socket_t TlsStream::socket() const
{
    return descriptor;
}
