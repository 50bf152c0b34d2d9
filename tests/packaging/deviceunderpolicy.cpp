#include "deviceunderpolicy.h"

#include "certificates.h"
#include "deviceundertest.h"

namespace
{
QByteArray commandAsItsUser(const QString &program)
{
    return "exec setpriv --pdeathsig KILL " +
           SystemBus::switchingTo(SystemBus::Qwixtd).join(QLatin1Char(' ')).toLatin1() + " '" +
           program.toLocal8Bit() + "'";
}
} // namespace

const QByteArray DeviceUnderPolicy::servicesRules =
    R"(<policy user="root"><allow own="vorlet.daemon"/><allow own="widget.manager"/></policy>)";

DeviceUnderPolicy::DeviceUnderPolicy(const InstalledTree &installed)
    : policies(installed.busPolicies())
    , asItsUser(installed.program(), commandAsItsUser(installed.program()))
    , process(asItsUser.path(), Certificates::shared().bundle())
{
}

bool DeviceUnderPolicy::start()
{
    if (!systemBus.start(policies, servicesRules)) {
        return false;
    }
    device = std::make_unique<DeviceSimulator>(systemBus.address());
    device->setApiKeyQuietly(DeviceUnderTest::apiKey);
    device->daemon().setRemoteId("d9"_text);
    device->widgetManager().setWidgetsQuietly({"u1"_text, "u2"_text});
    device->server().addApplication({"d9"_text, "a1"_text, "u1"_text, "Clock"_text, "t"_text});
    DaemonWatcher &watcher = device->watcher();
    QObject::connect(&watcher, &DaemonWatcher::received, &watcher,
                     [this](const QString &member, const QStringList &arguments) {
                         announcements.append((QStringList{member} + arguments).join(QLatin1Char(' ')));
                     });
    const Certificates &certificates = Certificates::shared();
    return device->server().start(certificates.serverCertificate(), certificates.serverKey()) &&
           watcher.start() && device->widgetManager().start() && device->daemon().start() &&
           process.start(systemBus.address(), device->server().host()) &&
           QTest::qWaitFor([this] { return announcements.contains("daemonDidStarted"_text); },
                           DeviceUnderTest::patienceMs);
}

SystemBus &DeviceUnderPolicy::bus()
{
    return systemBus;
}

DeviceSimulator &DeviceUnderPolicy::simulator()
{
    return *device;
}

QwixtdProcess &DeviceUnderPolicy::program()
{
    return process;
}

SystemBus::Answer DeviceUnderPolicy::registerSecondWidget(SystemBus::User user) const
{
    return systemBus.call(user, "com.qwixtd"_text,
                          {"com.vorlet.qwixtd.registerQwixtApplication"_text, "string:u2"_text,
                           "string:Radio"_text, "string:t"_text});
}

QByteArray DeviceUnderPolicy::requests() const
{
    QByteArray lines;
    const QList<HttpRequest> all = device->server().requests();
    for (const HttpRequest &request : all) {
        lines += request.method + ' ' + request.body + '\n';
    }
    return lines;
}

QStringList DeviceUnderPolicy::announced() const
{
    return announcements;
}
