#include "tlsserver.h"

#include <openssl/err.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
constexpr int timeoutSeconds = 30;
constexpr size_t threadCount = 16;

thread_local TlsStream *streamOfThisThread = nullptr;
} // namespace

TlsServer::TlsServer(const std::string &certificatePath, const std::string &keyPath)
    : context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free)
{
    new_task_queue = [] { return new httplib::ThreadPool(threadCount); };
    // Without the library's SO_REUSEPORT, which would let two servers share one port unnoticed.
    set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    if (SSL_CTX_use_certificate_chain_file(context.get(), certificatePath.c_str()) != 1) {
        whatIsWrong = "cannot read the certificate " + certificatePath;
    } else if (SSL_CTX_use_PrivateKey_file(context.get(), keyPath.c_str(), SSL_FILETYPE_PEM) != 1) {
        whatIsWrong = "cannot use the key " + keyPath;
    }
    ERR_clear_error();
}

TlsServer::~TlsServer() = default;

bool TlsServer::is_valid() const
{
    return whatIsWrong.empty();
}

std::string TlsServer::problem() const
{
    return whatIsWrong;
}

void TlsServer::closeConnections()
{
    const std::lock_guard<std::mutex> lock(mutex);
    closing = true;
    for (TlsStream *const stream : connections) {
        stream->abort();
    }
}

TlsStream &TlsServer::current()
{
    return *streamOfThisThread;
}

bool TlsServer::process_and_close_socket(socket_t socket)
{
    {
        TlsStream stream(context.get(), socket, timeoutSeconds);
        bool welcome = false;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            welcome = !closing;
            if (welcome) {
                connections.insert(&stream);
            }
        }
        if (welcome) {
            serve(stream);
            const std::lock_guard<std::mutex> lock(mutex);
            connections.erase(&stream);
        }
        ERR_clear_error();
    }
    ::shutdown(socket, SHUT_RDWR);
    ::close(socket);
    return true;
}

void TlsServer::serve(TlsStream &stream)
{
    if (!stream.accept()) {
        return;
    }
    streamOfThisThread = &stream;
    // The client decides how long a connection lasts: a client that uses one for two requests is seen doing
    // so.
    bool isClosed = false;
    while (!isClosed && stream.is_readable()) {
        stream.forgetReceived();
        if (!process_request(stream, false, isClosed, nullptr)) {
            break;
        }
    }
    streamOfThisThread = nullptr;
    stream.close();
}
