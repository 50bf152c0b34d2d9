// What the world does to the daemon.

#include "world.h"

namespace
{
QByteArray registration(const QString &uuid, const QString &name, const QString &type)
{
    return QStringLiteral("POST id=%1&identifier=%2&name=%3&type=%4")
        .arg(World::deviceId, uuid, name, type)
        .toUtf8();
}
} // namespace

void World::registerApplication(const QString &uuid, const QString &name, const QString &type)
{
    book.ask({Ledger::nowMs(), {registration(uuid, name, type)}, uuid, false});
    simulator->watcher().registerApplication(uuid, name, type);
}

void World::updateApplication(const QString &appId, const QString &uuid, const QString &name,
                              const QString &type)
{
    const QByteArray update = QStringLiteral("PUT app_id=%1&name=%2&type=%3").arg(appId, name, type).toUtf8();
    const bool isSurelyKnown = isReady() && known.contains(appId) && !known.value(appId).isToGo &&
                               !book.deletedWidgets().contains(uuid);
    QList<QByteArray> requests = {update};
    if (!isSurelyKnown) {
        // What the daemon does not know, it registers.
        requests.append(registration(uuid, name, type));
    }
    book.ask({Ledger::nowMs(), requests, uuid, false});
    simulator->watcher().updateApplication(appId, uuid, name, type);
}

void World::deleteApplication(const QString &appId, const QString &uuid, const QString &type)
{
    book.ask({Ledger::nowMs(),
              {QStringLiteral("DELETE app_id=%1&type=%2").arg(appId, type).toUtf8()},
              uuid,
              false});
    known.deletionAsked(appId);
    simulator->watcher().deleteApplication(appId, uuid, type);
}

void World::createWidget(const QString &id)
{
    simulator->widgetManager().createWidget(id);
}

void World::deleteWidget(const QString &id)
{
    book.widgetDeleted(id);
    if (simulator->widgetManager().isRunning()) {
        known.widgetDeleted(id); // else nobody hears of it
    }
    simulator->widgetManager().deleteWidget(id);
}

void World::setInternetAvailable(bool available)
{
    simulator->daemon().setInternetAvailable(available);
}

void World::stopFront(FrontServer::End how, bool isReset)
{
    if (!front->isRunning()) {
        return;
    }
    note(QStringLiteral("chaos   nginx is %1; connections are %2")
             .arg(how == FrontServer::End::Killed ? QStringLiteral("killed") : QStringLiteral("terminated"),
                  isReset ? QStringLiteral("reset") : QStringLiteral("refused")));
    front->stop(how);
    book.frontEnded();
    if (isReset && !door.listen(QHostAddress::LocalHost, front->port())) {
        note(QStringLiteral("chaos   the port is not free; connections are refused"));
    }
}

void World::startFront()
{
    door.close();
    if (!front->isRunning()) {
        note(QStringLiteral("chaos   nginx starts"));
        if (!front->start()) {
            qFatal("nginx does not start again");
        }
    }
}

bool World::isFrontRunning() const
{
    return front->isRunning();
}

void World::stopServer()
{
    note(QStringLiteral("chaos   the developer server stops"));
    simulator->server().stop();
}

void World::startServer()
{
    if (!simulator->server().isRunning()) {
        note(QStringLiteral("chaos   the developer server starts"));
        if (!simulator->server().start(simulator->server().port())) {
            qFatal("the developer server does not start again: %s",
                   qPrintable(simulator->server().errorText()));
        }
    }
}
