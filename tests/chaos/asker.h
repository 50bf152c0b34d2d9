#pragma once

#include <QString>

#include <deque>
#include <functional>

class Dice;
class World;

/// The widgets of the device: what they ask of the daemon, at random. Nearly all that is asked is new, and so
/// can be told from all else on its way.
class Asker
{
public:
    Asker(World &world, Dice &dice);

    /// Installs the widgets, and puts applications on the server: of widgets that stay, of widgets that are
    /// gone, and of another device.
    void prepare();

    void askToRegister();
    /// Mostly an application that the daemon knows.
    void askToUpdate();
    void askToDelete();
    /// Word for word what was asked a short while ago.
    void askAgain();
    /// What was asked so far is not asked again.
    void forget();
    void askOneOfEach();
    void createWidget();
    void deleteWidget();

private:
    void ask(const std::function<void()> &what);
    QString newName();

    World &world;
    Dice &dice;
    std::deque<std::function<void()>> lastAsks;
    int namesGiven = 0;
};
