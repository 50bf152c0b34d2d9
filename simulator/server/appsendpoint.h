#pragma once

#include "httpanswer.h"
#include "httprequest.h"

#include <QList>
#include <QMap>
#include <QString>

/// One application as the developer server keeps it.
struct ServerApplication {
    QString deviceId;
    QString appId;
    QString identifier;
    QString name;
    QString type;
};

/// The developer server's apps endpoint without the network: checks a request strictly, changes the records
/// and makes the answer.
class AppsEndpoint
{
public:
    /// The one path it answers on.
    static const QByteArray path;

    /// The key that requests must carry as the password of Basic authentication, with an empty user name.
    void setApiKey(const QString &key);

    QList<ServerApplication> applications() const;
    /// Keeps @p application, under a new app id when it has none; returns the app id.
    QString add(ServerApplication application);
    bool remove(const QString &appId);
    void clear();

    /// The answer, with 400, 401, 404, 405 or 406 for a request that is not as it should be.
    HttpAnswer answer(const HttpRequest &request);

private:
    using Fields = QMap<QByteArray, QString>;

    HttpAnswer create(const Fields &fields);
    HttpAnswer update(const Fields &fields);
    HttpAnswer removeAsked(const Fields &fields);
    HttpAnswer list() const;
    bool isAuthorized(const HttpRequest &request) const;
    ServerApplication *find(const QString &appId);

    QByteArray apiKey;
    QList<ServerApplication> records;
    int idsGiven = 0;
};
