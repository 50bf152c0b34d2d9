#pragma once

#include "appsendpoint.h"
#include "httpserver.h"
#include "serverfault.h"

#include <QStringList>

#include <deque>
#include <utility>

/// The developer server: the apps endpoint with its records in memory, and the ways in which it fails.
class DeveloperServer : public HttpServer
{
    Q_OBJECT
public:
    explicit DeveloperServer(QObject *parent = nullptr);

    /// The key that requests must carry; without one, all are refused.
    void setApiKey(const QString &key);

    QList<ServerApplication> applications() const;
    /// Adds a record as if another client had made it; under a new app id when it has none. Returns the app
    /// id.
    QString addApplication(const ServerApplication &application);
    bool removeApplication(const QString &appId);
    void removeAllApplications();

    /// The next @p count answers fail so. Several calls line up. Faults do not touch what a script answers.
    void failNext(int count, const ServerFault &fault);
    /// Answers fail so when nothing of failNext() is left, until clearFaults().
    void failAlways(const ServerFault &fault);
    /// No more faults; answers that are held back go out at once.
    void clearFaults();
    /// The faults to come, in their order and in words: "next 2: status 503", "all: ...".
    QStringList faultTexts() const;

protected:
    HttpAnswer ordinaryAnswer(const HttpRequest &request) override;

private:
    ServerFault takeFault();

    AppsEndpoint endpoint;
    /// How many answers fail in each way, those that are next first; none of them is 0.
    std::deque<std::pair<int, ServerFault>> nextFaults;
    ServerFault lastingFault;
};
