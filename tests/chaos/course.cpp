#include "course.h"

#include "oracle.h"
#include "world.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace
{
constexpr int quickPollMs = 3;
constexpr int startTimeoutMs = 30000;
constexpr int calmTimeoutMs = 30000;
// A retry that waits when the calm begins has come by then.
constexpr int longerThanARetryMs = 6500;
constexpr int refusingMs = 2500;
constexpr int stormMs = 30000;
// What a run needs beside its storms.
constexpr int overheadMs = 22000;

constexpr int promptMs = 100;
constexpr int steadyRounds = 100;
// What the same work may take more than before: nothing but for the C library's large pieces.
constexpr int bytesOfARequest = 400;
constexpr int slackKb = 200;
// What may be left of a long queue and of large answers; and of each request, for the daemon's records are
// kept.
constexpr int mostGrowthKb = 6 * 1024;
constexpr int bytesOfARecord = 300;

#ifdef QWIXTD_SANITIZED
constexpr bool isMemoryOurs = false; // the sanitizer's quarantine grows, and it counts leaks itself
#else
constexpr bool isMemoryOurs = true;
#endif
} // namespace

Course::Course(World &world_, quint32 seed)
    : world(world_)
    , dice(seed)
    , asker(world, dice)
    , weather(world, asker, dice)
{
}

QStringList Course::run(int seconds)
{
    QElapsedTimer elapsed;
    elapsed.start();
    QStringList wrong = start();
    do {
        const qint64 left = seconds * 1000LL - elapsed.elapsed() - overheadMs;
        if (wrong.isEmpty()) {
            wrong = storm(static_cast<int>(qBound(qint64(5000), left, qint64(stormMs))));
        }
    } while (wrong.isEmpty() && elapsed.elapsed() + overheadMs < seconds * 1000LL);
    if (wrong.isEmpty()) {
        wrong = measure();
    }
    return wrong.isEmpty() ? end() : wrong;
}

QStringList Course::start()
{
    asker.prepare();
    weather.boot();
    if (!world.startDaemon() ||
        !waitUntil([this] { return world.device().watcher().isDaemonPresent(); }, startTimeoutMs)) {
        return {QStringLiteral("the daemon does not start")};
    }
    latency = std::make_unique<Latency>(world.busAddress());
    asker.askOneOfEach();
    waitUntil([this] { return world.isReady(); }, longerThanARetryMs);
    weather.end();
    weather.endDoubts();
    QStringList wrong = calm();
    if (wrong.isEmpty()) {
        wrong = workSteadily(steadyRounds / 10);
    }
    first = Figures::of(world.daemon());
    world.note(QStringLiteral("chaos   at the start: ") + first.text());
    return wrong;
}

QStringList Course::storm(int milliseconds)
{
    ++storms;
    weather.begin();
    waitUntil([] { return false; }, milliseconds);
    weather.end();
    weather.endDoubts();
    refuseAll();
    return calm();
}

void Course::refuseAll()
{
    // Behind the internet's coming back, which sends again what waits.
    latency->median(1);
    world.note(QStringLiteral("chaos   the server refuses everything"));
    world.device().server().failAlways(ServerFault::withStatus(503));
    asker.askOneOfEach();
    waitUntil([] { return false; }, refusingMs);
    asker.askOneOfEach();
    world.device().server().clearFaults();
    world.note(QStringLiteral("chaos   calm"));
}

QStringList Course::calm()
{
    waitUntil([this] { return world.isReady() && stillOpen().isEmpty(); }, calmTimeoutMs);
    waitUntil([] { return false; }, longerThanARetryMs);
    const Oracle oracle(world.ledger(), world.applications());
    QStringList wrong = wrongs() + oracle.open() +
                        oracle.complaintsAboutList(world.device().server().applications(), World::deviceId);
    if (!world.isReady()) {
        wrong.append(QStringLiteral("the daemon does not become ready"));
    }
    settle();
    world.note(QStringLiteral("chaos   ") + summary());
    return wrong;
}

QStringList Course::stillOpen() const
{
    return Oracle(world.ledger(), world.applications()).open();
}

