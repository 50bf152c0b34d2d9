#include "oracle.h"

#include "applications.h"
#include "appsendpoint.h"

#include <QSet>

#include <algorithm>

namespace
{
// A retry comes 5 s after the failure; the front server's clock is read a little before what it stands for.
constexpr int earliestRetryMs = 4900;
// The daemon may read an answer so long after it was sent, because a device service hangs.
constexpr int latestReadMs = 6000;
// So long after a transfer the daemon's report of it is read at the latest.
constexpr int latestReportMs = 1000;

QString textOf(const QByteArray &request)
{
    return QString::fromUtf8(request);
}

// What the daemon announces at the end of a run; the widget of a deletion does not stand in its request.
QStringList announcementOf(const Run &run)
{
    if (run.method() == "POST") {
        return {QStringLiteral("applicationRegistered"), run.field("identifier"), run.givenId(),
                run.field("type")};
    }
    return {QStringLiteral("applicationDeleted"), run.field("app_id"), run.field("type")};
}

QStringList withoutWidget(QStringList words)
{
    if (words.first() == QStringLiteral("applicationDeleted")) {
        words.removeAt(1);
    }
    return words;
}

bool isAnnounced(const Run &run)
{
    return run.outcome == Run::Done && (run.method() == "POST" || run.method() == "DELETE");
}
} // namespace

Oracle::Oracle(const Ledger &ledger_, const Applications &applications_)
    : ledger(ledger_)
    , applications(applications_)
    , runs(ledger.runs())
{
    for (const Run &run : runs) {
        runsByRequest[run.request].append(run);
    }
    for (const Ask &ask : ledger.asks()) {
        for (const QByteArray &request : ask.requests) {
            ++asksByRequest[request];
        }
    }
}

QStringList Oracle::open() const
{
    QStringList lines;
    for (const Ask &ask : ledger.asks()) {
        if (!isAtItsEnd(ask)) {
            lines.append(QStringLiteral("neither done nor given up: ") + textOf(ask.requests.first()));
        }
    }
    return lines + announcementsAmiss(true);
}

QStringList Oracle::complaints() const
{
    return faultyRuns() + unaskedRuns() + earlyRetries() + wrongOrder() + announcementsAmiss(false) +
           wrongWidgets();
}

bool Oracle::isAtItsEnd(const Ask &ask) const
{
    return std::any_of(ask.requests.cbegin(), ask.requests.cend(), [&](const QByteArray &request) {
        if (request.startsWith("DELETE")) {
            return possibleEnds(request) >= asksByRequest.value(request);
        }
        if (request.startsWith("POST")) {
            return isRegistered(ask, request);
        }
        return possibleEnds(request) > 0;
    });
}

// Asked again after its end, a registration is carried out again: the end that counts comes after the asking.
bool Oracle::isRegistered(const Ask &ask, const QByteArray &request) const
{
    const QList<Run> all = runsByRequest.value(request);
    return std::any_of(all.cbegin(), all.cend(), [&](const Run &run) {
        if (run.outcome == Run::GivenUp) {
            return run.endMs + latestReadMs >= ask.atMs;
        }
        const QStringList words = announcementOf(run);
        const QList<Announcement> &said = ledger.announcements();
        return run.outcome == Run::Done &&
               std::any_of(said.cbegin(), said.cend(), [&](const Announcement &announcement) {
                   return announcement.atMs >= ask.atMs && announcement.words == words;
               });
    });
}

int Oracle::certainEnds(const QByteArray &request) const
{
    const QList<Run> all = runsByRequest.value(request);
    return static_cast<int>(
        std::count_if(all.cbegin(), all.cend(), [](const Run &run) { return run.isEnd(); }));
}

int Oracle::possibleEnds(const QByteArray &request) const
{
    const QList<Run> all = runsByRequest.value(request);
    return static_cast<int>(
        std::count_if(all.cbegin(), all.cend(), [](const Run &run) { return run.outcome != Run::Failed; }));
}

// A widget's deletion makes the daemon ask for its applications' without naming a type; and without an app
// id, when the server has not said one.
int Oracle::timesAllowed(const QByteArray &request) const
{
    Run run;
    run.request = request;
    const bool isOfWidget =
        request == "DELETE type=" || (run.method() == "DELETE" && request.endsWith("&type="));
    if (!isOfWidget) {
        return asksByRequest.value(request);
    }
    const QString appId = run.field("app_id");
    const QStringList gone = ledger.deletedWidgets();
    return static_cast<int>(appId.isEmpty() ? gone.size() : gone.count(applications.identifierOf(appId)));
}

