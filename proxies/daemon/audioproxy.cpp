#include "daemon/audioproxy.h"

#include "dbusconversion.h"
#include "shapes/argument.h"
#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/audio"};
const QLatin1String interfaceName{"com.vorlet.daemon.audio"};
} // namespace

namespace Daemon
{

AudioProxy::AudioProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
    registerDBusContainers();
}

void AudioProxy::setVolume(double volume, QDBus::CallMode mode) { call(mode, QStringLiteral("setVolume"), volume); }
void AudioProxy::syncUserFriendlyVolume(QDBus::CallMode mode) { call(mode, QStringLiteral("syncUserFriendlyVolume")); }
void AudioProxy::setUserFriendlyVolume(qlonglong volume, QDBus::CallMode mode) { call(mode, QStringLiteral("setUserFriendlyVolume"), volume); }
void AudioProxy::restoreUserVolume(QDBus::CallMode mode) { call(mode, QStringLiteral("restoreUserVolume")); }
void AudioProxy::setAudioConfig(const QVariantMap &config, QDBus::CallMode mode) { call(mode, QStringLiteral("setAudioConfig"), Argument::map(config)); }

double AudioProxy::volume(QDBus::CallMode mode) { return Reply::value<double>(call(mode, QStringLiteral("volume"))); }
qlonglong AudioProxy::getUserFriendlyVolume(QDBus::CallMode mode) { return Reply::value<qlonglong>(call(mode, QStringLiteral("getUserFriendlyVolume"))); }
QVariantMap AudioProxy::getAudioState(QDBus::CallMode mode) { return Reply::converted(call(mode, QStringLiteral("getAudioState"))).toMap(); }

bool AudioProxy::connectVolumeDidChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("volumeDidChanged"), receiver, slot); }
bool AudioProxy::disconnectVolumeDidChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("volumeDidChanged"), receiver, slot); }
bool AudioProxy::connectUserVolumeDidChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("userVolumeDidChanged"), receiver, slot); }
bool AudioProxy::disconnectUserVolumeDidChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("userVolumeDidChanged"), receiver, slot); }

} // namespace Daemon
