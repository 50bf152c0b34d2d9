#pragma once

#include <QByteArray>
#include <QList>

#include <memory>

/// A plain libcurl client that trusts one authority, for asking a server that lives on the test's own thread,
/// with TLS or without.
class HttpsClient
{
public:
    struct Result {
        /// libcurl's code; 0 when there is a whole answer.
        int code = 0;
        int status = 0;
        QByteArray body;
    };

    /// @p authorityPath is a PEM file; nothing else is trusted.
    explicit HttpsClient(const QByteArray &authorityPath);

    /// Each request gets a connection of its own unless this is on.
    void setReuseConnection(bool reuse);

    /// 20 s unless this is called.
    void setTimeout(int milliseconds);
    /// Hangs up once more than this has come of a body.
    void setLargestBody(int bytes);

    /// One request; @p headers are whole lines. This thread's event loop runs meanwhile.
    Result send(const QByteArray &method, const QByteArray &url, const QList<QByteArray> &headers,
                const QByteArray &body = {}) const;

private:
    Result perform(const QByteArray &method, const QByteArray &url, const QList<QByteArray> &headers,
                   const QByteArray &body) const;

    QByteArray authority;
    bool reuse = false;
    int timeoutMs = 20000;
    int largestBody = 16 * 1024 * 1024;
    std::shared_ptr<void> handle;
};
