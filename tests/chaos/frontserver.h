#pragma once

#include "nginx.h"

#include <QByteArray>
#include <QList>

/// One request as the front server saw it. Times are milliseconds since the epoch.
struct FrontRun {
    /// Goes on to the developer server in the header "X-Run".
    QByteArray id;
    qint64 beginMs = 0;
    qint64 endMs = 0;
    /// "POST id=d9&identifier=u1"
    QByteArray request;
    QByteArray protocol;
    /// What was passed on to the client.
    int status = 0;
    /// False when the developer server's answer broke off.
    bool isWhole = false;
};

/// A real nginx that ends TLS and HTTP/2 before the developer server, as the one in the field does.
class FrontServer : public Nginx
{
public:
    /// It keeps its files in the directory @p place. @p certificate and @p key are PEM files; requests go on
    /// to 127.0.0.1:@p backendPort.
    FrontServer(const QString &place, const QString &certificate, const QString &key, quint16 backendPort);

    /// What has come to an end since the last call, oldest first. A request under way when the server ended
    /// is not among them.
    QList<FrontRun> newRuns();
};
