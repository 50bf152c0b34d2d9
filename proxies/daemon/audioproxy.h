#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Daemon
{

/// The loudspeaker's volume and settings.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class AudioProxy : public QDBusInterface
{
public:
    AudioProxy(QObject *parent, const QDBusConnection &connection);

    /// setVolume(d): the volume, in the service's own range.
    void setVolume(double volume, QDBus::CallMode mode);
    /// syncUserFriendlyVolume(): takes the volume that is set as the owner's.
    void syncUserFriendlyVolume(QDBus::CallMode mode);
    /// setUserFriendlyVolume(x): the volume as the owner reads it.
    void setUserFriendlyVolume(qlonglong volume, QDBus::CallMode mode);
    /// restoreUserVolume(): back to the owner's volume.
    void restoreUserVolume(QDBus::CallMode mode);
    /// setAudioConfig(a{sv}): several settings at once.
    void setAudioConfig(const QVariantMap &config, QDBus::CallMode mode);

    /// volume() -> d: the volume, in the service's own range.
    [[nodiscard]] double volume(QDBus::CallMode mode);
    /// getUserFriendlyVolume() -> x: the volume as the owner reads it.
    [[nodiscard]] qlonglong getUserFriendlyVolume(QDBus::CallMode mode);
    /// getAudioState() -> a{sv}: the settings as a map, every container in it decoded, arrays in arrays kept.
    [[nodiscard]] QVariantMap getAudioState(QDBus::CallMode mode);

    /// Signal volumeDidChanged(d): the new volume, spelled so on the bus.
    bool connectVolumeDidChanged(QObject *receiver, const char *slot);
    bool disconnectVolumeDidChanged(QObject *receiver, const char *slot);
    /// Signal userVolumeDidChanged(x): the new volume as the owner reads it, spelled so on the bus.
    bool connectUserVolumeDidChanged(QObject *receiver, const char *slot);
    bool disconnectUserVolumeDidChanged(QObject *receiver, const char *slot);
};

} // namespace Daemon
