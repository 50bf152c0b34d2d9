#pragma once

#include <QDBusInterface>
#include <QVariant>

namespace Spotify
{

/// The music player. Its members are spelled with a capital letter on the bus.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class ClientProxy : public QDBusInterface
{
    Q_OBJECT

public:
    ClientProxy(QObject *parent, const QDBusConnection &connection);

    /// PlaybackStart(): plays.
    void PlaybackStart(QDBus::CallMode mode);
    /// PlaybackPause(): pauses.
    void PlaybackPause(QDBus::CallMode mode);
    /// SkipToNext(): one track on.
    void SkipToNext(QDBus::CallMode mode);
    /// SkipToPrev(): one track back.
    void SkipToPrev(QDBus::CallMode mode);

    /// PlaybackState() -> s: whether it plays or pauses.
    [[nodiscard]] QString PlaybackState(QDBus::CallMode mode);
    /// IsActive() -> b: whether the device is the player's present output.
    [[nodiscard]] bool IsActive(QDBus::CallMode mode);
    /// Metadata() -> a{sv}: the present track, read with parseDBusMap().
    [[nodiscard]] QVariantMap Metadata(QDBus::CallMode mode);
    /// Whether lastError() holds no error: no call was made, or the last one succeeded. Sends nothing.
    [[nodiscard]] bool lastCallSucceeded() const;

    /// Signal PlaybackStateChanged(s): whether it plays or pauses.
    bool connectPlaybackStateChanged(QObject *receiver, const char *slot);
    bool disconnectPlaybackStateChanged(QObject *receiver, const char *slot);
    /// Signal IsActiveChanged(b): whether the device is the present output.
    bool connectIsActiveChanged(QObject *receiver, const char *slot);
    bool disconnectIsActiveChanged(QObject *receiver, const char *slot);
    /// Signal MetaDataChanged(a{sv}): the new track.
    bool connectMetaDataChanged(QObject *receiver, const char *slot);
    bool disconnectMetaDataChanged(QObject *receiver, const char *slot);
};

} // namespace Spotify
