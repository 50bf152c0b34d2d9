#include "vfetchtask_p.h"
#include "formbody.h"
#include "log.h"
#include "threadnumber.h"

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
    CurlRequest request = prepareRequest();
    if (!request.handle) {
        logError("FetchTask: Unable to initialize curl.");
        status = 0;
        Q_EMIT q->failure(VFetchTask::NoCurlHandle, QByteArray());
        return;
    }
    if (request.result == CURLE_OK) {
        logDebug("FetchTask: Making request to %s", request.url.constData());
    }
    long httpStatus = 0;
    if (request.send(httpStatus) == CURLE_OK) {
        reportAnswer(request, static_cast<int>(httpStatus));
    } else {
        reportTransferFailure(request);
    }
}

CurlRequest VFetchTaskPrivate::prepareRequest()
{
    CurlRequest request;
    request.handle.reset(curl_easy_init());
    if (!request.handle) {
        return request;
    }
    const QMutexLocker locker(&dataMutex);
    request.url = url.toEncoded();
    request.word = methodWord(method);
    request.set(CURLOPT_DNS_CACHE_TIMEOUT, dnsCacheSeconds);
    request.set(CURLOPT_NOSIGNAL, 1L); // the resolver must not use signals off the main thread
    addHeaders(request);
    setMethod(request);
    setBody(request);
    setTarget(request);
    return request;
}

void VFetchTaskPrivate::addHeaders(CurlRequest &request) const
{
    for (auto header = headers.cbegin(); header != headers.cend(); ++header) {
        if (debugLogEnabled()) {
            qDebug().noquote() << "header" << header.key() << ":" << shownValue(header.key(), header.value());
        }
        request.addHeader(QStringLiteral("%1: %2").arg(header.key(), header.value()).toLatin1());
    }
}

void VFetchTaskPrivate::setMethod(CurlRequest &request) const
{
    switch (method) {
    case VFetchTask::Get:
        request.set(CURLOPT_HTTPGET, 1L);
        break;
    case VFetchTask::Post:
        // On purpose: the number stands in the place of a form. The body option that always follows (setBody)
        // makes this a plain POST, so the number is never read.
        request.set(CURLOPT_HTTPPOST,
                    reinterpret_cast<curl_httppost *>(1)); // NOLINT(performance-no-int-to-ptr)
        break;
    case VFetchTask::Put:
        request.set(CURLOPT_CUSTOMREQUEST, "PUT");
        break;
    case VFetchTask::PostForm:
        addForm(request);
        request.set(CURLOPT_HTTPPOST, request.form.get());
        break;
    case VFetchTask::Delete:
        request.set(CURLOPT_CUSTOMREQUEST, "DELETE");
        break;
    case VFetchTask::Custom:
        request.set(CURLOPT_CUSTOMREQUEST, customMethod.constData());
        break;
    default:
        break;
    }
}

void VFetchTaskPrivate::addForm(CurlRequest &request) const
{
    for (auto part = formParts.cbegin(); part != formParts.cend(); ++part) {
        const QByteArray name = part.key().toLocal8Bit();
        const QByteArray value = part.value().value.toString().toLocal8Bit();
        if (part.value().kind == QLatin1String("text")) {
            request.addFormPart(name, CURLFORM_COPYCONTENTS, value);
        } else if (part.value().kind == QLatin1String("file")) {
            request.addFormPart(name, CURLFORM_FILE, value);
        }
    }
}

void VFetchTaskPrivate::setBody(CurlRequest &request) const
{
    const QByteArray text = requestBody(postParams, body);
    // A POST sets its body even when it is empty: without one the transfer would read the number set as its
    // form.
    if (!text.isEmpty() || method == VFetchTask::Post) {
        request.set(CURLOPT_POSTFIELDSIZE, static_cast<long>(text.size()));
        request.set(CURLOPT_COPYPOSTFIELDS, text.constData());
    }
}

void VFetchTaskPrivate::setTarget(CurlRequest &request)
{
    request.set(CURLOPT_WRITEFUNCTION, appendToBody);
    request.set(CURLOPT_WRITEDATA, this);
    request.set(CURLOPT_HEADERFUNCTION, appendToHeader);
    request.set(CURLOPT_HEADERDATA, this);
    request.set(CURLOPT_HTTPHEADER, request.headers.get());
    request.set(CURLOPT_URL, request.url.constData());
    request.set(CURLOPT_TIMEOUT, static_cast<long>(timeout));
    request.set(CURLOPT_CONNECTTIMEOUT, static_cast<long>(timeout));
    request.set(CURLOPT_FOLLOWLOCATION, 1L);
    request.set(CURLOPT_ACCEPT_ENCODING, ""); // whatever the library can decode
}

void VFetchTaskPrivate::reportAnswer(const CurlRequest &request, int httpStatus)
{
    status = httpStatus;
    responseHeader = QHttpResponseHeader(responseHeaderText);
    responseHeader.setStatusLine(status);

    static const char line[] = "FetchTask: %s Status=%d Url=%s";
    if (status >= 200 && status <= 299) {
        logDebug(line, request.word, status, request.url.constData());
        Q_EMIT q->success(responseBody);
    } else {
        logWarning(line, request.word, status, request.url.constData());
        Q_EMIT q->failure(status, responseBody);
    }
}

void VFetchTaskPrivate::reportTransferFailure(const CurlRequest &request)
{
    if (request.result == CURLE_COULDNT_RESOLVE_HOST) {
        // The network may have come up with other name servers: have the resolver read its configuration
        // again.
        __res_init();
    }
    logError("FetchTask: [Error] %d %s %s", static_cast<int>(request.result), request.url.constData(),
             curl_easy_strerror(request.result));
    status = 0;
    Q_EMIT q->failure(static_cast<int>(request.result), QByteArray());
}
