#include "daemon/soundnotificationproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/notifications"};
const QLatin1String interfaceName{"com.vorlet.daemon.notifications"};
} // namespace

namespace Daemon
{

SoundNotificationProxy::SoundNotificationProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void SoundNotificationProxy::play(const QString &path, QDBus::CallMode mode) { call(mode, QStringLiteral("play"), path); }
void SoundNotificationProxy::playSoundNotification(const QString &category, const QString &name, QDBus::CallMode mode) { call(mode, QStringLiteral("playSoundNotification"), category, name); }

QStringList SoundNotificationProxy::listOfSoundCategories(QDBus::CallMode mode) { return Reply::value<QStringList>(call(mode, QStringLiteral("listOfSoundCategories"))); }
bool SoundNotificationProxy::isPlaying(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("isPlaying"))); }
bool SoundNotificationProxy::soundExists(const QString &category, const QString &name, QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("soundExists"), category, name)); }
QStringList SoundNotificationProxy::listOfNotificationsWithCategory(const QString &category, QDBus::CallMode mode)
{
    return Reply::value<QStringList>(call(mode, QStringLiteral("listOfNotificationsWithCategory"), category));
}
QString SoundNotificationProxy::pathToNotification(const QString &category, const QString &name, QDBus::CallMode mode)
{
    return Reply::value<QString>(call(mode, QStringLiteral("pathToNotification"), category, name));
}

} // namespace Daemon
