#include "httpserver.h"

#include "httpconnection.h"
#include "listener.h"
#include "requestrecord.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <deque>
#include <limits>
#include <map>

namespace
{
// A request that waits for its answer to go out.
struct Waiting {
    HttpConnection *connection;
    HttpRequest request;
    HttpAnswer answer;
};

const char address[] = "127.0.0.1";
constexpr int largestAnswerKept = 64 * 1024;
} // namespace

class HttpServer::Private
{
public:
    explicit Private(HttpServer &owner)
        : q(owner)
    {
    }

    bool listen(quint16 port);
    void adopt(QTcpSocket *socket);
    void take(HttpConnection *connection, HttpRequest request);
    HttpAnswer answerFor(const HttpRequest &request);
    void hold(const Waiting &waiting);
    void send(qint64 number);
    void conclude(HttpRequest request, const HttpAnswer &answer);
    void forget(HttpConnection *connection);

    HttpServer &q;
    Listener listener;
    QString error;
    /// Kept when the server stops: clients that come then are to fail there.
    quint16 boundPort = 0;
    std::deque<HttpAnswer> queued;
    Script script;
    std::map<qint64, Waiting> inFlight; // by the requests' numbers
    QList<HttpConnection *> connections;
    RequestRecord record;
    qint64 requestsReceived = 0;
    int mostInFlight = 0;
    int mostConnections = std::numeric_limits<int>::max();
    int largestBody = std::numeric_limits<int>::max();
};

bool HttpServer::Private::listen(quint16 port)
{
    if (listener.listen(QHostAddress(QString::fromLatin1(address)), port)) {
        boundPort = listener.serverPort();
        error.clear();
        return true;
    }
    error = QStringLiteral("cannot listen on %1:%2: the port is taken or not allowed")
                .arg(QString::fromLatin1(address))
                .arg(port);
    return false;
}

void HttpServer::Private::adopt(QTcpSocket *socket)
{
    auto *const connection = new HttpConnection(socket, largestBody, &q);
    if (connections.size() >= mostConnections) {
        connection->cutOff();
        connection->deleteLater();
        return;
    }
    connections.append(connection);
    connect(connection, &HttpConnection::received, &q,
            [this, connection](const HttpRequest &request) { take(connection, request); });
    connect(connection, &HttpConnection::closed, &q, [this, connection] { forget(connection); });
    connect(connection, &HttpConnection::handshakeFailed, &q, &HttpServer::handshakeFailed);
}

void HttpServer::Private::take(HttpConnection *connection, HttpRequest request)
{
    request.number = ++requestsReceived;
    request.receivedAtMs = nowMs();
    request.othersInFlight = static_cast<int>(inFlight.size());
    record.add(request);
    Q_EMIT q.received(request);
    const Waiting waiting{connection, request, answerFor(request)};
    inFlight.insert({request.number, waiting});
    mostInFlight = std::max(mostInFlight, static_cast<int>(inFlight.size()));
    if (waiting.answer.delayMs > 0) {
        hold(waiting);
    } else {
        send(request.number);
    }
}

HttpAnswer HttpServer::Private::answerFor(const HttpRequest &request)
{
    if (!queued.empty()) {
        const HttpAnswer next = queued.front();
        queued.pop_front();
        return next;
    }
    const std::optional<HttpAnswer> scripted = script ? script(request) : std::nullopt;
    return scripted ? *scripted : q.ordinaryAnswer(request);
}

void HttpServer::Private::hold(const Waiting &waiting)
{
    QTimer::singleShot(waiting.answer.delayMs, waiting.connection,
                       [this, number = waiting.request.number] { send(number); });
    Q_EMIT q.held(waiting.request, waiting.answer.delayMs);
}

