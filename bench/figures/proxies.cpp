#include "daemonservice.h"
#include "figures.h"
#include "measures.h"
#include "privatebus.h"

#include "daemon/generalproxy.h"

#include <QDBusMessage>
#include <QElapsedTimer>
#include <QUuid>

namespace
{
constexpr double nsPerUs = 1e3;

template <typename Work>
double microseconds(const Work &work)
{
    QElapsedTimer elapsed;
    elapsed.start();
    work();
    return static_cast<double>(elapsed.nsecsElapsed()) / nsPerUs;
}

struct ProxyTimes {
    QVector<double> madeUs;
    QVector<double> tripUs;
    QVector<double> floorUs;
};

void takeOne(const QDBusConnection &bus, ProxyTimes &taken)
{
    taken.madeUs.append(microseconds([&] { const Daemon::GeneralProxy dropped(nullptr, bus); }));
    Daemon::GeneralProxy proxy(nullptr, bus);
    QString answer;
    taken.tripUs.append(microseconds([&] { answer = proxy.remoteId(QDBus::Block); }));
    QString floorAnswer;
    taken.floorUs.append(microseconds([&] {
        const QDBusMessage call = QDBusMessage::createMethodCall(
            proxy.service(), proxy.path(), proxy.interface(), QStringLiteral("remoteId"));
        floorAnswer = bus.call(call).arguments().value(0).toString();
    }));
    require(!answer.isEmpty() && answer == floorAnswer,
            QStringLiteral("the simulated device does not answer"));
}
} // namespace

QVector<Row> Figures::proxies(const Scale &scale)
{
    PrivateBus privateBus;
    require(privateBus.start(), QStringLiteral("no bus"));
    DaemonService service(privateBus.address());
    service.setRemoteId(QStringLiteral("d9"));
    require(service.start(), QStringLiteral("the simulated device does not start"));
    const QString connectionName = QUuid::createUuid().toString();
    ProxyTimes taken;
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(privateBus.address(), connectionName);
        for (int i = 0; i < scale.busCalls; ++i) {
            takeOne(bus, taken);
        }
    }
    QDBusConnection::disconnectFromBus(connectionName);
    return {{QStringLiteral("a GeneralProxy made and dropped"), QStringLiteral("us"), median(taken.madeUs),
             std::nullopt, std::nullopt},
            {QStringLiteral("a proxy's getter, round trip (floor: the message alone)"), QStringLiteral("us"),
             median(taken.tripUs), median(taken.floorUs), 1.1}};
}
