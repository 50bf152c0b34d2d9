#include "curlrequest.h"

#include "log.h"

namespace
{

CURLcode codeOf(CURLFORMcode code)
{
    switch (code) {
    case CURL_FORMADD_OK:
        return CURLE_OK;
    case CURL_FORMADD_MEMORY:
        return CURLE_OUT_OF_MEMORY;
    case CURL_FORMADD_DISABLED:
        return CURLE_NOT_BUILT_IN;
    default:
        return CURLE_BAD_FUNCTION_ARGUMENT;
    }
}

} // namespace

void CurlRequest::keep(CURLoption option, CURLcode code)
{
    result = code;
    if (code != CURLE_OK) {
        logWarning("FetchTask: Option %d was refused with %d. The request is not sent.",
                   static_cast<int>(option), static_cast<int>(code));
    }
}

void CurlRequest::addHeader(const QByteArray &line)
{
    if (result != CURLE_OK) {
        return;
    }
    curl_slist *const longer = curl_slist_append(headers.get(), line.constData());
    if (longer == nullptr) {
        result = CURLE_OUT_OF_MEMORY;
        return;
    }
    static_cast<void>(headers.release()); // the longer list owns it
    headers.reset(longer);
}

void CurlRequest::addFormPart(const QByteArray &name, CURLformoption source, const QByteArray &value)
{
    if (result != CURLE_OK) {
        return;
    }
    curl_httppost *first = form.release();
    result = codeOf(curl_formadd(&first, &lastPart, CURLFORM_COPYNAME, name.constData(), source,
                                 value.constData(), CURLFORM_END));
    form.reset(first);
}

CURLcode CurlRequest::send(long &status)
{
    if (result == CURLE_OK) {
        result = curl_easy_perform(handle.get());
    }
    if (result == CURLE_OK) {
        result = curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    }
    return result;
}