// Does nothing for a request that is answered already, or whose connection is closed.
void HttpServer::Private::send(qint64 number)
{
    const auto found = inFlight.find(number);
    if (found == inFlight.end()) {
        return;
    }
    const Waiting waiting = found->second;
    const bool staysSilent =
        waiting.answer.isNothing() && waiting.answer.ending == HttpAnswer::Ending::KeepOpen;
    if (staysSilent) {
        return;
    }
    inFlight.erase(found);
    waiting.connection->send(waiting.answer);
    conclude(waiting.request, waiting.answer);
}

void HttpServer::Private::conclude(HttpRequest request, const HttpAnswer &answer)
{
    request.status = answer.status;
    request.answerBody = answer.body;
    request.answerBytes = answer.beginning(largestAnswerKept);
    request.answeredAtMs = nowMs();
    record.update(request);
    Q_EMIT q.answered(request);
}

void HttpServer::Private::forget(HttpConnection *connection)
{
    connections.removeOne(connection);
    connection->deleteLater();
    const auto found = std::find_if(inFlight.begin(), inFlight.end(), [connection](const auto &entry) {
        return entry.second.connection == connection;
    });
    if (found != inFlight.end()) {
        const HttpRequest request = found->second.request;
        inFlight.erase(found);
        conclude(request, HttpAnswer::nothing(HttpAnswer::Ending::CutOff));
    }
}

HttpServer::HttpServer(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>(*this))
{
    connect(&d->listener, &Listener::accepted, this, [this](QTcpSocket *socket) { d->adopt(socket); });
}

HttpServer::~HttpServer()
{
    // Connections that end now are not reported.
    blockSignals(true);
    d->listener.close();
    qDeleteAll(d->connections);
}

bool HttpServer::start(quint16 port)
{
    stop();
    d->listener.usePlainConnections();
    return d->listen(port);
}

bool HttpServer::start(const QString &certificatePath, const QString &keyPath, quint16 port)
{
    stop();
    d->error = d->listener.useTls(certificatePath, keyPath);
    return d->error.isEmpty() && d->listen(port);
}

void HttpServer::stop()
{
    d->listener.close();
    const QList<HttpConnection *> open = d->connections;
    for (HttpConnection *const connection : open) {
        connection->cutOff();
    }
}

bool HttpServer::isRunning() const
{
    return d->listener.isListening();
}

QString HttpServer::errorText() const
{
    return d->error;
}

quint16 HttpServer::port() const
{
    return d->boundPort;
}

QString HttpServer::host() const
{
    return QStringLiteral("%1:%2").arg(QString::fromLatin1(address)).arg(d->boundPort);
}

QString HttpServer::url(const QString &path) const
{
    return (d->listener.isTls() ? QStringLiteral("https://") : QStringLiteral("http://")) + host() + path;
}

void HttpServer::queueAnswer(const HttpAnswer &answer)
{
    d->queued.push_back(answer);
}

void HttpServer::setScript(const Script &script)
{
    d->script = script;
}

void HttpServer::releaseHeldAnswers()
{
    const std::map<qint64, Waiting> waiting = d->inFlight;
    for (const auto &entry : waiting) {
        d->send(entry.first);
    }
}

void HttpServer::wakeStreams()
{
    const QList<HttpConnection *> open = d->connections;
    for (HttpConnection *const connection : open) {
        connection->goOn();
    }
}

void HttpServer::setMostConnections(int count)
{
    d->mostConnections = count;
}

void HttpServer::setLargestBody(int size)
{
    d->largestBody = size;
}

void HttpServer::setMostOnRecord(int count)
{
    d->record.setMost(count);
}

QList<HttpRequest> HttpServer::requests() const
{
    return d->record.all();
}

int HttpServer::requestCount() const
{
    return static_cast<int>(d->record.all().size());
}

void HttpServer::clearRequests()
{
    d->record.clear();
    d->mostInFlight = static_cast<int>(d->inFlight.size());
}

int HttpServer::maximumConcurrent() const
{
    return d->mostInFlight;
}

qint64 HttpServer::nowMs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

HttpAnswer HttpServer::ordinaryAnswer(const HttpRequest & /*request*/)
{
    return HttpAnswer::nothing(HttpAnswer::Ending::CutOff);
}
