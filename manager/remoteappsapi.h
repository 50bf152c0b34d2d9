#pragma once

#include "remoteapplication.h"
#include "remotetaskdescription.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariantMap>

/// The wire format of the developer server's apps endpoint: pure functions over values. Requests are
/// form-encoded, replies are JSON; a reply that is not JSON reads as an empty object.
namespace RemoteAppsApi
{

/// "https://" + @p host + the path of the apps endpoint, the same for every kind of request.
QString appsUrl(const QString &host);

/// The value of the Authorization header: Basic, with an empty user name and the key as the password.
QString authorization(const QString &apiKey);

/// The body's fields of a register, update or delete request; empty for the list and for unknown kinds. A key
/// that is missing from the description yields an invalid value, which is not sent.
QVariantMap parameters(const RemoteTaskDescription &descr, const QString &remoteId);

struct RegisterReply {
    QString appId;
    QString status;
};
RegisterReply readRegisterReply(const QByteArray &body);

/// The applications of the device @p remoteId in a list reply, in their order; those of other devices and
/// elements that are not objects are left out. The same id may come twice.
QList<RemoteApplication> readListReply(const QByteArray &body, const QString &remoteId);

} // namespace RemoteAppsApi
