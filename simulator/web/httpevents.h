#pragma once

#include "busmonitor.h"
#include "developerserver.h"
#include "eventlog.h"

#include <QHash>

/// Makes events of the requests that reach the developer server and of their answers. The Authorization value
/// is left out of them.
class HttpEvents : public QObject
{
    Q_OBJECT
public:
    /// All must outlive this object. What @p monitor_ has to report stands before the request that it led to.
    HttpEvents(DeveloperServer &server_, BusMonitor &monitor_, EventLog &log_, QObject *parent = nullptr);

    /// The bytes of a request as they came, with asterisks for the value of Authorization; at most 64 KiB.
    static QByteArray withoutSecrets(const HttpRequest &request);

private:
    /// A request that waits for its answer.
    struct Asked {
        qint64 number;
        QString widget;
    };
    /// A request that failed last time.
    struct Failure {
        qint64 number;
        qint64 time;
    };

    void takeRequest(const HttpRequest &request);
    void takeAnswer(const HttpRequest &request);
    void forgetTheOldestFailure();
    void note(const QString &text, bool isFailure);
    QString widgetOf(const HttpRequest &request) const;

    DeveloperServer &server;
    BusMonitor &monitor;
    EventLog &log;
    QHash<qint64, Asked> asked;          // by the request's number
    QHash<QByteArray, Failure> failures; // by what was asked
};
