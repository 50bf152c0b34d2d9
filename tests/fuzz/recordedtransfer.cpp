#include "recordedtransfer.h"

#include <curl/curl.h>

#include <cstdarg>

// The option as a number: the variable arguments may not stand behind an enumerator.
extern "C" {
CURLcode __real_curl_easy_setopt(CURL *handle, int option, ...);
CURLcode __wrap_curl_easy_setopt(CURL *handle, int option, ...);
CURLcode __wrap_curl_easy_perform(CURL *handle);
}

namespace
{

long postSize = 0;

void record(CURLoption option, const void *argument)
{
    RecordedTransfer &transfer = RecordedTransfer::last();
    const auto *const text = static_cast<const char *>(argument);
    switch (option) {
    case CURLOPT_URL:
        transfer.url = text;
        break;
    case CURLOPT_CUSTOMREQUEST:
        transfer.customMethod = text;
        break;
    case CURLOPT_HTTPGET:
        transfer.isGet = true;
        break;
    case CURLOPT_HTTPPOST:
        transfer.isPost = true;
        break;
    case CURLOPT_POSTFIELDSIZE:
        postSize = static_cast<long>(reinterpret_cast<std::intptr_t>(argument));
        break;
    case CURLOPT_COPYPOSTFIELDS:
        transfer.hasBody = true;
        transfer.body = QByteArray(text, static_cast<int>(postSize));
        break;
    case CURLOPT_HTTPHEADER:
        for (auto *each = static_cast<const curl_slist *>(argument); each != nullptr; each = each->next) {
            transfer.headers.append(each->data);
        }
        break;
    default:
        break;
    }
}

} // namespace

RecordedTransfer &RecordedTransfer::last()
{
    static RecordedTransfer transfer;
    return transfer;
}

CURLcode __wrap_curl_easy_setopt(CURL *handle, int option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    void *const argument = va_arg(arguments, void *); // numbers and addresses are passed alike
    va_end(arguments);
    record(static_cast<CURLoption>(option), argument);
    const CURLcode result = __real_curl_easy_setopt(handle, option, argument);
    if (RecordedTransfer::last().refusal == 0) {
        RecordedTransfer::last().refusal = result;
    }
    return result;
}

CURLcode __wrap_curl_easy_perform(CURL * /*handle*/)
{
    ++RecordedTransfer::last().performed;
    return CURLE_OK;
}
