#include "transfers.h"

#include "curlwraps.h"

#include <QObject>
#include <QThread>

#include <condition_variable>
#include <cstdarg>
#include <mutex>

namespace
{

using Callback = std::size_t (*)(char *, std::size_t, std::size_t, void *);

struct Handle {
    bool isGet = false;
    int status = 0;
    Callback write = nullptr;
    void *writeTarget = nullptr;
};

std::mutex mutex;
std::condition_variable changed;
Handle *waiting = nullptr; ///< the transfer that waits for its end
bool isDecided = false;
Transfers::Outcome decided;
quint64 marksPosted = 0; ///< by settle(), to the fetch thread
quint64 marksPassed = 0; ///< the last one that the fetch thread came past
int handles = 0;

Handle *of(CURL *handle)
{
    return static_cast<Handle *>(handle);
}

} // namespace

CURL *__wrap_curl_easy_init()
{
    const std::lock_guard lock(mutex);
    ++handles;
    return new Handle;
}

CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    void *const argument = va_arg(arguments, void *); // numbers and addresses are passed alike
    va_end(arguments);
    if (option == CURLOPT_HTTPGET) {
        of(handle)->isGet = true;
    } else if (option == CURLOPT_WRITEFUNCTION) {
        of(handle)->write = reinterpret_cast<Callback>(argument);
    } else if (option == CURLOPT_WRITEDATA) {
        of(handle)->writeTarget = argument;
    }
    return CURLE_OK;
}

CURLcode __wrap_curl_easy_perform(CURL *handle)
{
    Transfers::Outcome outcome;
    {
        std::unique_lock lock(mutex);
        waiting = of(handle);
        changed.notify_all();
        changed.wait(lock, [] { return isDecided; });
        isDecided = false;
        outcome = decided;
    }
    of(handle)->status = outcome.status;
    if (outcome.code == CURLE_OK && !outcome.body.isEmpty()) {
        of(handle)->write(outcome.body.data(), 1, static_cast<std::size_t>(outcome.body.size()),
                          of(handle)->writeTarget);
    }
    return outcome.code;
}

// The status is all that is asked for.
CURLcode __wrap_curl_easy_getinfo(CURL *handle, CURLINFO info, ...)
{
    va_list arguments;
    va_start(arguments, info);
    *va_arg(arguments, long *) = of(handle)->status;
    va_end(arguments);
    return CURLE_OK;
}

void __wrap_curl_easy_cleanup(CURL *handle)
{
    const std::lock_guard lock(mutex);
    --handles;
    delete of(handle);
}

int __wrap___res_init()
{
    return 0;
}

namespace Transfers
{

void settle(QThread *thread)
{
    if (thread == nullptr || !thread->isRunning()) {
        return;
    }
    quint64 number = 0;
    {
        const std::lock_guard lock(mutex);
        if (waiting != nullptr) {
            return;
        }
        number = ++marksPosted;
    }
    // Behind all that is posted there now.
    auto *const mark = new QObject;
    mark->moveToThread(thread);
    QMetaObject::invokeMethod(
        mark,
        [mark, number] {
            mark->deleteLater();
            const std::lock_guard lock(mutex);
            marksPassed = number;
            changed.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock lock(mutex);
    changed.wait(lock, [number] { return marksPassed >= number || waiting != nullptr; });
}

bool isWaiting()
{
    const std::lock_guard lock(mutex);
    return waiting != nullptr;
}

bool isWaitingForList()
{
    const std::lock_guard lock(mutex);
    return waiting != nullptr && waiting->isGet;
}

void end(const Outcome &outcome)
{
    const std::lock_guard lock(mutex);
    waiting = nullptr;
    decided = outcome;
    isDecided = true;
    changed.notify_all();
}

int openHandles()
{
    const std::lock_guard lock(mutex);
    return handles;
}

} // namespace Transfers
