#pragma once

#include <curl/curl.h>

// A program that links qwixt_curlwraps makes libcurl's transfers itself: the linker sends each of these calls
// to the function of the same name behind __wrap_, which the program defines, and __real_ is libcurl's own.
extern "C" {
CURL *__real_curl_easy_init();
CURLcode __real_curl_easy_setopt(CURL *handle, CURLoption option, ...);
void __real_curl_easy_cleanup(CURL *handle);

CURL *__wrap_curl_easy_init();
CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...);
CURLcode __wrap_curl_easy_perform(CURL *handle);
CURLcode __wrap_curl_easy_getinfo(CURL *handle, CURLINFO info, ...);
void __wrap_curl_easy_cleanup(CURL *handle);
int __wrap___res_init();
}
