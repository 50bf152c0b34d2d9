#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>

class Asker;
class Dice;
class World;

/// Everything that may happen to the daemon, at random. What happens follows from the seed; what the daemon
/// is doing then does not, so that the same seed makes a similar storm and not the same.
class Storm : public QObject
{
    Q_OBJECT
public:
    Storm(World &world, Asker &asker, Dice &dice);

    /// One of the ways in which a device starts: with all there, or with a service, the key or a good answer
    /// missing for some seconds. The daemon is to be started behind it.
    void boot();
    void begin();
    /// Nothing happens by itself any more, and everything is back and well.
    void end();
    /// The internet goes and comes, if the daemon may think that it is away or has no list.
    void endDoubts();

private:
    struct Event;
    static const Event events[];

    void happen();
    /// Unless the storm is over by then.
    void later(int leastMs, int mostMs, const std::function<void()> &what);

    void askToRegister();
    void askToUpdate();
    void askToDelete();
    void askAgain();
    void createWidget();
    void deleteWidget();
    void loseInternet();
    void spoilAnAnswer();
    void stopFront();
    void stopServer();
    void restartDaemonService();
    void restartWidgetManager();

    World &world;
    Asker &asker;
    Dice &dice;
    QTimer timer;
    /// How often the daemon had asked for the internet when its service started last.
    int readsBefore = -1;
    bool isInDoubt = false;
};
