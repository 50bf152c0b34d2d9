#include "daemon/generalproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable daemonGeneralProxy(const QDBusConnection &connection)
{
    using Proxy = Daemon::GeneralProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Daemon::GeneralProxy",
            p,
            {
                {"setApiKey", Shape::Command, "s", {text}, returning([p] { p->setApiKey(text, wait); })},
                {"setName", Shape::Command, "s", {text}, returning([p] { p->setName(text, wait); })},
                {"setMode", Shape::Command, "s", {text}, returning([p] { p->setMode(text, wait); })},
                {"setAcceptedStatsAgreement", Shape::Command, "s", {text}, returning([p] { p->setAcceptedStatsAgreement(text, wait); })},
                {"setAcceptedCrashAgreement", Shape::Command, "s", {text}, returning([p] { p->setAcceptedCrashAgreement(text, wait); })},
                {"setLocale", Shape::Command, "s", {text}, returning([p] { p->setLocale(text, wait); })},
                {"setTimezoneId", Shape::Command, "s", {text}, returning([p] { p->setTimezoneId(text, wait); })},
                {"setAutosendCrashLogs", Shape::Command, "b", {flag}, returning([p] { p->setAutosendCrashLogs(flag, wait); })},
                {"setTimezoneOffset", Shape::Command, "i", {number}, returning([p] { p->setTimezoneOffset(number, wait); })},
                {"restoreMode", Shape::Command, "", {}, returning([p] { p->restoreMode(wait); })},
                {"reboot", Shape::Command, "", {}, returning([p] { p->reboot(wait); })},
                {"reset", Shape::Command, "", {}, returning([p] { p->reset(wait); })},
                {"powerOff", Shape::Command, "", {}, returning([p] { p->powerOff(wait); })},
                {"createOnFileSystemLogs", Shape::Command, "", {}, returning([p] { p->createOnFileSystemLogs(wait); })},
                {"createCrashesAndLogsArchive", Shape::Command, "", {}, returning([p] { p->createCrashesAndLogsArchive(wait); })},
                {"triggerCheckFirmwareUpdate", Shape::Command, "", {}, returning([p] { p->triggerCheckFirmwareUpdate(wait); })},
                {"remoteId", Shape::Text, "", {}, returning([p] { return p->remoteId(wait); })},
                {"userId", Shape::Text, "", {}, returning([p] { return p->userId(wait); })},
                {"apiKey", Shape::Text, "", {}, returning([p] { return p->apiKey(wait); })},
                {"serial", Shape::Text, "", {}, returning([p] { return p->serial(wait); })},
                {"name", Shape::Text, "", {}, returning([p] { return p->name(wait); })},
                {"firmwareVersion", Shape::Text, "", {}, returning([p] { return p->firmwareVersion(wait); })},
                {"hardwareVersion", Shape::Text, "", {}, returning([p] { return p->hardwareVersion(wait); })},
                {"mode", Shape::Text, "", {}, returning([p] { return p->mode(wait); })},
                {"acceptedStatsAgreement", Shape::Text, "", {}, returning([p] { return p->acceptedStatsAgreement(wait); })},
                {"acceptedCrashAgreement", Shape::Text, "", {}, returning([p] { return p->acceptedCrashAgreement(wait); })},
                {"getLocale", Shape::Text, "", {}, returning([p] { return p->getLocale(wait); })},
                {"getTimezoneId", Shape::Text, "", {}, returning([p] { return p->getTimezoneId(wait); })},
                {"firmwareUpdateStatus", Shape::Text, "", {}, returning([p] { return p->firmwareUpdateStatus(wait); })},
                {"autoSendCrashLogs", Shape::Flag, "", {}, returning([p] { return p->autoSendCrashLogs(wait); })},
                {"startUpgrade", Shape::Flag, "", {}, returning([p] { return p->startUpgrade(wait); })},
                {"getTimezoneOffset", Shape::Number, "", {}, returning([p] { return p->getTimezoneOffset(wait); })},
                {"supportedDeviceModes", Shape::Texts, "", {}, returning([p] { return p->supportedDeviceModes(wait); }), "hsupportedDeviceModes failed "},
                {"softwareCapabilities", Shape::Texts, "", {}, returning([p] { return p->softwareCapabilities(wait); }), "soft capabilities failed"},
                {"hardwareCapabilities", Shape::Texts, "", {}, returning([p] { return p->hardwareCapabilities(wait); }), "hardware capabilities failed"},
                {"state", Shape::DeviceState, "", {}, returning([p] { return p->state(wait).toMap(); })},
                {"binCodes", Shape::Entries, "", {}, returning([p] { return p->binCodes(wait); })},
            },
            {
                subscription("modeChanged", {text}, p, &Proxy::connectModeChanged, &Proxy::disconnectModeChanged),
                subscription("nameChanged", {text}, p, &Proxy::connectNameChanged, &Proxy::disconnectNameChanged),
                subscription("apiKeyDidSet", {text}, p, &Proxy::connectApiKeyDidSet, &Proxy::disconnectApiKeyDidSet),
                subscription("daemonDidStart", {}, p, &Proxy::connectDaemonDidStart, &Proxy::disconnectDaemonDidStart),
                subscription("logsCreated", {text}, p, &Proxy::connectLogsCreated, &Proxy::disconnectLogsCreated),
                subscription("archiveWithLogsAndCrashesCreate", {text}, p, &Proxy::connectArchiveWithLogsAndCrashesCreate, &Proxy::disconnectArchiveWithLogsAndCrashesCreate),
                subscription("timezoneOffsetChanged", {number}, p, &Proxy::connectTimezoneOffsetChanged, &Proxy::disconnectTimezoneOffsetChanged),
                subscription("localeChanged", {text}, p, &Proxy::connectLocaleChanged, &Proxy::disconnectLocaleChanged),
                subscription("timeZoneIdChanged", {text}, p, &Proxy::connectTimeZoneIdChanged, &Proxy::disconnectTimeZoneIdChanged),
                subscription("dateTimeSynchronized", {}, p, &Proxy::connectDateTimeSynchronized, &Proxy::disconnectDateTimeSynchronized),
                subscription("userIdChanged", {text}, p, &Proxy::connectUserIdChanged, &Proxy::disconnectUserIdChanged),
            }};
}
