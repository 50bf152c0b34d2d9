#include "daemon/soundnotificationproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonSoundNotificationProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::SoundNotificationProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::SoundNotificationProxy",
            p,
            {
                {"play", Shape::Command, "s", {text}, returning([p] { p->play(text, wait); })},
                {"playSoundNotification", Shape::Command, "ss", {text, second}, returning([p] { p->playSoundNotification(text, second, wait); })},
                {"listOfSoundCategories", Shape::Texts, "", {}, returning([p] { return p->listOfSoundCategories(wait); })},
                {"isPlaying", Shape::Flag, "", {}, returning([p] { return p->isPlaying(wait); })},
                {"soundExists", Shape::Flag, "ss", {text, second}, returning([p] { return p->soundExists(text, second, wait); })},
                {"listOfNotificationsWithCategory", Shape::Texts, "s", {text}, returning([p] { return p->listOfNotificationsWithCategory(text, wait); })},
                {"pathToNotification", Shape::Text, "ss", {text, second}, returning([p] { return p->pathToNotification(text, second, wait); })},
            },
            {}};
}
