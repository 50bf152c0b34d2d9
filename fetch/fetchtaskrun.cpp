#include "formbody.h"
#include "log.h"
#include "threadnumber.h"
#include "vfetchtask_p.h"

#include <QDebug>
#include <QMutexLocker>
#include <QTimerEvent>

#include <resolv.h>

namespace
{

constexpr long dnsCacheSeconds = 5;

/// The method's word in log lines.
const char *methodWord(int method)
{
    switch (method) {
    case VFetchTask::Get:
        return "GET";
    case VFetchTask::Post:
    case VFetchTask::PostForm:
        return "POST";
    case VFetchTask::Put:
        return "PUT";
    case VFetchTask::Delete:
        return "DELETE";
    default:
        return "";
    }
}

/// A header's value as the debug stream shows it; credentials never reach a log.
QString shownValue(const QString &name, const QString &value)
{
    const bool secret = name.compare(QLatin1String("Authorization"), Qt::CaseInsensitive) == 0;
    return secret ? QStringLiteral("***") : value;
}

std::size_t appendToBody(char *bytes, std::size_t size, std::size_t count, void *task)
{
    static_cast<VFetchTaskPrivate *>(task)->responseBody.append(bytes, static_cast<int>(size * count));
    return size * count;
}

std::size_t appendToHeader(char *bytes, std::size_t size, std::size_t count, void *task)
{
    static_cast<VFetchTaskPrivate *>(task)->responseHeaderText.append(
        QString::fromLatin1(bytes, static_cast<int>(size * count)));
    return size * count;
}

} // namespace

VFetchTaskPrivate::VFetchTaskPrivate(VFetchTask *task, int taskId)
    : QObject(task)
    , q(task)
    , id(taskId)
{
}

void VFetchTaskPrivate::scheduleOneTimeUpdateIn(int ms)
{
    logDebug("FetchTask: %s Thread: %x ", "void VFetchTaskPrivate::scheduleOneTimeUpdateIn(int)",
             currentThreadNumber());
    if (oneTimeTimerPending) {
        killTimer(oneTimeTimerId);
        oneTimeTimerId = 0;
        oneTimeTimerPending = false;
    }
    if (ms >= 1) {
        oneTimeTimerId = startTimer(ms);
        oneTimeTimerPending = true;
    }
}

void VFetchTaskPrivate::timerEvent(QTimerEvent *event)
{
    if (!oneTimeTimerPending || event->timerId() != oneTimeTimerId) {
        QObject::timerEvent(event);
        return;
    }
    killTimer(oneTimeTimerId);
    oneTimeTimerPending = false;
    Q_EMIT q->doUpdate();
}

void VFetchTaskPrivate::setRunning(bool isRunning)
{
    const QMutexLocker locker(&stateMutex);
    running = isRunning;
}

void VFetchTaskPrivate::run()
{
    setRunning(true);
    logVerbose("FetchTask: %d is running in thread 0x%x", id, currentThreadNumber());
    if (!q->prepare()) {
        logDebug("FetchTask. Prepare has returned false. Task %d skipped.", id);
        Q_EMIT q->failure(VFetchTask::PrepareRefused, QByteArray());
        setRunning(false);
        return;
    }
    responseHeaderText.clear();
    responseBody.clear();
    transfer();
    logVerbose("FetchTask: %d is finished in thread 0x%x", id, currentThreadNumber());
    setRunning(false);
}

void VFetchTaskPrivate::transfer()
{
    const CurlHandle handle(curl_easy_init());
    if (!handle) {
        logError("FetchTask: Unable to initialize curl.");
        status = 0;
        Q_EMIT q->failure(VFetchTask::NoCurlHandle, QByteArray());
        return;
    }

    CurlForm form;
    CurlList headersToSend;
    CURLcode code = CURLE_OK;
    QByteArray encodedUrl;
    const char *word = "";
    {
        const QMutexLocker locker(&dataMutex);
        curl_easy_setopt(handle.get(), CURLOPT_DNS_CACHE_TIMEOUT, dnsCacheSeconds);
        curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL,
                         1L); // the resolver must not use signals off the main thread
        code = fillHeaderList(headersToSend);
        applyMethod(handle.get(), form);
        const CURLcode bodyCode = applyBody(handle.get());
        code = code == CURLE_OK ? bodyCode : code;
        encodedUrl = url.toEncoded();
        applyTarget(handle.get(), headersToSend, encodedUrl);
        word = methodWord(method);
    }

    logDebug("FetchTask: Making request to %s", encodedUrl.constData());
    if (code == CURLE_OK) { // else there was no memory for the request, and a part of it must not go out
        code = curl_easy_perform(handle.get());
    }
    if (code == CURLE_OK) {
        reportAnswer(handle.get(), word, encodedUrl);
    } else {
        reportTransferFailure(code, encodedUrl);
    }
}

