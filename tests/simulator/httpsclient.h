#pragma once

#include <QByteArray>
#include <QList>

#include <memory>

/// A plain libcurl client that trusts one authority, for asking the simulated server from a test's own
/// thread.
class HttpsClient
{
public:
    struct Result {
        /// libcurl's code; 0 when there is an answer.
        int code = 0;
        int status = 0;
        QByteArray body;
    };

    /// @p authorityPath is a PEM file; nothing else is trusted.
    explicit HttpsClient(const QByteArray &authorityPath);

    /// Each request gets a connection of its own unless this is on.
    void setReuseConnection(bool reuse);

    /// One request; @p headers are whole lines. Gives up after 20 s.
    Result send(const QByteArray &method, const QByteArray &url, const QList<QByteArray> &headers,
                const QByteArray &body = {}) const;

private:
    QByteArray authority;
    bool reuse = false;
    std::shared_ptr<void> handle;
};
