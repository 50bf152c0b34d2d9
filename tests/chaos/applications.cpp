#include "applications.h"

#include "appsendpoint.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

void Applications::takeList(const QByteArray &list, const QString &deviceId, const QStringList &installed)
{
    const QJsonArray apps = QJsonDocument::fromJson(list).object().value(QStringLiteral("apps")).toArray();
    for (const QJsonValue &element : apps) {
        const QJsonObject app = element.toObject();
        const auto text = [&app](const char *key) { return app.value(QLatin1String(key)).toString(); };
        if (text("device_id") == deviceId) {
            add({text("app_id"), text("identifier"), text("name"), text("type"),
                 !installed.contains(text("identifier"))});
        }
    }
}

void Applications::add(const KnownApplication &application)
{
    byId.insert(application.appId, application);
    identifiers.insert(application.appId, application.identifier);
}

void Applications::deletionAsked(const QString &appId)
{
    if (byId.contains(appId)) {
        byId[appId].isToGo = true;
    }
}

void Applications::widgetDeleted(const QString &id)
{
    for (KnownApplication &application : byId) {
        if (application.identifier == id) {
            application.isToGo = true;
        }
    }
}

void Applications::settle(const QList<ServerApplication> &onServer)
{
    QMap<QString, KnownApplication> kept;
    for (const ServerApplication &application : onServer) {
        if (byId.contains(application.appId)) {
            KnownApplication known = byId.value(application.appId);
            known.name = application.name;
            known.type = application.type;
            known.isToGo = false;
            kept.insert(known.appId, known);
        }
    }
    byId = kept;
}

bool Applications::contains(const QString &appId) const
{
    return byId.contains(appId);
}

KnownApplication Applications::value(const QString &appId) const
{
    return byId.value(appId);
}

QList<KnownApplication> Applications::all() const
{
    return byId.values();
}

QString Applications::identifierOf(const QString &appId) const
{
    return identifiers.value(appId);
}
