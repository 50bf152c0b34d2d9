#include "ledger.h"

#include "frontserver.h"
#include "httprequest.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace
{
// What the front server has sent last may still be on its way when it is killed.
constexpr int onItsWayMs = 500;
// Of an answer no more is kept.
constexpr int longestAnswer = 16 * 1024;

Run::Outcome outcomeOf(const QByteArray &request, int status)
{
    const bool isSuccess = status >= 200 && status <= 299;
    if (isSuccess || (status == 404 && request.startsWith("DELETE"))) {
        return Run::Done;
    }
    return status == 400 || status == 404 ? Run::GivenUp : Run::Failed;
}

QString faultOf(const HttpRequest &request, const QByteArray &authorization)
{
    if (request.othersInFlight > 0) {
        return QStringLiteral("began while another was under way");
    }
    if (request.header("Authorization") != authorization) {
        return QStringLiteral("carried other credentials than the device's");
    }
    if (request.header("Accept") != "application/json") {
        return QStringLiteral("carried another Accept header");
    }
    return {};
}
} // namespace

bool Run::isEnd() const
{
    return isCertain && outcome != Failed;
}

QByteArray Run::method() const
{
    return request.left(request.indexOf(' '));
}

QString Run::field(const char *key) const
{
    const QList<QByteArray> pairs = request.mid(request.indexOf(' ') + 1).split('&');
    for (const QByteArray &pair : pairs) {
        if (pair.startsWith(key) && pair.mid(static_cast<int>(qstrlen(key))).startsWith('=')) {
            return QString::fromUtf8(pair.mid(static_cast<int>(qstrlen(key)) + 1));
        }
    }
    return {};
}

QString Run::givenId() const
{
    return QJsonDocument::fromJson(answer).object().value(QStringLiteral("app_id")).toString();
}

qint64 Ledger::nowMs()
{
    return QDateTime::currentMSecsSinceEpoch();
}

void Ledger::ask(const Ask &ask)
{
    asked.append(ask);
}

void Ledger::announced(const QStringList &words)
{
    said.append({nowMs(), words});
}

void Ledger::serverSaw(const HttpRequest &request, const QByteArray &authorization)
{
    const QByteArray id = request.header("X-Run");
    Run run;
    run.request = (request.method + ' ' + request.body).trimmed();
    run.endMs = nowMs();
    run.beginMs = run.endMs - (request.answeredAtMs - request.receivedAtMs);
    run.outcome = outcomeOf(run.request, request.status);
    run.isCarriedOut = request.status >= 200 && request.status <= 299;
    run.answer = request.answerBody.trimmed();
    if (run.answer.size() > longestAnswer) {
        run.answer.clear();
    }
    run.fault = faultOf(request, authorization);
    runsById.insert(id, run);
    if (run.request.startsWith("POST") && run.isCarriedOut) {
        idByAppId.insert(run.givenId(), id);
    }
}

void Ledger::frontSaw(const FrontRun &front)
{
    Run &run = runsById[front.id];
    run.request = front.request;
    run.beginMs = front.beginMs;
    run.endMs = front.endMs;
    run.outcome = front.isWhole ? outcomeOf(front.request, front.status) : Run::Failed;
    run.isCertain = true;
    if (front.protocol != "HTTP/2.0") {
        run.fault = QStringLiteral("came by ") + QString::fromUtf8(front.protocol);
    }
}

void Ledger::frontEnded()
{
    frontEnds.append(nowMs());
}

void Ledger::transferFailed()
{
    failures.append(nowMs());
}

void Ledger::widgetDeleted(const QString &id)
{
    widgetsGone.append(id);
}

const QList<Ask> &Ledger::asks() const
{
    return asked;
}

QList<Run> Ledger::runs() const
{
    QList<Run> all = runsById.values();
    for (Run &run : all) {
        const bool mayBeLost = std::any_of(frontEnds.cbegin(), frontEnds.cend(), [&run](qint64 end) {
            return end >= run.beginMs && end <= run.endMs + onItsWayMs;
        });
        run.isCertain = run.isCertain && !mayBeLost;
    }
    std::sort(all.begin(), all.end(),
              [](const Run &one, const Run &other) { return one.beginMs < other.beginMs; });
    return all;
}

const QList<Announcement> &Ledger::announcements() const
{
    return said;
}

const QList<qint64> &Ledger::failedTransfers() const
{
    return failures;
}

const QStringList &Ledger::deletedWidgets() const
{
    return widgetsGone;
}

Run Ledger::registrationOf(const QString &appId) const
{
    return runsById.value(idByAppId.value(appId));
}
