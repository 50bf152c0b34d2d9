#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <mutex>
#include <thread>

struct ssl_st;
struct ssl_ctx_st;

/// A TLS server that knows next to nothing of HTTP, for comparing requests byte for byte: it takes one
/// connection at a time on 127.0.0.1, keeps the bytes of its one request as they came, answers a fixed text
/// and closes. It serves on a thread of its own; all functions are called from the thread that made it.
class RawTlsServer
{
public:
    RawTlsServer();
    ~RawTlsServer();
    RawTlsServer(const RawTlsServer &) = delete;
    RawTlsServer &operator=(const RawTlsServer &) = delete;
    RawTlsServer(RawTlsServer &&) = delete;
    RawTlsServer &operator=(RawTlsServer &&) = delete;

    /// Listens on any free port; false, with a warning, when that or reading the certificate fails.
    bool start(const QString &certificatePath, const QString &keyPath);
    /// Cuts off a connection that is open, and returns when the thread has ended.
    void stop();

    quint16 port() const;
    /// "127.0.0.1:PORT"
    QString host() const;

    /// The whole text of the following answers, status line first. At first it is an empty JSON object.
    void setAnswer(const QByteArray &text);
    /// Head and body of every request that came whole, oldest first. A request is whole when the body is as
    /// long as its Content-Length says.
    QList<QByteArray> requests() const;

private:
    void run();
    void serve(int connection);
    QByteArray readRequest(ssl_st *tls) const;

    std::unique_ptr<ssl_ctx_st, void (*)(ssl_ctx_st *)> context;
    std::thread thread;
    int listener = -1;
    quint16 listeningPort = 0;

    mutable std::mutex mutex;
    bool stopping = false;
    int openConnection = -1;
    QByteArray answer;
    QList<QByteArray> received;
};
