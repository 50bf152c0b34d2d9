#include "remoteappsapi.h"

#include "wirekeys.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{

const char *const appsPath = "/api/v1/qwixt/apps";

QJsonObject readObject(const QByteArray &body)
{
    return QJsonDocument::fromJson(body).object();
}

/// A value as a string. A missing key and a null value give a null string, which is not sent; an empty string
/// is sent.
QString textOf(const QJsonObject &object, const QString &key)
{
    const QJsonValue value = object.value(key);
    if (!value.isString()) {
        return value.toVariant().toString();
    }
    const QString text = value.toString();
    return text.isEmpty() ? QStringLiteral("") : text;
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
    switch (descr.type) {
    case RemoteTaskDescription::Register:
        return {{WireKey::id, remoteId},
                {WireKey::identifier, descr.id},
                {WireKey::name, descr.data.value(WireKey::name)},
                {WireKey::type, descr.data.value(WireKey::type)}};
    case RemoteTaskDescription::Delete:
        return descr.data;
    case RemoteTaskDescription::Update:
        return {{WireKey::appId, descr.data.value(WireKey::appId).toString()},
                {WireKey::name, descr.data.value(WireKey::name)},
                {WireKey::type, descr.data.value(WireKey::type)}};
    default:
        return {};
    }
}

RegisterReply readRegisterReply(const QByteArray &body)
{
    const QJsonObject reply = readObject(body);
    return {textOf(reply, WireKey::appId), textOf(reply, WireKey::status)};
}

QList<RemoteApplication> readListReply(const QByteArray &body, const QString &remoteId)
{
    QList<RemoteApplication> applications;
    const QJsonArray apps = readObject(body).value(WireKey::apps).toArray();
    for (const auto &element : apps) {
        const QJsonObject app = element.toObject();
        if (element.isObject() && textOf(app, WireKey::deviceId) == remoteId) {
            applications.append({textOf(app, WireKey::appId), textOf(app, WireKey::identifier),
                                 textOf(app, WireKey::name), textOf(app, WireKey::type)});
        }
    }
    return applications;
}

} // namespace RemoteAppsApi
