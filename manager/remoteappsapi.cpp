#include "remoteappsapi.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{

const char *const appsPath = "/api/v1/qwixt/apps";

QVariantMap readObject(const QByteArray &body)
{
    return QJsonDocument::fromJson(body).object().toVariantMap();
}

/// A value as text. A key that is missing, or null, gives a null text; an empty text stays one that is sent.
QString textOf(const QVariantMap &object, const QString &key)
{
    const QVariant value = object.value(key);
    const QString text = value.toString();
    const bool isEmptyText = value.userType() == QMetaType::QString && text.isEmpty();
    return isEmptyText ? QStringLiteral("") : text;
}

} // namespace

namespace RemoteAppsApi
{

QString appsUrl(const QString &host)
{
    return QStringLiteral("https://") + host + QLatin1String(appsPath);
}

QString authorization(const QString &apiKey)
{
    const QByteArray credentials = (QLatin1Char(':') + apiKey).toLatin1();
    return QStringLiteral("Basic ") + QString::fromLatin1(credentials.toBase64());
}

QVariantMap parameters(const RemoteTaskDescription &descr, const QString &remoteId)
{
    const QString appId = QStringLiteral("app_id");
    const QString name = QStringLiteral("name");
    const QString type = QStringLiteral("type");
    switch (descr.type) {
    case RemoteTaskDescription::Register:
        return {{QStringLiteral("id"), remoteId},
                {QStringLiteral("identifier"), descr.id},
                {name, descr.data.value(name)},
                {type, descr.data.value(type)}};
    case RemoteTaskDescription::Delete:
        return descr.data;
    case RemoteTaskDescription::Update:
        return {{appId, descr.data.value(appId).toString()},
                {name, descr.data.value(name)},
                {type, descr.data.value(type)}};
    default:
        return {};
    }
}

RegisterReply readRegisterReply(const QByteArray &body)
{
    const QVariantMap reply = readObject(body);
    return {textOf(reply, QStringLiteral("app_id")), textOf(reply, QStringLiteral("status"))};
}

QList<RemoteApplication> readListReply(const QByteArray &body, const QString &remoteId)
{
    QList<RemoteApplication> applications;
    const QVariantList apps = readObject(body).value(QStringLiteral("apps")).toList();
    for (const QVariant &element : apps) {
        const QVariantMap app = element.toMap();
        if (element.userType() == QMetaType::QVariantMap &&
            textOf(app, QStringLiteral("device_id")) == remoteId) {
            applications.append({textOf(app, QStringLiteral("app_id")),
                                 textOf(app, QStringLiteral("identifier")),
                                 textOf(app, QStringLiteral("name")), textOf(app, QStringLiteral("type"))});
        }
    }
    return applications;
}

} // namespace RemoteAppsApi
