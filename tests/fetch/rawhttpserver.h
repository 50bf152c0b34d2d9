#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <mutex>
#include <thread>

/// A server on a loopback port that takes one connection at a time, keeps the bytes of its request as they
/// came, sends the next scripted answer as it stands, and closes.
class RawHttpServer
{
public:
    RawHttpServer();
    ~RawHttpServer();
    RawHttpServer(const RawHttpServer &) = delete;
    RawHttpServer &operator=(const RawHttpServer &) = delete;

    int port() const { return boundPort; }
    /// "http://127.0.0.1:port" + @p path.
    QString url(const char *path = "/") const;

    void queueAnswer(const QByteArray &raw);
    /// The same for a body with its length, under a status line.
    void queueAnswer(int status, const QByteArray &body);
    QList<QByteArray> requests() const;

private:
    void serve();
    void answerOne(int connection);

    int listener;
    int boundPort = 0;
    std::atomic<bool> stopping{false};
    mutable std::mutex mutex;
    QList<QByteArray> answers;
    QList<QByteArray> received;
    std::thread thread;
};