QStringList Oracle::faultyRuns() const
{
    QStringList lines;
    for (const Run &run : runs) {
        if (!run.fault.isEmpty()) {
            lines.append(run.fault + QStringLiteral(": ") + textOf(run.request));
        }
    }
    return lines;
}

QStringList Oracle::unaskedRuns() const
{
    QStringList lines;
    for (auto entry = runsByRequest.cbegin(); entry != runsByRequest.cend(); ++entry) {
        const bool isList = entry.key() == "GET";
        const int allowed = isList ? 1 : timesAllowed(entry.key());
        if (allowed == 0) {
            lines.append(QStringLiteral("sent, and nobody asked for it: ") + textOf(entry.key()));
        } else if (!isList && certainEnds(entry.key()) > allowed) {
            lines.append(QStringLiteral("done %1 times, asked %2 times: %3")
                             .arg(certainEnds(entry.key()))
                             .arg(allowed)
                             .arg(textOf(entry.key())));
        }
    }
    return lines;
}

// Only of what was asked once: of equal deletions each has runs of its own.
QStringList Oracle::earlyRetries() const
{
    QStringList lines;
    for (auto entry = runsByRequest.cbegin(); entry != runsByRequest.cend(); ++entry) {
        const bool isList = entry.key() == "GET";
        for (int i = 1; i < entry->size() && (isList || timesAllowed(entry.key()) == 1); ++i) {
            const Run &before = entry->at(i - 1);
            const Run &again = entry->at(i);
            const bool mayBeAsked = isList && before.outcome == Run::GivenUp;
            const qint64 pause = again.beginMs - (before.isCertain ? before.endMs : before.beginMs);
            if (before.isEnd() && !mayBeAsked) {
                lines.append(QStringLiteral("sent again after its end: ") + textOf(entry.key()));
            } else if (!mayBeAsked && pause < earliestRetryMs) {
                lines.append(
                    QStringLiteral("sent again after %1 ms: %2").arg(pause).arg(textOf(entry.key())));
            }
        }
    }
    return lines;
}

// The first run of what was asked earlier comes first, unless it failed where no server has seen it.
QStringList Oracle::wrongOrder() const
{
    struct First {
        const Ask *ask;
        qint64 beginMs;
    };
    QList<First> firsts;
    QStringList lines;
    for (const Ask &ask : ledger.asks()) {
        First first{&ask, 0};
        bool isAskedOnce = !ask.isItsOwn;
        for (const QByteArray &request : ask.requests) {
            isAskedOnce = isAskedOnce && asksByRequest.value(request) == 1;
            if (first.beginMs == 0 && runsByRequest.contains(request)) {
                first.beginMs = runsByRequest.value(request).first().beginMs;
            }
        }
        if (!isAskedOnce || first.beginMs == 0) {
            continue;
        }
        for (const First &earlier : firsts) {
            const QList<qint64> &failed = ledger.failedTransfers();
            const bool mayHaveFailed = std::any_of(failed.cbegin(), failed.cend(), [&](qint64 atMs) {
                return atMs >= earlier.ask->atMs && atMs <= first.beginMs + latestReportMs;
            });
            if (earlier.beginMs > first.beginMs && !mayHaveFailed) {
                lines.append(QStringLiteral("overtaken: %1, by %2")
                                 .arg(textOf(earlier.ask->requests.first()), textOf(ask.requests.first())));
            }
        }
        firsts.append(first);
    }
    return lines;
}

QStringList Oracle::announcementsAmiss(bool whatIsMissing) const
{
    QMap<QStringList, int> certain;
    QMap<QStringList, int> possible;
    QMap<QStringList, int> said;
    for (const Run &run : runs) {
        if (isAnnounced(run)) {
            ++possible[announcementOf(run)];
            certain[announcementOf(run)] += run.isCertain ? 1 : 0;
        }
    }
    for (const Announcement &announcement : ledger.announcements()) {
        ++said[withoutWidget(announcement.words)];
    }
    QStringList lines;
    const QMap<QStringList, int> &reference = whatIsMissing ? certain : said;
    for (auto entry = reference.cbegin(); entry != reference.cend(); ++entry) {
        const int most = whatIsMissing ? said.value(entry.key()) : possible.value(entry.key());
        if (entry.value() > most) {
            lines.append(QStringLiteral("announced %1 times, done %2 times: %3")
                             .arg(said.value(entry.key()))
                             .arg(possible.value(entry.key()))
                             .arg(entry.key().join(QLatin1Char(' '))));
        }
    }
    return lines;
}
