#include "storm.h"

#include "asker.h"
#include "dice.h"
#include "world.h"

namespace
{
const auto failed = QStringLiteral("org.freedesktop.DBus.Error.Failed");
const auto reason = QStringLiteral("simulated trouble");
const auto keyMember = QStringLiteral("apiKey");
const auto onlineMember = QStringLiteral("isInternetAvailable");
const auto widgetsMember = QStringLiteral("listOfInstalledWidgets");
// In the order in which the daemon reads them.
const QStringList readMembers = {keyMember, QStringLiteral("serial"), QStringLiteral("remoteId"),
                                 onlineMember};

const QList<ServerFault> faults = {
    ServerFault::withOtherSuccess(201), ServerFault::withStatus(400), ServerFault::withStatus(401),
    ServerFault::withStatus(404), ServerFault::withStatus(429), ServerFault::withStatus(500),
    ServerFault::withStatus(503), ServerFault::withEmptyBody(), ServerFault::withBodyThatIsNoJson(),
    ServerFault::withLargeBody(), ServerFault::withCutOffBody(), ServerFault::withClosedConnection(),
    ServerFault::withResetConnection(),
    // The front server makes a stream of it that is reset.
    ServerFault::withStatus(444), ServerFault::withDelay(0)};
} // namespace

struct Storm::Event {
    int share;
    void (Storm::*happens)();
};

const Storm::Event Storm::events[] = {
    {22, &Storm::askToRegister}, {14, &Storm::askToUpdate},         {18, &Storm::askToDelete},
    {10, &Storm::askAgain},      {4, &Storm::createWidget},         {4, &Storm::deleteWidget},
    {6, &Storm::loseInternet},   {20, &Storm::spoilAnAnswer},       {2, &Storm::stopFront},
    {1, &Storm::stopServer},     {1, &Storm::restartDaemonService}, {1, &Storm::restartWidgetManager},
};

Storm::Storm(World &world_, Asker &asker_, Dice &dice_)
    : world(world_)
    , asker(asker_)
    , dice(dice_)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &Storm::happen);
}

void Storm::boot()
{
    DaemonService &daemon = world.device().daemon();
    WidgetManagerService &widgetManager = world.device().widgetManager();
    const int way = dice.number(0, 4);
    world.note(QStringLiteral("chaos   way of starting: %1").arg(way));
    if (way == 1) {
        world.device().setApiKeyQuietly(QString());
        QTimer::singleShot(dice.number(300, 3000), this, [this] { world.device().setApiKey(World::apiKey); });
    } else if (way == 2) {
        daemon.failCallsOf(keyMember, failed, reason);
        QTimer::singleShot(dice.number(300, 3000), this, [&daemon] {
            daemon.answerCallsOf(keyMember);
            daemon.stop();
            daemon.start();
        });
    }
    const int daemonDelay = way == 3 ? dice.number(300, 3000) : 0;
    const int widgetManagerDelay = way == 4 ? dice.number(300, 3000) : 0;
    QTimer::singleShot(daemonDelay, this, [&daemon] { daemon.start(); });
    QTimer::singleShot(widgetManagerDelay, this, [&widgetManager] { widgetManager.start(); });
    if (dice.isOneIn(2)) {
        world.device().server().failNext(1, dice.pick(faults));
    }
    isInDoubt = true; // a list may be given up
}

void Storm::begin()
{
    timer.start(0);
}

void Storm::happen()
{
    int total = 0;
    for (const Event &event : events) {
        total += event.share;
    }
    int share = dice.number(0, total - 1);
    for (const Event &event : events) {
        share -= event.share;
        if (share < 0) {
            (this->*event.happens)();
            break;
        }
    }
    timer.start(dice.number(20, 160));
}