QStringList Course::workSteadily(int rounds)
{
    for (int round = 0; round < rounds; ++round) {
        for (const bool isDeletion : {false, true}) {
            const int before = static_cast<int>(world.ledger().announcements().size());
            if (isDeletion) {
                const QString made = world.ledger().announcements().last().words.value(2);
                world.deleteApplication(made, QStringLiteral("steady"), QStringLiteral("steady"));
            } else {
                world.registerApplication(QStringLiteral("steady"), QStringLiteral("Round-%1").arg(round),
                                          QStringLiteral("steady"));
            }
            const auto isAnnounced = [&] { return world.ledger().announcements().size() > before; };
            if (!waitUntil(isAnnounced, calmTimeoutMs, quickPollMs)) {
                return {QStringLiteral("not announced in a calm")};
            }
        }
    }
    waitUntil([this] { return stillOpen().isEmpty(); }, calmTimeoutMs);
    const QStringList wrong = wrongs();
    settle();
    return wrong;
}

/// While the server takes its time over each of a queue of requests.
qint64 Course::latencyUnderWork()
{
    world.device().server().failAlways(ServerFault::withDelay(100));
    for (int i = 0; i < 8; ++i) {
        asker.askToRegister();
    }
    const qint64 answerMs = latency->median(21);
    world.device().server().clearFaults();
    waitUntil([this] { return stillOpen().isEmpty(); }, calmTimeoutMs);
    return answerMs;
}

QStringList Course::measure()
{
    const qint64 answerMs = latencyUnderWork();
    QStringList wrong = workSteadily(steadyRounds);
    const Figures before = Figures::of(world.daemon());
    wrong += workSteadily(steadyRounds);
    world.note(QStringLiteral("chaos   answers within %1 ms; %2 KB, then %3 KB")
                   .arg(answerMs)
                   .arg(before.memoryKb)
                   .arg(last.memoryKb));
    const qint64 bytesEach = (last.memoryKb - before.memoryKb - slackKb) * 1024 / (2 * steadyRounds);
    if (isMemoryOurs && bytesEach > bytesOfARequest) {
        wrong.append(QStringLiteral("memory grows by more than %1 bytes a request").arg(bytesEach));
    }
    const qint64 mostKb = first.memoryKb + mostGrowthKb + qint64(asked) * bytesOfARecord / 1024;
    if (isMemoryOurs && last.memoryKb > mostKb) {
        wrong.append(
            QStringLiteral("memory has grown from %1 to %2 KB").arg(first.memoryKb).arg(last.memoryKb));
    }
    if (last.files != first.files || last.threads != first.threads) {
        wrong.append(QStringLiteral("%1 at the end, %2 at the start").arg(last.text(), first.text()));
    }
    if (answerMs < 0 || answerMs > promptMs) {
        wrong.append(QStringLiteral("the bus is answered after %1 ms").arg(answerMs));
    }
    return wrong;
}

/// A daemon that loses its bus ends, and a sanitizer says then what it has leaked.
QStringList Course::end()
{
    world.endBus();
    return world.complaints();
}

QStringList Course::wrongs()
{
    world.look();
    return world.complaints() + Oracle(world.ledger(), world.applications()).complaints();
}

bool Course::waitUntil(const std::function<bool()> &condition, int milliseconds, int every)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.elapsed() >= milliseconds || !world.complaints().isEmpty()) {
            return false;
        }
        QEventLoop loop;
        QTimer::singleShot(every, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
        world.look();
    }
    return true;
}

void Course::settle()
{
    asked += static_cast<int>(world.ledger().asks().size());
    sent += static_cast<int>(world.ledger().runs().size());
    announced += static_cast<int>(world.ledger().announcements().size());
    last = Figures::of(world.daemon());
    world.startAnew();
    asker.forget();
}

QString Course::summary() const
{
    return QStringLiteral("%1 storms, %2 asked, %3 sent, %4 announced; at the start %5, at the end %6")
        .arg(storms)
        .arg(asked)
        .arg(sent)
        .arg(announced)
        .arg(first.text(), last.text());
}
