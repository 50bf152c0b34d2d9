#pragma once

#include <QByteArray>
#include <QList>

#include <curl/curl.h>

/// Stands in for libcurl's transfers: options are set on real handles and noted, nothing goes over a network,
/// and each transfer ends as told. All functions may be called from any thread.
namespace CurlFake
{

/// One option as it was set. Texts and header lists are copied at once.
struct Option {
    CURLoption option;
    long number;        ///< for options that take a number
    const void *object; ///< for the others
    QByteArray text;    ///< for those of them that are texts; a body has its length
};

struct Request {
    QList<Option> options; ///< in the order set
    QList<QByteArray> headers;
    void *thread = nullptr;

    bool has(CURLoption option) const;
    long number(CURLoption option) const;
    QByteArray text(CURLoption option) const;
    QByteArray url() const { return text(CURLOPT_URL); }
    QByteArray body() const { return text(CURLOPT_COPYPOSTFIELDS); }
    /// "POST", the custom word, or "GET".
    QByteArray method() const;
};

struct Answer {
    CURLcode code = CURLE_OK;
    int status = 200;
    QByteArray body;
    QByteArray header;
};

/// Forgets everything; transfers end with status 200 and an empty body.
void reset();
/// What every transfer ends with that no queued answer is left for.
void setAnswer(const Answer &answer);
/// What the next transfer without one ends with.
void queueAnswer(const Answer &answer);
/// Makes transfers wait until release(), which must follow.
void hold();
void release();
/// Makes the library hand out no handles.
void setInitFails(bool fails);

/// The transfers that began, oldest first.
QList<Request> requests();
int requestCount();
/// Handles that were made and not freed yet.
int openHandles();
/// How often the resolver's configuration was read again.
int resolverReads();

} // namespace CurlFake
