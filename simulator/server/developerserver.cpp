#include "developerserver.h"

#include "tlsserver.h"

#include <QMetaObject>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace
{
const char address[] = "127.0.0.1";

QByteArray bytes(const std::string &text)
{
    return QByteArray(text.data(), static_cast<int>(text.size()));
}

// The header lines of a request as they were read, without the request line.
QList<QPair<QByteArray, QByteArray>> headersOf(const QByteArray &received)
{
    QList<QPair<QByteArray, QByteArray>> headers;
    const QByteArray head = received.left(received.indexOf("\r\n\r\n"));
    const QList<QByteArray> lines = head.split('\n').mid(1);
    for (const QByteArray &line : lines) {
        const auto colon = line.indexOf(':');
        if (colon > 0) {
            headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
        }
    }
    return headers;
}

bool mayHaveBody(int status)
{
    return status >= 200 && status != 204 && status != 304;
}
} // namespace

class DeveloperServer::Private
{
public:
    explicit Private(DeveloperServer &owner)
        : q(owner)
    {
    }

    void handle(const httplib::Request &incoming, const std::string &body, httplib::Response &response);
    std::optional<ServerFault> takeFault();
    HttpAnswer answerFor(const HttpRequest &request, const std::optional<ServerFault> &fault);
    bool hold(const HttpRequest &request, int delayMs);
    void remember(const HttpRequest &request);
    void addHandlers(TlsServer &server);

    DeveloperServer &q;
    std::unique_ptr<TlsServer> server;
    std::thread listener;
    QString error;
    quint16 port = 0;

    mutable std::mutex mutex;
    std::condition_variable released;
    bool stopping = false;
    // Raised to let held answers go.
    int releases = 0;
    AppsEndpoint endpoint;
    Script script;
    std::deque<ServerFault> nextFaults;
    std::optional<ServerFault> lastingFault;
    QList<HttpRequest> log;
    qint64 requestsReceived = 0;
    int inFlight = 0;
    int mostInFlight = 0;
};

void DeveloperServer::Private::addHandlers(TlsServer &to)
{
    // Everything is answered here, unknown paths and methods included, so that everything is on record.
    const char everything[] = R"([\s\S]*)";
    const auto withoutBody = [this](const httplib::Request &request, httplib::Response &response) {
        handle(request, request.body, response);
    };
    // The library parses a form-encoded body unless it is read piece by piece, and then refuses long ones.
    const auto withBody = [this](const httplib::Request &request, httplib::Response &response,
                                 const httplib::ContentReader &reader) {
        std::string body;
        reader([&body](const char *data, size_t size) {
            body.append(data, size);
            return true;
        });
        handle(request, body, response);
    };
    to.Get(everything, withoutBody);
    to.Options(everything, withoutBody);
    to.Post(everything, withBody);
    to.Put(everything, withBody);
    to.Patch(everything, withBody);
    to.Delete(everything, withBody);
}

void DeveloperServer::Private::handle(const httplib::Request &incoming, const std::string &body,
                                      httplib::Response &response)
{
    HttpRequest request;
    request.method = bytes(incoming.method);
    request.target = bytes(incoming.target);
    request.headers = headersOf(bytes(TlsServer::current().received()));
    request.body = bytes(body);
    request.remotePort = incoming.remote_port;
    request.receivedAtMs = nowMs();

    Script currentScript;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        request.number = ++requestsReceived;
        request.othersInFlight = inFlight;
        ++inFlight;
        mostInFlight = std::max(mostInFlight, inFlight);
        log.append(request);
        currentScript = script;
    }

    std::optional<HttpAnswer> scripted;
    if (currentScript) {
        scripted = currentScript(request);
    }
    std::optional<ServerFault> fault;
    if (!scripted) {
        fault = takeFault();
    }
    const int delayMs = scripted ? scripted->delayMs : (fault ? fault->delayMs : 0);
    const bool isStopping = delayMs > 0 && !hold(request, delayMs);
    const bool isClosed =
        isStopping || (scripted ? scripted->closeConnection : (fault && fault->closeConnection));
    if (!isClosed) {
        const HttpAnswer answer = scripted ? *scripted : answerFor(request, fault);
        request.status = answer.status;
        request.answerBody = answer.body;
        response.status = answer.status;
        if (mayHaveBody(answer.status)) {
            response.set_content(answer.body.toStdString(), answer.contentType.constData());
        }
    }
    request.answeredAtMs = nowMs();
    // Done before the answer leaves, so that a client that waited for it never counts as overlapping.
    remember(request);
    if (isClosed) {
        TlsServer::current().abort();
    }
}

std::optional<ServerFault> DeveloperServer::Private::takeFault()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (nextFaults.empty()) {
        return lastingFault;
    }
    const ServerFault fault = nextFaults.front();
    nextFaults.pop_front();
    return fault;
}

