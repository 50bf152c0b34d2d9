#pragma once

#include "curlowners.h"

#include <QByteArray>

#include <type_traits>

/// One request on a curl handle of its own, and all that the handle needs until the transfer is over.
/// Once a step of its making has failed, the code of that step stays the result, later steps do nothing, and
/// send() sends nothing.
struct CurlRequest {
    CurlHandle handle; ///< null when the library had none to give
    CurlForm form;
    CurlList headers;
    QByteArray url;        ///< in encoded form
    const char *word = ""; ///< the method's word in log lines
    CURLcode result = CURLE_OK;

    /// Sets one option of the handle, a number given as long.
    template <typename Value>
    void set(CURLoption option, Value value)
    {
        static_assert(std::is_pointer_v<Value> || std::is_same_v<Value, long>,
                      "the library reads a pointer or a long, whatever it is given");
        if (result == CURLE_OK) {
            keep(option, curl_easy_setopt(handle.get(), option, value));
        }
    }
    void addHeader(const QByteArray &line);
    /// Adds one part to the form. @p source says what @p value is: CURLFORM_COPYCONTENTS for the part's
    /// contents, CURLFORM_FILE for the path of a file that is read when the request is sent.
    void addFormPart(const QByteArray &name, CURLformoption source, const QByteArray &value);

    /// Performs the transfer and reads the answer's HTTP status. Returns when the transfer is over, with its
    /// result; the status is left alone when that is a failure.
    CURLcode send(long &status);

private:
    void keep(CURLoption option, CURLcode code);

    curl_httppost *lastPart = nullptr; ///< the form's own
};
