// A list reply: reading it, and bringing the records in step with it.

#include "descriptions.h"
#include "measures.h"
#include "qwixtapplicationmanager.h"
#include "remoteappsapi.h"
#include "turns.h"

namespace
{
const auto deviceId = QStringLiteral("d9");

QString widget(int number)
{
    return QStringLiteral("w%1").arg(number);
}

QByteArray reply(int count)
{
    QByteArray apps;
    for (int number = 0; number < count; ++number) {
        const QByteArray digits = QByteArray::number(number);
        apps += (apps.isEmpty() ? "" : ",") +
                QByteArray(R"({"device_id":"d9","app_id":"app-)" + digits + R"(","identifier":"w)" + digits +
                           R"(","name":"Clock","type":"t"})");
    }
    return "{\"apps\":[" + apps + "]}";
}

/// A manager of a device that has @p count widgets, each with an application at the server.
class ListedManager : public QWixtApplicationManager
{
public:
    explicit ListedManager(int count)
    {
        remoteId = deviceId;
        for (int number = 0; number < count; ++number) {
            installedWidgets.append(widget(number));
        }
    }

    int takeList(QByteArray &body)
    {
        workerFinishedWithSuccess(body, Descriptions::list());
        return static_cast<int>(remoteApplications.size());
    }
};

void readList(benchmark::State &state)
{
    const QByteArray body = reply(static_cast<int>(state.range()));

    measureTurns(state, [&] { return RemoteAppsApi::readListReply(body, deviceId); });
}
BENCHMARK(readList)->Arg(50)->Arg(5000)->Unit(benchmark::kMicrosecond);

void reconcileList(benchmark::State &state)
{
    const auto count = static_cast<int>(state.range());
    ListedManager manager(count);
    QByteArray body = reply(count);
    require(manager.takeList(body) == count, QStringLiteral("the records are not those of the list"));

    measureTurns(state, [&] { return manager.takeList(body); });
}
BENCHMARK(reconcileList)->Arg(50)->Arg(5000)->Unit(benchmark::kMicrosecond);
} // namespace