void Storm::end()
{
    timer.stop();
    world.startFront();
    world.startServer();
    world.device().server().clearFaults();
    DaemonService &daemon = world.device().daemon();
    for (const QString &member : readMembers) {
        daemon.answerCallsOf(member);
        daemon.holdCallsOf(member, 0);
    }
    if (!daemon.isRunning()) {
        readsBefore = daemon.callCount(onlineMember);
        daemon.start();
    }
    WidgetManagerService &widgetManager = world.device().widgetManager();
    widgetManager.answerCallsOf(widgetsMember);
    widgetManager.holdCallsOf(widgetsMember, 0);
    widgetManager.start();
    world.setInternetAvailable(true);
}

void Storm::endDoubts()
{
    if (isInDoubt) {
        world.setInternetAvailable(false);
        world.setInternetAvailable(true);
    }
    isInDoubt = false;
}

void Storm::later(int leastMs, int mostMs, const std::function<void()> &what)
{
    QTimer::singleShot(dice.number(leastMs, mostMs), this, [this, what] {
        if (timer.isActive()) {
            what();
        }
    });
}

void Storm::askToRegister()
{
    asker.askToRegister();
}

void Storm::askToUpdate()
{
    asker.askToUpdate();
}

void Storm::askToDelete()
{
    asker.askToDelete();
}

void Storm::askAgain()
{
    asker.askAgain();
}

void Storm::createWidget()
{
    asker.createWidget();
}

void Storm::deleteWidget()
{
    asker.deleteWidget();
}

void Storm::loseInternet()
{
    world.setInternetAvailable(false);
    later(20, 1200, [this] { world.setInternetAvailable(true); });
}

void Storm::spoilAnAnswer()
{
    ServerFault fault = dice.pick(faults);
    const bool isSlow = fault.kind == ServerFault::Kind::Delay || dice.isOneIn(8);
    fault.delayMs = isSlow ? dice.number(100, 1500) : 0;
    world.device().server().failNext(dice.number(1, 2), fault);
}

void Storm::stopFront()
{
    world.stopFront(dice.isOneIn(2) ? FrontServer::End::Killed : FrontServer::End::Terminated,
                    dice.isOneIn(2));
    later(100, 2500, [this] { world.startFront(); });
}

void Storm::stopServer()
{
    world.stopServer();
    later(100, 1500, [this] { world.startServer(); });
}

/// Once it has started, the service stays until the daemon has read it: what is asked while the daemon has no
/// key carries none for ever, by design, and the server would refuse it for ever.
void Storm::restartDaemonService()
{
    DaemonService &daemon = world.device().daemon();
    if (!world.isReady() || !daemon.isRunning() || daemon.callCount(onlineMember) <= readsBefore) {
        return;
    }
    isInDoubt = true;
    daemon.stop();
    later(50, 2000, [this, &daemon] {
        for (const QString &member : readMembers) {
            daemon.holdCallsOf(member, 0);
        }
        daemon.answerCallsOf(onlineMember);
        const int trouble = dice.number(0, 2);
        if (trouble == 1) {
            daemon.failCallsOf(onlineMember, failed, reason);
        } else if (trouble == 2) {
            daemon.holdCallsOf(dice.pick(readMembers), dice.number(500, 3000));
        }
        readsBefore = daemon.callCount(onlineMember);
        daemon.start();
    });
}

void Storm::restartWidgetManager()
{
    WidgetManagerService &widgetManager = world.device().widgetManager();
    if (!world.isReady() || !widgetManager.isRunning()) {
        return;
    }
    widgetManager.stop();
    later(50, 2000, [this, &widgetManager] {
        widgetManager.answerCallsOf(widgetsMember);
        widgetManager.holdCallsOf(widgetsMember, 0);
        const int trouble = dice.number(0, 2);
        if (trouble == 1) {
            widgetManager.failCallsOf(widgetsMember, failed, reason);
        } else if (trouble == 2) {
            widgetManager.holdCallsOf(widgetsMember, dice.number(500, 3000));
        }
        widgetManager.start();
    });
}
