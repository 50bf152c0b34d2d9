#include "model.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace
{

// Written out here once more, on purpose: a key that the daemon spells wrong must not be right here.
const QString appIdKey = QStringLiteral("app_id");
const QString nameKey = QStringLiteral("name");
const QString typeKey = QStringLiteral("type");

} // namespace

void Model::start(const Device &device)
{
    readWidgets(device);
    if (device.daemon == Device::Absent) {
        daemonKnown = false;
        apiKey.clear();
        return;
    }
    readDaemon(device);
    evaluate();
}

void Model::daemonStarted(const Device &device)
{
    readDaemon(device);
    evaluate();
}

void Model::windowManagerStarted(const Device &device)
{
    readWidgets(device);
    evaluate();
}

void Model::setupFinished(const QString &key, const Device &device)
{
    apiKey = key;
    remoteId = device.daemon == Device::Well ? device.remoteId : QString();
    evaluate();
}

void Model::internetChanged(bool available)
{
    internet = available;
    evaluate();
}

void Model::widgetCreated(const QString &id)
{
    installed.append(id);
}

void Model::widgetDeleted(const QString &id)
{
    for (const RemoteApplication &application : std::as_const(remote)) {
        if (application.identifier == id) {
            deleteApplication(application.appId, id, QStringLiteral(""));
        }
    }
}

void Model::readWidgets(const Device &device)
{
    if (device.widgetManager == Device::Well) {
        widgetsKnown = true;
        installed = device.widgets;
    }
}

void Model::readDaemon(const Device &device)
{
    const bool well = device.daemon == Device::Well;
    if (well) {
        daemonKnown = true;
    } else if (device.daemon == Device::Absent) {
        daemonKnown = false;
    }
    apiKey = well ? device.apiKey : QString();
    remoteId = well ? device.remoteId : QString();
    internet = well && device.internet;
}

void Model::registerApplication(const QString &uuid, const QString &name, const QString &type)
{
    const RemoteTaskDescription descr = {
        RemoteTaskDescription::Register, uuid, {{nameKey, name}, {typeKey, type}}};
    if (!pending.contains(descr)) {
        accept(descr);
    }
}

void Model::updateApplication(const QString &appId, const QString &uuid, const QString &name,
                              const QString &type)
{
    const RemoteApplication wanted = {appId, uuid, name, type};
    local.insert(appId, wanted);
    if (!remote.contains(appId)) {
        registerApplication(uuid, name, type);
        return;
    }
    const RemoteTaskDescription descr = {
        RemoteTaskDescription::Update, uuid, {{appIdKey, appId}, {nameKey, name}, {typeKey, type}}};
    if (wanted != remote.value(appId) && !pending.contains(descr)) {
        accept(descr);
    }
}

void Model::deleteApplication(const QString &appId, const QString &uuid, const QString &type)
{
    accept({RemoteTaskDescription::Delete, uuid, {{appIdKey, appId}, {typeKey, type}}});
}

void Model::askForList()
{
    const RemoteTaskDescription list = {RemoteTaskDescription::GetList, QString(), {}};
    if (!pending.contains(list)) {
        pending.append(list);
        ++listsAccepted;
    }
}

void Model::accept(const RemoteTaskDescription &descr)
{
    pending.append(descr);
    accepted.append(descr);
}

void Model::finish(const RemoteTaskDescription &descr)
{
    pending.removeOne(descr);
}

void Model::succeeded(const RemoteTaskDescription &descr, const QByteArray &reply)
{
    finish(descr);
    const QString appId = descr.data.value(appIdKey).toString();
    const QString type = descr.data.value(typeKey).toString();
    if (descr.type == RemoteTaskDescription::Register) {
        const QString given = QJsonDocument::fromJson(reply).object().value(appIdKey).toString();
        remote.insert(given, {given, descr.id, descr.data.value(nameKey).toString(), type});
        announced.append(QStringLiteral("registered %1 %2 %3").arg(descr.id, given, type));
    } else if (descr.type == RemoteTaskDescription::Delete) {
        remote.remove(appId);
        announced.append(QStringLiteral("deleted %1 %2 %3").arg(descr.id, appId, type));
    } else if (descr.type == RemoteTaskDescription::Update) {
        if (remote.contains(appId)) {
            remote[appId].name = descr.data.value(nameKey).toString();
        }
    } else {
        listSucceeded(reply);
    }
}

void Model::listSucceeded(const QByteArray &reply)
{
    listKnown = true;
    remote.clear();
    const QJsonArray apps = QJsonDocument::fromJson(reply).object().value(QStringLiteral("apps")).toArray();
    for (const QJsonValue &element : apps) {
        const QJsonObject app = element.toObject();
        const QString appId = app.value(appIdKey).toString();
        if (app.value(QStringLiteral("device_id")).toString() == remoteId && !remote.contains(appId)) {
            remote.insert(appId, {appId, app.value(QStringLiteral("identifier")).toString(),
                                  app.value(nameKey).toString(), app.value(typeKey).toString()});
        }
    }
    for (const RemoteApplication &application : std::as_const(remote)) {
        if (!installed.contains(application.identifier)) {
            deleteApplication(application.appId, application.identifier, application.type);
        }
    }
    evaluate();
}

void Model::failed(const RemoteTaskDescription &descr, int code)
{
    const bool isDelete = descr.type == RemoteTaskDescription::Delete;
    if (code == 400 || code == 404) {
        finish(descr);
    }
    if (code == 404 && isDelete) {
        announced.append(
            QStringLiteral("deleted %1 %2 %3")
                .arg(descr.id, descr.data.value(appIdKey).toString(), descr.data.value(typeKey).toString()));
    }
}

void Model::evaluate()
{
    const int before = state;
    const bool isSetUp = !apiKey.isEmpty() && !remoteId.isEmpty();
    if (state == WaitForDaemonsToStart && (!daemonKnown || !widgetsKnown)) {
        return;
    }
    if (state <= NotSetuped && !isSetUp) {
        state = NotSetuped;
    } else if (!internet) {
        state = NoInternet;
    } else if (!listKnown && state != Ready) {
        state = WaitForList;
    } else {
        state = Ready;
    }
    if (state == WaitForList && before != WaitForList) {
        askForList();
    } else if (state == Ready && before == WaitForList) {
        announced.append(QStringLiteral("ready"));
    }
}

QStringList Model::lines(const QMap<QString, RemoteApplication> &records)
{
    QStringList list;
    for (auto record = records.cbegin(); record != records.cend(); ++record) {
        list.append(QStringLiteral("%1: %2 %3 %4 %5")
                        .arg(record.key(), record->appId, record->identifier, record->name, record->type));
    }
    return list;
}