CURLcode VFetchTaskPrivate::fillHeaderList(CurlList &list) const
{
    for (auto header = headers.cbegin(); header != headers.cend(); ++header) {
        if (debugLogEnabled()) {
            qDebug().noquote() << "header" << header.key() << ":" << shownValue(header.key(), header.value());
        }
        const QByteArray line = QStringLiteral("%1: %2").arg(header.key(), header.value()).toLatin1();
        curl_slist *const longer = curl_slist_append(list.get(), line.constData());
        if (longer == nullptr) {
            return CURLE_OUT_OF_MEMORY;
        }
        Q_UNUSED(list.release()) // the longer list owns it
        list.reset(longer);
    }
    return CURLE_OK;
}

void VFetchTaskPrivate::applyMethod(CURL *handle, CurlForm &form) const
{
    switch (method) {
    case VFetchTask::Get:
        curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
        break;
    case VFetchTask::Post:
        // Meant: the number stands where a form would, and the body option that always follows (applyBody)
        // makes this a plain POST, so that it is never read.
        curl_easy_setopt(handle, CURLOPT_HTTPPOST,
                         reinterpret_cast<curl_httppost *>(1)); // NOLINT(performance-no-int-to-ptr)
        break;
    case VFetchTask::Put:
        curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, "PUT");
        break;
    case VFetchTask::PostForm:
        form = multipartForm();
        curl_easy_setopt(handle, CURLOPT_HTTPPOST, form.get());
        break;
    case VFetchTask::Delete:
        curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, "DELETE");
        break;
    case VFetchTask::Custom:
        curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, customMethod.constData());
        break;
    default:
        break;
    }
}

CurlForm VFetchTaskPrivate::multipartForm() const
{
    curl_httppost *first = nullptr;
    curl_httppost *last = nullptr;
    for (auto part = formParts.cbegin(); part != formParts.cend(); ++part) {
        const QByteArray name = part.key().toLocal8Bit();
        const QByteArray value = part.value().value.toString().toLocal8Bit();
        if (part.value().kind == QLatin1String("text")) {
            curl_formadd(&first, &last, CURLFORM_COPYNAME, name.constData(), CURLFORM_COPYCONTENTS,
                         value.constData(), CURLFORM_END);
        } else if (part.value().kind == QLatin1String("file")) {
            curl_formadd(&first, &last, CURLFORM_COPYNAME, name.constData(), CURLFORM_FILE, value.constData(),
                         CURLFORM_END);
        }
    }
    return CurlForm(first);
}

CURLcode VFetchTaskPrivate::applyBody(CURL *handle) const
{
    const QByteArray text = requestBody(postParams, body);
    // A POST sets its body even when it is empty: without one the transfer would read the number set as its
    // form.
    if (text.isEmpty() && method != VFetchTask::Post) {
        return CURLE_OK;
    }
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(text.size()));
    return curl_easy_setopt(handle, CURLOPT_COPYPOSTFIELDS, text.constData());
}

void VFetchTaskPrivate::applyTarget(CURL *handle, const CurlList &headersToSend, const QByteArray &encodedUrl)
{
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, appendToBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, appendToHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headersToSend.get());
    curl_easy_setopt(handle, CURLOPT_URL, encodedUrl.constData());
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, static_cast<long>(timeout));
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, static_cast<long>(timeout));
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, ""); // whatever the library can decode
}

void VFetchTaskPrivate::reportAnswer(CURL *handle, const char *word, const QByteArray &encodedUrl)
{
    long code = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &code);
    status = static_cast<int>(code);
    responseHeader = QHttpResponseHeader(responseHeaderText);
    responseHeader.setStatusLine(status);

    static const char line[] = "FetchTask: %s Status=%d Url=%s";
    if (status >= 200 && status <= 299) {
        logDebug(line, word, status, encodedUrl.constData());
        Q_EMIT q->success(responseBody);
    } else {
        logWarning(line, word, status, encodedUrl.constData());
        Q_EMIT q->failure(status, responseBody);
    }
}

void VFetchTaskPrivate::reportTransferFailure(CURLcode code, const QByteArray &encodedUrl)
{
    if (code == CURLE_COULDNT_RESOLVE_HOST) {
        // The network may have come up with other name servers: have the resolver read its configuration
        // again.
        __res_init();
    }
    logError("FetchTask: [Error] %d %s %s", static_cast<int>(code), encodedUrl.constData(),
             curl_easy_strerror(code));
    status = 0;
    Q_EMIT q->failure(static_cast<int>(code), QByteArray());
}
