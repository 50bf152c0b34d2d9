#pragma once

#include "ledger.h"

#include <QMap>
#include <QStringList>

class Applications;
struct ServerApplication;

/// Says what of a ledger must not be. Every complaint is a line that names the request or the announcement.
class Oracle
{
public:
    Oracle(const Ledger &ledger, const Applications &applications);

    /// What was asked and is not at its end, and what is at its end and not announced. Before the calm is
    /// over that is no complaint.
    QStringList open() const;
    /// What must not be at any time.
    QStringList complaints() const;
    /// What must not be once nothing is open: the server's list held against what was asked.
    QStringList complaintsAboutList(const QList<ServerApplication> &onServer, const QString &deviceId) const;

private:
    bool isAtItsEnd(const Ask &ask) const;
    bool isRegistered(const Ask &ask, const QByteArray &request) const;
    int timesAllowed(const QByteArray &request) const;
    /// How many runs of @p request have come to an end, at the least and at the most.
    int certainEnds(const QByteArray &request) const;
    int possibleEnds(const QByteArray &request) const;

    QStringList faultyRuns() const;
    QStringList unaskedRuns() const;
    QStringList earlyRetries() const;
    QStringList wrongOrder() const;
    /// Announcements held against the runs: those that are missing, or those that are too many.
    QStringList announcementsAmiss(bool whatIsMissing) const;
    QStringList wrongWidgets() const;
    QStringList missingFromList(const QList<ServerApplication> &onServer) const;
    QStringList complaintsAbout(const ServerApplication &application, const QString &deviceId) const;

    const Ledger &ledger;
    const Applications &applications;
    const QList<Run> runs;
    QMap<QByteArray, QList<Run>> runsByRequest;
    QMap<QByteArray, int> asksByRequest;
};
