#include "httpsclient.h"

#include "servewhile.h"

#include <curl/curl.h>

namespace
{
struct Body {
    QByteArray &bytes;
    int largest;
};

size_t append(char *data, size_t size, size_t count, void *target)
{
    Body &body = *static_cast<Body *>(target);
    body.bytes.append(data, static_cast<int>(size * count));
    // Less than what came ends the transfer.
    return body.bytes.size() > body.largest ? 0 : size * count;
}
} // namespace

HttpsClient::HttpsClient(const QByteArray &authorityPath)
    : authority(authorityPath)
    , handle(curl_easy_init(), &curl_easy_cleanup)
{
}

void HttpsClient::setReuseConnection(bool reuse_)
{
    reuse = reuse_;
}

void HttpsClient::setTimeout(int milliseconds)
{
    timeoutMs = milliseconds;
}

void HttpsClient::setLargestBody(int bytes)
{
    largestBody = bytes;
}

HttpsClient::Result HttpsClient::send(const QByteArray &method, const QByteArray &url,
                                      const QList<QByteArray> &headers, const QByteArray &body) const
{
    Result result;
    serveWhile([&] { result = perform(method, url, headers, body); });
    return result;
}

HttpsClient::Result HttpsClient::perform(const QByteArray &method, const QByteArray &url,
                                         const QList<QByteArray> &headers, const QByteArray &body) const
{
    CURL *const curl = handle.get();
    Result result;
    Body received{result.body, largestBody};
    curl_slist *lines = nullptr;
    for (const QByteArray &header : headers) {
        lines = curl_slist_append(lines, header.constData());
    }
    curl_easy_reset(curl);
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_CAINFO, authority.constData());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutMs));
    curl_easy_setopt(curl, CURLOPT_FORBID_REUSE, reuse ? 0L : 1L);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, lines);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &append);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &received);
    if (!body.isNull()) {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.constData());
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    }
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, method.constData());
    result.code = curl_easy_perform(curl);
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    result.status = static_cast<int>(status);
    curl_slist_free_all(lines);
    return result;
}
