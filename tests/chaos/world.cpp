#include "world.h"

#include "certificates.h"
#include "lastingport.h"

namespace
{
constexpr int endTimeoutMs = 20000;
constexpr int statusWithoutBus = 1;

// A transfer that ended without an answer is reported so.
const auto transferFailure = QByteArrayLiteral("FetchTask: [Error] ");
} // namespace

const QString World::apiKey = QStringLiteral("k3y-0f/th3+dev1ce");
const QString World::deviceId = QStringLiteral("d9");

// The authority's certificate alone is trusted: to read a whole bundle is most of what a request costs.
World::World(const QString &program, const QDir &directory_)
    : directory(directory_)
    , journal(directory.filePath(QStringLiteral("journal.log")))
    , process(program, Certificates::shared().authority())
{
    process.setEnvironment(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
}

bool World::start()
{
    if (!bus.start()) {
        return false;
    }
    simulator = std::make_unique<DeviceSimulator>(bus.address());
    simulator->setApiKeyQuietly(apiKey);
    simulator->daemon().setRemoteId(deviceId);
    simulator->daemon().setSerial(QStringLiteral("serial-1"));
    if (!simulator->server().start(LastingPort::find()) || !simulator->watcher().start()) {
        return false;
    }
    follow();
    directory.mkdir(QStringLiteral("nginx"));
    front = std::make_unique<FrontServer>(directory.filePath(QStringLiteral("nginx")),
                                          Certificates::shared().serverCertificate(),
                                          Certificates::shared().serverKey(), simulator->server().port());
    return front->start();
}

bool World::startDaemon()
{
    note(QStringLiteral("chaos   the daemon starts"));
    return process.start(bus.address(), QStringLiteral("127.0.0.1:%1").arg(front->port()));
}

void World::endBus()
{
    look();
    note(QStringLiteral("chaos   the bus goes away"));
    bus.stop();
    if (!process.waitForExit(endTimeoutMs)) {
        wrongs.append(QStringLiteral("the daemon lives on without a bus"));
        return;
    }
    readDaemonLines();
    if (process.exitStatus() != statusWithoutBus) {
        wrongs.append(QStringLiteral("the daemon ended with status %1").arg(process.exitStatus()));
    }
}

void World::follow()
{
    connect(simulator.get(), &DeviceSimulator::traced, this, [this](const QString &line) {
        note(line.mid(static_cast<int>(line.indexOf(QLatin1Char(' '))) + 1));
    });
    connect(&simulator->watcher(), &DaemonWatcher::received, this, &World::take);
    connect(&simulator->watcher(), &DaemonWatcher::answered, this,
            [this](const QString &member, const QStringList &arguments, const QString &error) {
                if (!error.isEmpty()) {
                    wrongs.append(QStringLiteral("not answered: %1(%2): %3")
                                      .arg(member, arguments.join(QStringLiteral(", ")), error));
                }
            });
    connect(&simulator->server(), &HttpServer::answered, this, [this](const HttpRequest &request) {
        book.serverSaw(request, "Basic " + (":" + apiKey.toUtf8()).toBase64());
        if (request.method == "GET" && request.status >= 200 && request.status <= 299) {
            lastList = request.answerBody;
        }
        simulator->server().clearRequests();
    });
}

void World::take(const QString &member, const QStringList &arguments)
{
    if (member == QStringLiteral("daemonDidStarted")) {
        ++starts;
        takeList();
        return;
    }
    const QString appId = arguments.value(1);
    if (member == QStringLiteral("applicationRegistered") && !appId.isEmpty()) {
        const Run run = book.registrationOf(appId);
        known.add({appId, run.field("identifier"), run.field("name"), run.field("type"), false});
    }
    book.announced(QStringList(member) + arguments);
}

void World::takeList()
{
    if (starts > 1) {
        wrongs.append(QStringLiteral("daemonDidStarted %1 times").arg(starts));
        return;
    }
    known.takeList(lastList, deviceId, simulator->widgetManager().widgets());
    const QList<KnownApplication> all = known.all();
    for (const KnownApplication &application : all) {
        if (application.isToGo) {
            book.ask({Ledger::nowMs(),
                      {QStringLiteral("DELETE app_id=%1&type=%2")
                           .arg(application.appId, application.type)
                           .toUtf8()},
                      application.identifier,
                      true});
        }
    }
}

DeviceSimulator &World::device()
{
    return *simulator;
}

Ledger &World::ledger()
{
    return book;
}

Applications &World::applications()
{
    return known;
}

QwixtdProcess &World::daemon()
{
    return process;
}

QString World::busAddress() const
{
    return bus.address();
}

void World::note(const QString &line)
{
    journal.note(line);
}

void World::look()
{
    const QList<FrontRun> runs = front->newRuns();
    for (const FrontRun &run : runs) {
        book.frontSaw(run);
    }
    readDaemonLines();
    if (!process.isRunning() && !wrongs.contains(QStringLiteral("the daemon ended by itself"))) {
        wrongs.append(QStringLiteral("the daemon ended by itself"));
    }
}

void World::readDaemonLines()
{
    const QList<QByteArray> lines = process.takeErrorLines();
    for (const QByteArray &line : lines) {
        note(QStringLiteral("daemon  ") + QString::fromUtf8(line));
        if (line.contains(transferFailure)) {
            book.transferFailed();
        }
        if (QwixtdProcess::hasComplaint(line) || line.contains("QDBus") || line.contains("Authorization")) {
            wrongs.append(QStringLiteral("the daemon wrote: ") + QString::fromUtf8(line));
        }
        if (line.contains(apiKey.toUtf8())) {
            wrongs.append(QStringLiteral("the daemon wrote the API key"));
        }
    }
}

void World::startAnew()
{
    look();
    known.settle(simulator->server().applications());
    // What the daemon cannot know stays on the server for ever; a long run would drown in it.
    const QList<ServerApplication> onServer = simulator->server().applications();
    for (const ServerApplication &application : onServer) {
        if (application.deviceId == deviceId && !known.contains(application.appId)) {
            simulator->server().removeApplication(application.appId);
        }
    }
    book = Ledger();
}

bool World::isReady() const
{
    return starts > 0;
}

QStringList World::complaints() const
{
    return wrongs;
}
