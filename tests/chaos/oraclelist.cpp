// The server's list of applications, held against what was asked.

#include "applications.h"
#include "appsendpoint.h"
#include "oracle.h"

#include <algorithm>

namespace
{
QString textOf(const ServerApplication &application)
{
    return QStringLiteral("%1 (%2, %3, %4)")
        .arg(application.appId, application.identifier, application.name, application.type);
}
} // namespace

QStringList Oracle::wrongWidgets() const
{
    QStringList lines;
    for (const Announcement &announcement : ledger.announcements()) {
        const QString appId = announcement.words.value(2);
        const bool isDeletion = announcement.words.first() == QStringLiteral("applicationDeleted");
        const bool isKnown = !applications.identifierOf(appId).isEmpty();
        if (isDeletion && isKnown && applications.identifierOf(appId) != announcement.words.value(1)) {
            lines.append(QStringLiteral("announced for another widget: ") +
                         announcement.words.join(QLatin1Char(' ')));
        }
    }
    return lines;
}

QStringList Oracle::complaintsAboutList(const QList<ServerApplication> &onServer,
                                        const QString &deviceId) const
{
    QStringList lines = missingFromList(onServer);
    for (const ServerApplication &application : onServer) {
        lines += complaintsAbout(application, deviceId);
    }
    return lines;
}

QStringList Oracle::missingFromList(const QList<ServerApplication> &onServer) const
{
    QStringList lines;
    const QList<KnownApplication> all = applications.all();
    for (const KnownApplication &known : all) {
        const bool mayBeGone = known.isToGo || ledger.deletedWidgets().contains(known.identifier);
        const bool isThere =
            std::any_of(onServer.cbegin(), onServer.cend(),
                        [&known](const ServerApplication &each) { return each.appId == known.appId; });
        if (!mayBeGone && !isThere) {
            lines.append(QStringLiteral("gone from the server, and nobody asked for it: %1 of widget %2")
                             .arg(known.appId, known.identifier));
        }
    }
    return lines;
}

QStringList Oracle::complaintsAbout(const ServerApplication &application, const QString &deviceId) const
{
    if (application.deviceId != deviceId) {
        return {};
    }
    if (!applications.contains(application.appId)) {
        // Its registration's answer was lost or did not say its id; then the daemon cannot know it.
        const Run run = ledger.registrationOf(application.appId);
        return run.request.isEmpty() || !run.isEnd()
                   ? QStringList()
                   : QStringList(QStringLiteral("on the server and not announced: ") + textOf(application));
    }
    QStringList lines;
    const KnownApplication known = applications.value(application.appId);
    QString name = known.name;
    QString type = known.type;
    bool isDeletionInVain = false;
    for (const Run &run : runs) {
        if (run.field("app_id") != application.appId) {
            continue;
        }
        if (run.method() == "PUT" && run.isCarriedOut) {
            name = run.field("name");
            type = run.field("type");
        }
        // Given up, or taken for done: the server said that there is no such application.
        const bool isEndOfDeletion = run.method() == "DELETE" && run.outcome != Run::Failed;
        isDeletionInVain = isDeletionInVain || (isEndOfDeletion && !run.isCarriedOut);
    }
    if (known.isToGo && !isDeletionInVain) {
        lines.append(QStringLiteral("still on the server: ") + textOf(application));
    }
    if (application.identifier != known.identifier || application.name != name || application.type != type) {
        lines.append(QStringLiteral("not as it was asked for last (%1, %2, %3): %4")
                         .arg(known.identifier, name, type, textOf(application)));
    }
    return lines;
}
