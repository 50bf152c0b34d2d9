#include "asker.h"

#include "dice.h"
#include "world.h"

namespace
{
const QStringList widgets = {QStringLiteral("w0"), QStringLiteral("w1"), QStringLiteral("w2"),
                             QStringLiteral("w3"), QStringLiteral("w4"), QStringLiteral("w5")};
const QStringList types = {QStringLiteral("clock"), QStringLiteral("radio"), QStringLiteral("Wetter-Ü")};
const QStringList names = {QStringLiteral("Name-"), QStringLiteral("Ü n i ü-")};
constexpr int applicationsOfEachKind = 4;
constexpr std::size_t asksRemembered = 6;
} // namespace

Asker::Asker(World &world_, Dice &dice_)
    : world(world_)
    , dice(dice_)
{
}

void Asker::prepare()
{
    DeveloperServer &server = world.device().server();
    const QString type = types.first();
    QStringList installed = widgets;
    for (int i = 0; i < applicationsOfEachKind; ++i) {
        const auto kept = QStringLiteral("kept-%1").arg(i);
        const auto gone = QStringLiteral("gone-%1").arg(i);
        const auto other = QStringLiteral("other-%1").arg(i);
        installed.append(kept);
        server.addApplication({World::deviceId, kept, kept, QStringLiteral("Kept"), type});
        server.addApplication({World::deviceId, gone, gone, QStringLiteral("Gone"), type});
        server.addApplication({QStringLiteral("d8"), other, kept, QStringLiteral("Other"), type});
    }
    world.device().widgetManager().setWidgetsQuietly(installed);
}

void Asker::askToRegister()
{
    const QString widget = dice.pick(widgets);
    const QString name = newName();
    const QString type = dice.pick(types);
    ask([=] { world.registerApplication(widget, name, type); });
}

void Asker::askToUpdate()
{
    const QList<KnownApplication> known = world.applications().all();
    KnownApplication wanted = {
        QStringLiteral("ghost-%1").arg(dice.number(0, 3)), dice.pick(widgets), {}, {}, false};
    if (!known.isEmpty() && !dice.isOneIn(6)) {
        wanted = dice.pick(known);
    }
    const QString name = newName();
    const QString type = dice.pick(types);
    ask([=] { world.updateApplication(wanted.appId, wanted.identifier, name, type); });
}

void Asker::askToDelete()
{
    const QList<KnownApplication> known = world.applications().all();
    KnownApplication wanted = {
        QStringLiteral("ghost-%1").arg(dice.number(0, 3)), dice.pick(widgets), {}, {}, false};
    if (!known.isEmpty() && !dice.isOneIn(6)) {
        wanted = dice.pick(known);
    }
    const QString type = dice.pick(types);
    ask([=] { world.deleteApplication(wanted.appId, wanted.identifier, type); });
}

void Asker::askAgain()
{
    if (!lastAsks.empty()) {
        lastAsks.at(static_cast<std::size_t>(dice.number(0, static_cast<int>(lastAsks.size()) - 1)))();
    }
}

void Asker::forget()
{
    lastAsks.clear();
}

void Asker::askOneOfEach()
{
    askToRegister();
    askToUpdate();
    askToDelete();
    lastAsks.back()();
}

void Asker::createWidget()
{
    const QString widget = dice.pick(widgets);
    if (!world.device().widgetManager().widgets().contains(widget)) {
        world.createWidget(widget);
    }
}

void Asker::deleteWidget()
{
    const QString widget = dice.pick(widgets);
    if (world.device().widgetManager().widgets().contains(widget)) {
        world.deleteWidget(widget);
    }
}

void Asker::ask(const std::function<void()> &what)
{
    lastAsks.push_back(what);
    if (lastAsks.size() > asksRemembered) {
        lastAsks.pop_front();
    }
    what();
}

QString Asker::newName()
{
    return dice.pick(names) + QString::number(++namesGiven);
}
