#pragma once

#include <QDBusInterface>
#include <QStringList>

namespace Daemon
{

/// The notification sounds, sorted in categories.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class SoundNotificationProxy : public QDBusInterface
{
public:
    SoundNotificationProxy(QObject *parent, const QDBusConnection &connection);

    /// play(s): plays a sound file.
    void play(const QString &path, QDBus::CallMode mode);
    /// playSoundNotification(ss): plays one of the device's own sounds.
    void playSoundNotification(const QString &category, const QString &name, QDBus::CallMode mode);

    /// listOfSoundCategories() -> as: the categories.
    [[nodiscard]] QStringList listOfSoundCategories(QDBus::CallMode mode);
    /// isPlaying() -> b: whether a sound is heard.
    [[nodiscard]] bool isPlaying(QDBus::CallMode mode);
    /// soundExists(ss) -> b: whether there is such a sound.
    [[nodiscard]] bool soundExists(const QString &category, const QString &name, QDBus::CallMode mode);
    /// listOfNotificationsWithCategory(s) -> as: the names of a category's sounds.
    [[nodiscard]] QStringList listOfNotificationsWithCategory(const QString &category, QDBus::CallMode mode);
    /// pathToNotification(ss) -> s: the file of a sound.
    [[nodiscard]] QString pathToNotification(const QString &category, const QString &name, QDBus::CallMode mode);
};

} // namespace Daemon
