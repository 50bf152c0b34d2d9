#include "mapsenders.h"

#include "btnotifications/btnotificationsproxy.h"
#include "daemon/audioproxy.h"
#include "daemon/screensaverproxy.h"
#include "windowmanager/apearanceproxy.h"
#include "windowmanager/generalproxy.h"
#include "windowmanager/notificationsproxy.h"

#include <memory>

namespace
{

const QString id = QStringLiteral("id");
const QString mode = QStringLiteral("mode");
constexpr QDBus::CallMode wait = QDBus::Block;

// Makes the call through @p proxy and reports how it ended.
template <typename Proxy, typename Call>
auto sending(const std::shared_ptr<Proxy> &proxy, Call call)
{
    return [proxy, call](const QVariantMap &map, QDBus::CallMode callMode) {
        call(*proxy, map, callMode);
        return proxy->lastError().name();
    };
}

template <typename Proxy, typename Call>
auto reading(const std::shared_ptr<Proxy> &proxy, Call call)
{
    return [proxy, call] { return call(*proxy); };
}

QString sendRemoteEvent(WindowManager::GeneralProxy &proxy, const QVariantMap &map, QDBus::CallMode callMode)
{
    QDBusPendingCall pending = proxy.sendRemoteEvent(id, map);
    if (callMode == QDBus::NoBlock) {
        return {};
    }
    pending.waitForFinished();
    return pending.error().name();
}

} // namespace

std::vector<MapSender> mapSenders(const QDBusConnection &connection)
{
    using Map = QVariantMap;
    using Mode = QDBus::CallMode;
    using Source = MapSender::Source;
    using Phone = BtNotifications::BTNotificationsProxy;
    using Audio = Daemon::AudioProxy;
    using Saver = Daemon::ScreenSaverProxy;
    using Scrolling = WindowManager::ApearanceProxy;
    using Windows = WindowManager::GeneralProxy;
    using Notes = WindowManager::NotificationsProxy;
    const auto phone = std::make_shared<Phone>(nullptr, connection);
    const auto audio = std::make_shared<Audio>(nullptr, connection);
    const auto saver = std::make_shared<Saver>(nullptr, connection);
    const auto scrolling = std::make_shared<Scrolling>(nullptr, connection);
    const auto windows = std::make_shared<Windows>(nullptr, connection);
    const auto notes = std::make_shared<Notes>(nullptr, connection);
    return {
        {"saveDevice", sending(phone, [](Phone &p, const Map &map, Mode how) { p.saveDevice(map, how); }),
         Source::ParsedMap, reading(phone, [](Phone &p) { return p.savedDevices(wait); })},
        {"updateSettings",
         sending(phone, [](Phone &p, const Map &map, Mode how) { p.updateSettings(id, map, how); }),
         Source::ParsedMap, reading(phone, [](Phone &p) { return p.settingsForDevice(id, wait); })},
        {"setGeneralOptions",
         sending(phone, [](Phone &p, const Map &map, Mode how) { p.setGeneralOptions(map, how); }),
         Source::ParsedMap, reading(phone, [](Phone &p) { return p.generalOptions(wait); })},
        {"setAudioConfig",
         sending(audio, [](Audio &p, const Map &map, Mode how) { p.setAudioConfig(map, how); }),
         Source::ConvertedMap, reading(audio, [](Audio &p) { return p.getAudioState(wait); })},
        {"setScreenSaverModeSettings",
         sending(saver,
                 [](Saver &p, const Map &map, Mode how) { p.setScreenSaverModeSettings(mode, map, how); }),
         Source::ParsedMap, reading(saver, [](Saver &p) { return p.screenSaverModeSettings(mode, wait); })},
        {"setCurrentScrollTypeAndParams",
         sending(scrolling, [](Scrolling &p, const Map &map,
                               Mode how) { p.setCurrentScrollTypeAndParams(id, map, how); }),
         Source::ParsedMap, reading(scrolling, [](Scrolling &p) { return p.currentScrollTypeInfo(wait); })},
        {"updateRemoteNotificationWithId",
         sending(notes,
                 [](Notes &p, const Map &map, Mode how) { p.updateRemoteNotificationWithId(id, map, how); }),
         Source::ParsedMap, reading(notes, [](Notes &p) { return p.notifcationFroId(id, wait); })},
        {"addNewNotification",
         sending(notes, [](Notes &p, const Map &map, Mode how) { return p.addNewNotification(map, how); }),
         Source::ParsedMap, reading(notes, [](Notes &p) { return p.currentNotification(wait); })},
        {"setWidgetModesConfig",
         sending(windows, [](Windows &p, const Map &map, Mode how) { p.setWidgetModesConfig(id, map, how); }),
         Source::ParsedMap, reading(windows, [](Windows &p) { return p.widgetModesInfo(id, wait); })},
        {"setWidgetModeConfig",
         sending(windows,
                 [](Windows &p, const Map &map, Mode how) { p.setWidgetModeConfig(id, mode, map, how); }),
         Source::ParsedMap, reading(windows, [](Windows &p) { return p.widgetModeInfo(id, mode, wait); })},
        {"setGlobalModeConfig",
         sending(windows,
                 [](Windows &p, const Map &map, Mode how) { p.setGlobalModeConfig(mode, map, how); }),
         Source::ParsedMap, reading(windows, [](Windows &p) { return p.globalModeInfo(mode, wait); })},
        {"invokeRemoteAction",
         sending(windows, [](Windows &p, const Map &map,
                             Mode how) { return p.invokeRemoteAction(id, mode, map, how); }),
         Source::JsonMap, reading(windows, [](Windows &p) { return p.widgetSettings(id, wait); })},
        {"sendRemoteEvent",
         [windows](const Map &map, Mode how) { return sendRemoteEvent(*windows, map, how); }, Source::JsonMap,
         reading(windows, [](Windows &p) { return p.appSettings(id, wait); })},
    };
}
