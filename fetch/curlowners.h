#pragma once

// The multipart calls of this library are the ones marked as superseded; they are used on purpose.
#ifndef CURL_DISABLE_DEPRECATION
#define CURL_DISABLE_DEPRECATION
#endif
#include <curl/curl.h>

#include <memory>

/// One owner each for the resources of a transfer, so that every way out of a run frees them.
struct CurlHandleDeleter {
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
};
using CurlHandle = std::unique_ptr<CURL, CurlHandleDeleter>;

struct CurlListDeleter {
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};
using CurlList = std::unique_ptr<curl_slist, CurlListDeleter>;

struct CurlFormDeleter {
    void operator()(curl_httppost *form) const { curl_formfree(form); }
};
using CurlForm = std::unique_ptr<curl_httppost, CurlFormDeleter>;
