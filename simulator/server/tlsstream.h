#pragma once

#include <httplib.h>
#include <openssl/ssl.h>

#include <atomic>
#include <memory>
#include <string>

/// The server's end of one TLS connection. It keeps what it read, so that a request can be shown as it came.
/// One thread reads and writes; abort() may come from any.
class TlsStream : public httplib::Stream
{
public:
    /// The socket stays the caller's. Reads and writes give up after @p timeoutSeconds.
    TlsStream(SSL_CTX *context, socket_t socket, int timeoutSeconds);
    ~TlsStream() override;
    TlsStream(const TlsStream &) = delete;
    TlsStream &operator=(const TlsStream &) = delete;
    TlsStream(TlsStream &&) = delete;
    TlsStream &operator=(TlsStream &&) = delete;

    /// The TLS handshake; false when it fails.
    bool accept();
    /// Says good-bye to the client, unless aborted.
    void close();
    /// Takes the connection away from the client with nothing more written.
    void abort();

    /// What was read since the last forgetReceived().
    const std::string &received() const;
    void forgetReceived();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char *data, size_t size) override;
    ssize_t write(const char *data, size_t size) override;
    void get_remote_ip_and_port(std::string &ip, int &port) const override;
    void get_local_ip_and_port(std::string &ip, int &port) const override;
    socket_t socket() const override;

private:
    const socket_t descriptor;
    const int timeoutMs;
    std::unique_ptr<SSL, decltype(&SSL_free)> ssl;
    std::string bytes;
    std::atomic<bool> aborted{false};
};
