#include "appsendpoint.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace
{
const auto idKey = QByteArrayLiteral("id");
const auto appIdKey = QByteArrayLiteral("app_id");
const auto identifierKey = QByteArrayLiteral("identifier");
const auto nameKey = QByteArrayLiteral("name");
const auto typeKey = QByteArrayLiteral("type");

HttpAnswer json(int status, const QJsonObject &object)
{
    HttpAnswer answer;
    answer.status = status;
    answer.body = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return answer;
}

HttpAnswer refusal(int status, const QString &reason)
{
    return json(status, {{QStringLiteral("error"), reason}});
}

HttpAnswer done(const QString &appId, const QString &status)
{
    return json(200, {{QStringLiteral("app_id"), appId}, {QStringLiteral("status"), status}});
}

// The pairs of a form-encoded body as they are: this server's clients encode nothing, so nothing is decoded.
QMap<QByteArray, QString> fieldsOf(const QByteArray &body)
{
    QMap<QByteArray, QString> fields;
    const QList<QByteArray> pairs = body.split('&');
    for (const QByteArray &pair : pairs) {
        const auto equals = pair.indexOf('=');
        if (equals >= 0) {
            fields.insert(pair.left(equals), QString::fromUtf8(pair.mid(equals + 1)));
        }
    }
    return fields;
}

QByteArray firstMissing(const QMap<QByteArray, QString> &fields, const QList<QByteArray> &needed)
{
    for (const QByteArray &key : needed) {
        if (!fields.contains(key)) {
            return key;
        }
    }
    return {};
}

HttpAnswer missing(const QByteArray &key)
{
    return refusal(400, QStringLiteral("missing field: %1").arg(QString::fromLatin1(key)));
}

HttpAnswer unknownApplication(const QString &appId)
{
    return refusal(404, QStringLiteral("no such application: %1").arg(appId));
}
} // namespace

const QByteArray AppsEndpoint::path = QByteArrayLiteral("/api/v1/qwixt/apps");

void AppsEndpoint::setApiKey(const QString &key)
{
    apiKey = key.toLatin1();
}

QList<ServerApplication> AppsEndpoint::applications() const
{
    return records;
}

QString AppsEndpoint::add(ServerApplication application)
{
    while (application.appId.isEmpty() || find(application.appId) != nullptr) {
        application.appId = QStringLiteral("app-%1").arg(++idsGiven);
    }
    records.append(application);
    return application.appId;
}

bool AppsEndpoint::remove(const QString &appId)
{
    for (int i = 0; i < records.size(); ++i) {
        if (records.at(i).appId == appId) {
            records.removeAt(i);
            return true;
        }
    }
    return false;
}

void AppsEndpoint::clear()
{
    records.clear();
}

HttpAnswer AppsEndpoint::answer(const HttpRequest &request)
{
    if (request.target != path) {
        return refusal(404, QStringLiteral("no such resource"));
    }
    const bool isKnownMethod = QList<QByteArray>{"GET", "POST", "PUT", "DELETE"}.contains(request.method);
    if (!isKnownMethod) {
        return refusal(405, QStringLiteral("method not allowed"));
    }
    if (request.header("Accept") != "application/json") {
        return refusal(406, QStringLiteral("only application/json can be had"));
    }
    if (!isAuthorized(request)) {
        return refusal(401, QStringLiteral("unauthorized"));
    }
    if (request.method == "GET") {
        return list();
    }
    const Fields fields = fieldsOf(request.body);
    if (request.method == "POST") {
        return create(fields);
    }
    return request.method == "PUT" ? update(fields) : removeAsked(fields);
}

HttpAnswer AppsEndpoint::create(const Fields &fields)
{
    const QByteArray absent = firstMissing(fields, {idKey, identifierKey, nameKey, typeKey});
    if (!absent.isEmpty()) {
        return missing(absent);
    }
    const QString appId =
        add({fields[idKey], QString(), fields[identifierKey], fields[nameKey], fields[typeKey]});
    return done(appId, QStringLiteral("registered"));
}

HttpAnswer AppsEndpoint::update(const Fields &fields)
{
    const QByteArray absent = firstMissing(fields, {appIdKey, nameKey, typeKey});
    if (!absent.isEmpty()) {
        return missing(absent);
    }
    ServerApplication *const application = find(fields[appIdKey]);
    if (application == nullptr) {
        return unknownApplication(fields[appIdKey]);
    }
    application->name = fields[nameKey];
    application->type = fields[typeKey];
    return done(application->appId, QStringLiteral("updated"));
}

HttpAnswer AppsEndpoint::removeAsked(const Fields &fields)
{
    const QByteArray absent = firstMissing(fields, {appIdKey, typeKey});
    if (!absent.isEmpty()) {
        return missing(absent);
    }
    if (!remove(fields[appIdKey])) {
        return unknownApplication(fields[appIdKey]);
    }
    return done(fields[appIdKey], QStringLiteral("deleted"));
}

HttpAnswer AppsEndpoint::list() const
{
    QJsonArray apps;
    for (const ServerApplication &application : records) {
        apps.append(QJsonObject{{QStringLiteral("device_id"), application.deviceId},
                                {QStringLiteral("app_id"), application.appId},
                                {QStringLiteral("identifier"), application.identifier},
                                {QStringLiteral("name"), application.name},
                                {QStringLiteral("type"), application.type}});
    }
    return json(200, {{QStringLiteral("apps"), apps}});
}

bool AppsEndpoint::isAuthorized(const HttpRequest &request) const
{
    // A server gives out no empty key, so a device without one is never let in.
    return !apiKey.isEmpty() && request.header("Authorization") == "Basic " + (":" + apiKey).toBase64();
}

ServerApplication *AppsEndpoint::find(const QString &appId)
{
    const auto found = std::find_if(records.begin(), records.end(), [&](const ServerApplication &candidate) {
        return candidate.appId == appId;
    });
    return found == records.end() ? nullptr : &*found;
}
