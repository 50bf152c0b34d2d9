#include "spotify/clientproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"spotify.server"};
const QLatin1String objectPath{"/"};
const QLatin1String interfaceName{"com.vorlet.spotify.state"};
} // namespace

namespace Spotify
{

ClientProxy::ClientProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void ClientProxy::PlaybackStart(QDBus::CallMode mode) { call(mode, QStringLiteral("PlaybackStart")); }
void ClientProxy::PlaybackPause(QDBus::CallMode mode) { call(mode, QStringLiteral("PlaybackPause")); }
void ClientProxy::SkipToNext(QDBus::CallMode mode) { call(mode, QStringLiteral("SkipToNext")); }
void ClientProxy::SkipToPrev(QDBus::CallMode mode) { call(mode, QStringLiteral("SkipToPrev")); }

QString ClientProxy::PlaybackState(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("PlaybackState"))); }
bool ClientProxy::IsActive(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("IsActive"))); }
QVariantMap ClientProxy::Metadata(QDBus::CallMode mode) { return Reply::map(call(mode, QStringLiteral("Metadata"))); }
bool ClientProxy::lastCallSucceeded() const { return lastError().type() == QDBusError::NoError; }

bool ClientProxy::connectPlaybackStateChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("PlaybackStateChanged"), receiver, slot); }
bool ClientProxy::disconnectPlaybackStateChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("PlaybackStateChanged"), receiver, slot); }
bool ClientProxy::connectIsActiveChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("IsActiveChanged"), receiver, slot); }
bool ClientProxy::disconnectIsActiveChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("IsActiveChanged"), receiver, slot); }
bool ClientProxy::connectMetaDataChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("MetaDataChanged"), receiver, slot); }
bool ClientProxy::disconnectMetaDataChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("MetaDataChanged"), receiver, slot); }

} // namespace Spotify
