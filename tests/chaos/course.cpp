#include "course.h"

#include "oracle.h"
#include "world.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <vector>

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
constexpr int overheadMs = 24000;

// The daemon closes a connection a moment after it has announced what came of it.
constexpr int cleaningUpMs = 2000;
constexpr int promptMs = 100;
constexpr int answerDelayMs = 300;
constexpr int steadyRounds = 70;
constexpr int steadyParts = 3;
constexpr int bytesOfARequest = 400;
// What may be left of a long queue and of large answers; and of each request, for the daemon's records are
// kept.
constexpr int mostGrowthKb = 12 * 1024;
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
        wrong = workSteadily(steadyRounds);
    }
    pass(cleaningUpMs);
    first = Figures::of(world.daemon());
    world.note(QStringLiteral("chaos   at the start: ") + first.text());
    return wrong;
}

QStringList Course::storm(int milliseconds)
{
    ++storms;
    weather.begin();
    pass(milliseconds);
    weather.end();
    weather.endDoubts();
    refuseAll();
    return calm();
}

void Course::refuseAll()
{
    // Behind the internet's coming back, which sends again what waits.
    latency->call();
    world.note(QStringLiteral("chaos   the server refuses everything"));
    world.device().server().failAlways(ServerFault::withStatus(503));
    asker.askOneOfEach();
    pass(refusingMs);
    asker.askOneOfEach();
    world.device().server().clearFaults();
    world.note(QStringLiteral("chaos   calm"));
}

QStringList Course::calm()
{
    waitUntil([this] { return world.isReady() && stillOpen().isEmpty(); }, calmTimeoutMs);
    pass(longerThanARetryMs);
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

/// How quickly the bus is answered while the server takes its time over each request: the middle one of
/// several calls, because any single one may have to wait for other programs of the machine. -1 when one is
/// not answered.
qint64 Course::latencyUnderWork()
{
    world.device().server().failAlways(ServerFault::withDelay(answerDelayMs));
    std::vector<qint64> times;
    for (int i = 0; i < 7; ++i) {
        asker.askToRegister();
        times.push_back(latency->call());
    }
    world.device().server().clearFaults();
    waitUntil([this] { return stillOpen().isEmpty(); }, calmTimeoutMs);
    std::sort(times.begin(), times.end());
    return times.front() < 0 ? -1 : times.at(times.size() / 2);
}

/// By how many bytes a request the memory grows at the least, when the same work is done several times. Once,
/// the C library may take a large piece anew; a leak grows each time.
qint64 Course::growth(QStringList &wrong)
{
    wrong += workSteadily(steadyRounds);
    qint64 least = std::numeric_limits<qint64>::max();
    for (int i = 0; i < steadyParts && wrong.isEmpty(); ++i) {
        const qint64 before = last.memoryKb;
        wrong += workSteadily(steadyRounds);
        least = std::min(least, (last.memoryKb - before) * 1024 / (2 * steadyRounds));
    }
    return least;
}

QStringList Course::measure()
{
    QStringList wrong;
    const qint64 answerMs = latencyUnderWork();
    const qint64 bytesEach = growth(wrong);
    if (!wrong.isEmpty()) {
        return wrong;
    }
    world.note(QStringLiteral("chaos   the bus is answered after %1 ms; memory grows by %2 bytes a request")
                   .arg(answerMs)
                   .arg(bytesEach));
    if (isMemoryOurs && bytesEach > bytesOfARequest) {
        wrong.append(QStringLiteral("memory grows by %1 bytes a request").arg(bytesEach));
    }
    const qint64 mostKb = first.memoryKb + mostGrowthKb + qint64(asked) * bytesOfARecord / 1024;
    if (isMemoryOurs && last.memoryKb > mostKb) {
        wrong.append(
            QStringLiteral("memory has grown from %1 to %2 KB").arg(first.memoryKb).arg(last.memoryKb));
    }
    const auto isBackAtStart = [this] {
        last = Figures::of(world.daemon());
        return last.files <= first.files && last.threads <= first.threads;
    };
    if (!waitUntil(isBackAtStart, cleaningUpMs)) {
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

void Course::pass(int milliseconds)
{
    waitUntil([] { return false; }, milliseconds);
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
