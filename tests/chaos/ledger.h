#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

struct FrontRun;
struct HttpRequest;

/// Times are milliseconds since the epoch. A request is a line such as "POST
/// id=d9&identifier=u1&name=n&type=t".

/// One request that the daemon was asked for on the bus.
struct Ask {
    qint64 atMs = 0;
    /// The requests that it may become; one of them has to be seen.
    QList<QByteArray> requests;
    QString uuid;
    /// Not asked on the bus but what the daemon has to ask of itself after its list; when is not known
    /// exactly.
    bool isItsOwn = false;
};

/// One request that the daemon sent.
struct Run {
    enum Outcome {
        /// Done as far as the daemon can see, or gone already: it announces that, except for an update.
        Done,
        GivenUp,
        Failed
    };

    QByteArray request;
    qint64 beginMs = 0;
    qint64 endMs = 0;
    Outcome outcome = Failed;
    /// False when the front server ended meanwhile: nobody knows whether the answer has arrived.
    bool isCertain = false;
    /// The developer server did what was asked.
    bool isCarriedOut = false;
    /// What the answer says of a registration or a list.
    QByteArray answer;
    /// Anything about it that must not be: empty if nothing.
    QString fault;

    /// A certain end: the daemon does not send it again.
    bool isEnd() const;
    QByteArray method() const;
    /// The value of one field of the body.
    QString field(const char *key) const;
    /// The app id that the answer gives.
    QString givenId() const;
};

struct Announcement {
    qint64 atMs = 0;
    /// "applicationRegistered", then its arguments.
    QStringList words;
};

/// All that was asked of the daemon, all that it sent and all that it announced since the last calm.
class Ledger
{
public:
    static qint64 nowMs();

    void ask(const Ask &ask);
    void announced(const QStringList &words);
    /// The developer server has answered, or its connection was closed.
    void serverSaw(const HttpRequest &request, const QByteArray &authorization);
    void frontSaw(const FrontRun &run);
    /// What was under way at this moment, or had come to an end just before, may not have arrived.
    void frontEnded();
    /// The daemon has reported a transfer without an answer.
    void transferFailed();
    void widgetDeleted(const QString &id);

    const QList<Ask> &asks() const;
    /// In the order in which they began.
    QList<Run> runs() const;
    const QList<Announcement> &announcements() const;
    const QList<qint64> &failedTransfers() const;
    const QStringList &deletedWidgets() const;
    /// The run whose answer gave this app id; an empty one when there is none.
    Run registrationOf(const QString &appId) const;

private:
    QList<Ask> asked;
    QHash<QByteArray, Run> runsById;
    QHash<QString, QByteArray> idByAppId;
    QList<Announcement> said;
    QList<qint64> failures;
    QStringList widgetsGone;
    QList<qint64> frontEnds;
};
