#pragma once

#include "tlsstream.h"

#include <httplib.h>
#include <openssl/ssl.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>

/// An HTTPS server whose connections can be told apart, looked into and cut off. The library's own HTTPS
/// server hides its connections, and waits for idle ones to time out before it stops.
class TlsServer : public httplib::Server
{
public:
    /// Reads a PEM certificate chain and its key; problem() tells what is wrong with them.
    TlsServer(const std::string &certificatePath, const std::string &keyPath);
    ~TlsServer() override;
    TlsServer(const TlsServer &) = delete;
    TlsServer &operator=(const TlsServer &) = delete;
    TlsServer(TlsServer &&) = delete;
    TlsServer &operator=(TlsServer &&) = delete;

    bool is_valid() const override;
    std::string problem() const;

    /// Cuts every connection off and takes no new one, so that all handlers' threads come home.
    void closeConnections();

    /// The connection that this thread is serving. In a handler only.
    static TlsStream &current();

private:
    bool process_and_close_socket(socket_t socket) override;
    void serve(TlsStream &stream);

    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context;
    std::string whatIsWrong;
    std::mutex mutex;
    std::set<TlsStream *> connections;
    bool closing = false;
};
