#include "devicestate.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
constexpr int longestList = 100;

QJsonArray widgets(const QStringList &ids)
{
    QJsonArray list;
    for (const QString &id : ids.mid(0, longestList)) {
        list.append(id);
    }
    return list;
}

QJsonArray applications(const QList<ServerApplication> &records)
{
    QJsonArray list;
    for (const ServerApplication &record : records.mid(0, longestList)) {
        list.append(QJsonObject{{QStringLiteral("appId"), record.appId},
                                {QStringLiteral("device"), record.deviceId},
                                {QStringLiteral("identifier"), record.identifier},
                                {QStringLiteral("name"), record.name},
                                {QStringLiteral("type"), record.type}});
    }
    return list;
}

QJsonArray faults(const QStringList &texts)
{
    return QJsonArray::fromStringList(texts.mid(0, longestList));
}

QJsonObject qwixtd(DeviceSimulator &simulator, const BusMonitor &monitor)
{
    const bool isOurs = simulator.daemonProcess().isGiven();
    return {{QStringLiteral("present"), monitor.isOwned(QStringLiteral("com.qwixtd"))},
            {QStringLiteral("ours"), isOurs}};
}
} // namespace

QByteArray DeviceState::json(DeviceSimulator &simulator, const BusMonitor &monitor)
{
    DaemonService &daemon = simulator.daemon();
    const QStringList ids = simulator.widgetManager().widgets();
    const QList<ServerApplication> records = simulator.server().applications();
    const QJsonObject state{{QStringLiteral("daemon"), daemon.isRunning()},
                            {QStringLiteral("widgetManager"), simulator.widgetManager().isRunning()},
                            {QStringLiteral("qwixtd"), qwixtd(simulator, monitor)},
                            {QStringLiteral("hasKey"), !daemon.apiKey().isEmpty()},
                            {QStringLiteral("remoteId"), daemon.remoteId()},
                            {QStringLiteral("serial"), daemon.serial()},
                            {QStringLiteral("internet"), daemon.isInternetAvailable()},
                            {QStringLiteral("widgets"), widgets(ids)},
                            {QStringLiteral("widgetCount"), static_cast<qint64>(ids.size())},
                            {QStringLiteral("applications"), applications(records)},
                            {QStringLiteral("applicationCount"), static_cast<qint64>(records.size())},
                            {QStringLiteral("faults"), faults(simulator.server().faultTexts())},
                            {QStringLiteral("server"), simulator.server().host()}};
    return QJsonDocument(state).toJson(QJsonDocument::Compact);
}
