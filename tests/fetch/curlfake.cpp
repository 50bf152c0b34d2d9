#include "curlfake.h"

#include "curlfakelists.h"
#include "curlwraps.h"

#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QWaitCondition>

#include <cstdarg>
#include <cstring>

namespace
{

using Callback = std::size_t (*)(char *, std::size_t, std::size_t, void *);

struct Transfer {
    CurlFake::Request request;
    Callback write = nullptr;
    void *writeTarget = nullptr;
    Callback header = nullptr;
    void *headerTarget = nullptr;
    int status = 0;
};

struct State {
    QMutex mutex;
    QWaitCondition released;
    bool held = false;
    bool initFails = false;
    int resolverReads = 0;
    QMap<CURLoption, CURLcode> refused;
    std::function<void(CURLoption)> watcher;
    CURLcode statusCode = CURLE_OK;
    CurlFake::Answer answer;
    QList<CurlFake::Answer> queue;
    QMap<CURL *, Transfer> transfers;
    QList<CurlFake::Request> begun;
};

State &state()
{
    static State instance;
    return instance;
}

bool takesNumber(CURLoption option)
{
    return option < CURLOPTTYPE_OBJECTPOINT;
}

bool takesText(CURLoption option)
{
    return option == CURLOPT_URL || option == CURLOPT_CUSTOMREQUEST || option == CURLOPT_ACCEPT_ENCODING;
}

void note(Transfer &transfer, CURLoption option, void *argument)
{
    CurlFake::Option noted = {option, 0, nullptr, {}};
    if (takesNumber(option)) {
        noted.number = static_cast<long>(reinterpret_cast<intptr_t>(argument));
    } else {
        noted.object = argument;
    }
    if (takesText(option)) {
        noted.text = static_cast<const char *>(argument);
    } else if (option == CURLOPT_COPYPOSTFIELDS) {
        noted.text = QByteArray(static_cast<const char *>(argument),
                                static_cast<int>(transfer.request.number(CURLOPT_POSTFIELDSIZE)));
    } else if (option == CURLOPT_HTTPHEADER) {
        for (auto *line = static_cast<curl_slist *>(argument); line != nullptr; line = line->next) {
            transfer.request.headers.append(line->data);
        }
    } else if (option == CURLOPT_HTTPPOST) {
        transfer.request.form = CurlFake::partsOf(argument);
    } else if (option == CURLOPT_WRITEFUNCTION) {
        transfer.write = reinterpret_cast<Callback>(argument);
    } else if (option == CURLOPT_WRITEDATA) {
        transfer.writeTarget = argument;
    } else if (option == CURLOPT_HEADERFUNCTION) {
        transfer.header = reinterpret_cast<Callback>(argument);
    } else if (option == CURLOPT_HEADERDATA) {
        transfer.headerTarget = argument;
    }
    transfer.request.options.append(noted);
}

/// Hands text over a line at a time, as a header arrives.
void deliver(Callback callback, void *target, const QByteArray &text)
{
    int begin = 0;
    while (callback != nullptr && begin < text.size()) {
        auto end = text.indexOf('\n', begin);
        end = end < 0 ? text.size() : end + 1;
        QByteArray piece = text.mid(begin, static_cast<int>(end) - begin);
        callback(piece.data(), 1, static_cast<std::size_t>(piece.size()), target);
        begin = static_cast<int>(end);
    }
}

} // namespace

CURL *__wrap_curl_easy_init()
{
    const QMutexLocker locker(&state().mutex);
    if (state().initFails) {
        return nullptr;
    }
    CURL *const handle = __real_curl_easy_init();
    state().transfers.insert(handle, Transfer());
    return handle;
}

CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    void *const argument = va_arg(arguments, void *); // numbers and addresses are passed alike
    va_end(arguments);
    QMutexLocker locker(&state().mutex);
    const std::function<void(CURLoption)> watcher = state().watcher;
    if (watcher) {
        locker.unlock();
        watcher(option);
        locker.relock();
    }
    if (state().refused.contains(option)) {
        return state().refused.value(option);
    }
    note(state().transfers[handle], option, argument);
    return __real_curl_easy_setopt(handle, option, argument);
}

CURLcode __wrap_curl_easy_perform(CURL *handle)
{
    QMutexLocker locker(&state().mutex);
    Transfer &transfer = state().transfers[handle];
    transfer.request.thread = QThread::currentThread();
    state().begun.append(transfer.request);
    while (state().held) {
        state().released.wait(&state().mutex);
    }
    const CurlFake::Answer answer = state().queue.isEmpty() ? state().answer : state().queue.takeFirst();
    Transfer &ended = state().transfers[handle];
    ended.status = answer.status;
    const Transfer copy = ended;
    locker.unlock();
    deliver(copy.header, copy.headerTarget, answer.header);
    deliver(copy.write, copy.writeTarget, answer.body);
    return answer.code;
}

CURLcode __wrap_curl_easy_getinfo(CURL *handle, CURLINFO info, ...)
{
    va_list arguments;
    va_start(arguments, info);
    long *const result = va_arg(arguments, long *);
    va_end(arguments);
    const QMutexLocker locker(&state().mutex);
    if (state().statusCode != CURLE_OK) {
        return state().statusCode;
    }
    *result = info == CURLINFO_RESPONSE_CODE ? state().transfers[handle].status : 0;
    return CURLE_OK;
}

void __wrap_curl_easy_cleanup(CURL *handle)
{
    {
        const QMutexLocker locker(&state().mutex);
        state().transfers.remove(handle);
    }
    __real_curl_easy_cleanup(handle);
}

int __wrap___res_init()
{
    const QMutexLocker locker(&state().mutex);
    return ++state().resolverReads, 0;
}

namespace CurlFake
{

void reset()
{
    const QMutexLocker locker(&state().mutex);
    state().held = false;
    state().initFails = false;
    state().resolverReads = 0;
    state().refused.clear();
    state().watcher = nullptr;
    state().statusCode = CURLE_OK;
    state().answer = Answer();
    state().queue.clear();
    state().begun.clear();
    state().released.wakeAll();
    resetLists();
}

void setAnswer(const Answer &answer)
{
    const QMutexLocker locker(&state().mutex);
    state().answer = answer;
}

void queueAnswer(const Answer &answer)
{
    const QMutexLocker locker(&state().mutex);
    state().queue.append(answer);
}

void hold()
{
    const QMutexLocker locker(&state().mutex);
    state().held = true;
}

void release()
{
    const QMutexLocker locker(&state().mutex);
    state().held = false;
    state().released.wakeAll();
}

void setInitFails(bool fails)
{
    const QMutexLocker locker(&state().mutex);
    state().initFails = fails;
}

void failOption(CURLoption option, CURLcode code)
{
    const QMutexLocker locker(&state().mutex);
    state().refused.insert(option, code);
}

void failStatus(CURLcode code)
{
    const QMutexLocker locker(&state().mutex);
    state().statusCode = code;
}

void watchOptions(const std::function<void(CURLoption)> &hook)
{
    const QMutexLocker locker(&state().mutex);
    state().watcher = hook;
}

QList<Request> requests()
{
    const QMutexLocker locker(&state().mutex);
    // A list of the caller's own: shared, it would be read while the next request is appended to it.
    QList<Request> copy = state().begun;
    copy.detach();
    return copy;
}

int requestCount()
{
    const QMutexLocker locker(&state().mutex);
    return static_cast<int>(state().begun.size());
}

int openHandles()
{
    const QMutexLocker locker(&state().mutex);
    return static_cast<int>(state().transfers.size());
}

int resolverReads()
{
    const QMutexLocker locker(&state().mutex);
    return state().resolverReads;
}

} // namespace CurlFake
