#pragma once

#include <QByteArray>
#include <QList>

#include <curl/curl.h>

#include <functional>

/// Stands in for libcurl's transfers: options are set on real handles and noted, header lists and forms are
/// real and counted, nothing goes over a network, and each transfer ends as scripted. All functions may be
/// called from any thread.
namespace CurlFake
{

/// One option as it was set. Strings and header lists are copied at once.
struct Option {
    CURLoption option;
    long number;        ///< for options that take a number
    const void *object; ///< for the others
    QByteArray text;    ///< for those of them that are strings; a body has its length
};

/// One part as it was added to a form.
struct FormPart {
    QByteArray name;
    CURLformoption source; ///< what the value is
    QByteArray value;
};

struct Request {
    QList<Option> options; ///< in the order set
    QList<QByteArray> headers;
    QList<FormPart> form; ///< of the form that the request carries
    void *thread = nullptr;

    bool has(CURLoption option) const;
    long number(CURLoption option) const;
    QByteArray text(CURLoption option) const;
    QByteArray url() const { return text(CURLOPT_URL); }
    QByteArray body() const { return text(CURLOPT_COPYPOSTFIELDS); }
    /// "POST", the custom word, or "GET".
    QByteArray method() const;
};

/// What arrives, and how the transfer then ends.
struct Answer {
    CURLcode code = CURLE_OK;
    int status = 200;
    QByteArray body;
    QByteArray header;
};

/// Forgets all of this but what is still open; transfers end with status 200 and an empty body.
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
/// Makes the library refuse one option with this code, on every handle.
void failOption(CURLoption option, CURLcode code);
/// Makes the library refuse the form part of this name.
void failFormPart(const QByteArray &name, CURLFORMcode code);
/// Makes the library fail to add this line to a header list, as it does without memory.
void failHeader(const QByteArray &line);
/// Makes the library know no status of a transfer that went well.
void failStatus(CURLcode code);
/// Calls @p hook at each option that is set, on the thread that sets it.
void watchOptions(const std::function<void(CURLoption)> &hook);

/// The transfers that began, oldest first.
QList<Request> requests();
int requestCount();
/// Handles that were made and not freed yet.
int openHandles();
/// The same for header lists and for forms.
int openHeaderLists();
int openForms();
/// How often the resolver's configuration was read again.
int resolverReads();

} // namespace CurlFake
