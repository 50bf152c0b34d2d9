#include "vfetchtask.h"

#include "log.h"
#include "vfetchtask_p.h"

#include <QMutexLocker>

VFetchTask::VFetchTask(int id)
    : d(new VFetchTaskPrivate(this, id))
{
    // By the name that typeChanged() is declared with: a queued call looks its argument up by that name.
    static const int typeOfType = qRegisterMetaType<VFetchTaskType>("VFetchTask::VFetchTaskType");
    Q_UNUSED(typeOfType)
    logVerbose("Fetch task created");
}

VFetchTask::~VFetchTask()
{
    logVerbose("Fetch task deleted");
    delete d;
}

int VFetchTask::id() const
{
    return d->id;
}

int VFetchTask::invokeInterval() const
{
    const QMutexLocker locker(&d->dataMutex);
    return d->invokeInterval;
}

VFetchTask::VFetchTaskType VFetchTask::type() const
{
    const QMutexLocker locker(&d->dataMutex);
    return d->type;
}

bool VFetchTask::isOneTimeUpdate() const
{
    const QMutexLocker locker(&d->dataMutex);
    return d->oneTimeUpdate;
}

QUrl VFetchTask::url() const
{
    const QMutexLocker locker(&d->dataMutex);
    return d->url;
}

bool VFetchTask::isRunning() const
{
    const QMutexLocker locker(&d->stateMutex);
    return d->running;
}

int VFetchTask::status() const
{
    return d->status;
}

QByteArray VFetchTask::responseBody() const
{
    return d->responseBody;
}

QHttpResponseHeader VFetchTask::responseHeader() const
{
    return d->responseHeader;
}

void VFetchTask::setInvokeInterval(int seconds)
{
    {
        const QMutexLocker locker(&d->dataMutex);
        if (d->invokeInterval == seconds) {
            return;
        }
        d->invokeInterval = seconds;
    }
    Q_EMIT invokeIntervalChanged(seconds);
}

void VFetchTask::setType(VFetchTaskType type)
{
    {
        const QMutexLocker locker(&d->dataMutex);
        if (d->type == type) {
            return;
        }
        d->type = type;
    }
    Q_EMIT typeChanged(type);
}

void VFetchTask::setOneTimeUpdate(bool oneTime)
{
    const QMutexLocker locker(&d->dataMutex);
    d->oneTimeUpdate = oneTime;
}

bool VFetchTask::addListener(const QObject *listener)
{
    if (hasListener(listener)) {
        return false;
    }
    d->listeners.append(listener);
    return true;
}

void VFetchTask::removeListener(const QObject *listener)
{
    d->listeners.removeAll(listener);
}

bool VFetchTask::hasListener(const QObject *listener) const
{
    return d->listeners.contains(listener);
}

void VFetchTask::setRequestMethod(int method)
{
    const QMutexLocker locker(&d->dataMutex);
    d->method = method;
}

void VFetchTask::setCustomMethod(const QByteArray &word)
{
    const QMutexLocker locker(&d->dataMutex);
    d->customMethod = word;
}

void VFetchTask::setTimeout(int seconds)
{
    const QMutexLocker locker(&d->dataMutex);
    d->timeout = seconds;
}

void VFetchTask::setHeader(const QString &name, const QString &value)
{
    const QMutexLocker locker(&d->dataMutex);
    d->headers.insert(name, value);
}

void VFetchTask::setPostParams(const QVariantMap &parameters)
{
    const QMutexLocker locker(&d->dataMutex);
    d->postParams = parameters;
}

void VFetchTask::setPostParam(const QString &name, const QVariant &value)
{
    const QMutexLocker locker(&d->dataMutex);
    d->postParams.insert(name, value);
}

void VFetchTask::setBody(const QByteArray &body)
{
    const QMutexLocker locker(&d->dataMutex);
    d->body = body;
}

void VFetchTask::setFormPart(const QString &name, const QString &kind, const QVariant &value)
{
    const QMutexLocker locker(&d->dataMutex);
    d->formParts.insert(name, {kind, value});
}

void VFetchTask::setUrl(const QUrl &url)
{
    const QMutexLocker locker(&d->dataMutex);
    if (d->url != url) {
        d->url = url;
        d->headers.clear();
    }
}

void VFetchTask::setUrl(const QString &url)
{
    setUrl(QUrl(url));
}

bool VFetchTask::isCancelable() const
{
    return false;
}

bool VFetchTask::prepare()
{
    return true;
}

void VFetchTask::run()
{
    d->run();
}

void VFetchTask::cancel() {}
