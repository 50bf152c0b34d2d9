#include "emptyadaptor.h"

#include "measures.h"

#include <QDBusConnectionInterface>
#include <QProcessEnvironment>
#include <QTest>

namespace
{
constexpr int patienceMs = 20000;
constexpr int stopTimeoutMs = 5000;
} // namespace

EmptyAdaptor::EmptyAdaptor(const QString &busAddress, const QDBusConnection &bus)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), busAddress);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("setpriv"), {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"),
                                              QStringLiteral(EMPTY_ADAPTOR), service()});
    require(
        QTest::qWaitFor([&] { return bus.interface()->isServiceRegistered(service()).value(); }, patienceMs),
        QStringLiteral("the empty adaptor does not start"));
}

EmptyAdaptor::~EmptyAdaptor()
{
    process.kill();
    process.waitForFinished(stopTimeoutMs);
}

QString EmptyAdaptor::service() const
{
    return QStringLiteral("com.example.emptyadaptor");
}
