#include "daemon/audioproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonAudioProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::AudioProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::AudioProxy",
            p,
            {
                {"setVolume", Shape::Command, "d", {real}, returning([p] { p->setVolume(real, wait); })},
                {"syncUserFriendlyVolume", Shape::Command, "", {}, returning([p] { p->syncUserFriendlyVolume(wait); })},
                {"setUserFriendlyVolume", Shape::Command, "x", {longNumber}, returning([p] { p->setUserFriendlyVolume(longNumber, wait); })},
                {"restoreUserVolume", Shape::Command, "", {}, returning([p] { p->restoreUserVolume(wait); })},
                {"setAudioConfig", Shape::Command, "a{sv}", {map}, returning([p] { p->setAudioConfig(map, wait); })},
                {"volume", Shape::Real, "", {}, returning([p] { return p->volume(wait); })},
                {"getUserFriendlyVolume", Shape::LongNumber, "", {}, returning([p] { return p->getUserFriendlyVolume(wait); })},
                {"getAudioState", Shape::ConvertedMap, "", {}, returning([p] { return p->getAudioState(wait); })},
            },
            {
                subscription("volumeDidChanged", {real}, p, &Proxy::connectVolumeDidChanged, &Proxy::disconnectVolumeDidChanged),
                subscription("userVolumeDidChanged", {longNumber}, p, &Proxy::connectUserVolumeDidChanged, &Proxy::disconnectUserVolumeDidChanged),
            }};
}