HttpAnswer DeveloperServer::Private::answerFor(const HttpRequest &request,
                                               const std::optional<ServerFault> &fault)
{
    if (fault && fault->status != 0) {
        HttpAnswer answer;
        answer.status = fault->status;
        answer.body = "{\"error\":\"simulated failure\"}";
        return answer;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    HttpAnswer answer = endpoint.answer(request);
    if (fault && fault->notJson) {
        answer.status = 200;
        answer.body = "<html>this is no JSON</html>";
        answer.contentType = "text/html";
    }
    return answer;
}

// Waits; false when the server is stopping.
bool DeveloperServer::Private::hold(const HttpRequest &request, int delayMs)
{
    QMetaObject::invokeMethod(
        &q, [this, request, delayMs] { Q_EMIT q.held(request, delayMs); }, Qt::QueuedConnection);
    std::unique_lock<std::mutex> lock(mutex);
    const int releasesBefore = releases;
    released.wait_for(lock, std::chrono::milliseconds(delayMs),
                      [&] { return stopping || releases != releasesBefore; });
    return !stopping;
}

void DeveloperServer::Private::remember(const HttpRequest &request)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        --inFlight;
        for (HttpRequest &logged : log) {
            if (logged.number == request.number) {
                logged = request;
            }
        }
    }
    QMetaObject::invokeMethod(
        &q, [this, request] { Q_EMIT q.answered(request); }, Qt::QueuedConnection);
}

DeveloperServer::DeveloperServer(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>(*this))
{
    qRegisterMetaType<HttpRequest>();
}

DeveloperServer::~DeveloperServer()
{
    stop();
}

bool DeveloperServer::start(const QString &certificatePath, const QString &keyPath, quint16 port)
{
    stop();
    auto server = std::make_unique<TlsServer>(certificatePath.toStdString(), keyPath.toStdString());
    if (!server->is_valid()) {
        d->error = QString::fromStdString(server->problem());
        return false;
    }
    d->addHandlers(*server);
    const int bound =
        port == 0 ? server->bind_to_any_port(address) : (server->bind_to_port(address, port) ? port : -1);
    if (bound < 0) {
        d->error = QStringLiteral("cannot listen on %1:%2: the port is taken or not allowed")
                       .arg(QString::fromLatin1(address))
                       .arg(port);
        return false;
    }
    {
        const std::lock_guard<std::mutex> lock(d->mutex);
        d->stopping = false;
    }
    d->port = static_cast<quint16>(bound);
    d->error.clear();
    d->server = std::move(server);
    d->listener = std::thread([running = d->server.get()] { running->listen_after_bind(); });
    // A server that does not run yet cannot be stopped either.
    while (!d->server->is_running()) {
        std::this_thread::yield();
    }
    return true;
}

void DeveloperServer::stop()
{
    if (!d->server) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(d->mutex);
        d->stopping = true;
    }
    d->released.notify_all();
    d->server->stop();
    d->server->closeConnections();
    d->listener.join();
    d->server.reset();
}

bool DeveloperServer::isRunning() const
{
    return d->server != nullptr;
}

QString DeveloperServer::errorText() const
{
    return d->error;
}

quint16 DeveloperServer::port() const
{
    return d->port;
}

QString DeveloperServer::host() const
{
    return QStringLiteral("%1:%2").arg(QString::fromLatin1(address)).arg(d->port);
}

void DeveloperServer::setApiKey(const QString &key)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->endpoint.setApiKey(key);
}

QList<ServerApplication> DeveloperServer::applications() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->endpoint.applications();
}

QString DeveloperServer::addApplication(const ServerApplication &application)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->endpoint.add(application);
}

bool DeveloperServer::removeApplication(const QString &appId)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->endpoint.remove(appId);
}

void DeveloperServer::removeAllApplications()
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->endpoint.clear();
}

void DeveloperServer::failNext(int count, const ServerFault &fault)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->nextFaults.insert(d->nextFaults.end(), static_cast<size_t>(std::max(count, 0)), fault);
}

void DeveloperServer::failAlways(const ServerFault &fault)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->lastingFault = fault;
}

void DeveloperServer::clearFaults()
{
    {
        const std::lock_guard<std::mutex> lock(d->mutex);
        d->nextFaults.clear();
        d->lastingFault.reset();
        ++d->releases;
    }
    d->released.notify_all();
}

void DeveloperServer::setScript(const Script &script)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->script = script;
}

QList<HttpRequest> DeveloperServer::requests() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->log;
}

int DeveloperServer::requestCount() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return static_cast<int>(d->log.size());
}

void DeveloperServer::clearRequests()
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->log.clear();
    d->mostInFlight = d->inFlight;
}

int DeveloperServer::maximumConcurrent() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->mostInFlight;
}

qint64 DeveloperServer::nowMs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}
