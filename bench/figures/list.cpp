#include "certificates.h"
#include "device.h"
#include "figures.h"
#include "measures.h"
#include "staticserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace
{
constexpr double nsPerMs = 1e6;
constexpr int floorTimeoutMs = 60000;

/// @p count applications of the device, each of a widget of its own.
QByteArray listReply(int count)
{
    QJsonArray apps;
    for (int number = 0; number < count; ++number) {
        apps.append(QJsonObject{{QStringLiteral("device_id"), Device::remoteId},
                                {QStringLiteral("app_id"), QStringLiteral("app-%1").arg(number)},
                                {QStringLiteral("identifier"), Device::widget(number)},
                                {QStringLiteral("name"), QStringLiteral("Clock")},
                                {QStringLiteral("type"), QStringLiteral("t")}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("apps"), apps}}).toJson(QJsonDocument::Compact);
}

QStringList widgets(int count)
{
    QStringList ids;
    for (int number = 0; number < count; ++number) {
        ids.append(Device::widget(number));
    }
    return ids;
}

/// What the main thread of a daemon takes for a list of @p count applications, in milliseconds.
double mainThreadMs(StaticServer &server, int count)
{
    Device device(Certificates::shared().authority());
    device.widgetManager().setWidgetsQuietly(widgets(count));
    device.start(server.host());
    const qint64 before = Measure::mainThreadProcessorNs(device.processId());
    device.goOnline();
    device.waitForList();
    device.waitForMainThread();
    const qint64 taken = Measure::mainThreadProcessorNs(device.processId()) - before;
    return static_cast<double>(taken) / nsPerMs;
}

double floorMs(const QString &file)
{
    QProcess floor;
    floor.start(QStringLiteral(JSON_FLOOR), {file});
    require(floor.waitForFinished(floorTimeoutMs) && floor.exitCode() == 0,
            QStringLiteral("the reader of JSON fails"));
    return floor.readAllStandardOutput().trimmed().toDouble() / nsPerMs;
}
} // namespace

// The time of the main thread is that of its processor: what it waits for is the server. It begins when the
// internet is there, which adds the making of one request.
QVector<Row> Figures::list(const Scale &scale)
{
    StaticServer server;
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("list.json"));
    const QByteArray reply = listReply(scale.listed);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(reply) == reply.size() && file.flush(),
            QStringLiteral("the list cannot be written"));
    server.setList(reply);
    QVector<double> figure;
    QVector<double> floor;
    for (int round = 0; round < scale.rounds; ++round) {
        floor.append(floorMs(path));
        figure.append(mainThreadMs(server, scale.listed));
    }
    return {{QStringLiteral("list reply with %1 applications, main thread (floor: its JSON alone)")
                 .arg(scale.listed),
             QStringLiteral("ms"), median(figure), median(floor), 2.0}};
}
