#include "daemon/generalproxy.h"

#include "shapes/introspection.h"
#include "shapes/reply.h"
#include "shapes/subscription.h"

using namespace VorletProxiesPrivate;

namespace
{
const QLatin1String serviceName{"vorlet.daemon"};
const QLatin1String objectPath{"/general"};
const QLatin1String interfaceName{"com.vorlet.daemon.general"};
} // namespace

namespace Daemon
{

GeneralProxy::GeneralProxy(QObject *parent, const QDBusConnection &connection)
    : QDBusInterface(serviceName, objectPath, interfaceName, withoutIntrospection(connection, interfaceName), parent)
{
}

void GeneralProxy::setApiKey(const QString &apiKey, QDBus::CallMode mode) { call(mode, QStringLiteral("setApiKey"), apiKey); }
void GeneralProxy::setName(const QString &name, QDBus::CallMode mode) { call(mode, QStringLiteral("setName"), name); }
void GeneralProxy::setMode(const QString &deviceMode, QDBus::CallMode mode) { call(mode, QStringLiteral("setMode"), deviceMode); }
void GeneralProxy::setAcceptedStatsAgreement(const QString &version, QDBus::CallMode mode) { call(mode, QStringLiteral("setAcceptedStatsAgreement"), version); }
void GeneralProxy::setAcceptedCrashAgreement(const QString &version, QDBus::CallMode mode) { call(mode, QStringLiteral("setAcceptedCrashAgreement"), version); }
void GeneralProxy::setLocale(const QString &locale, QDBus::CallMode mode) { call(mode, QStringLiteral("setLocale"), locale); }
void GeneralProxy::setTimezoneId(const QString &timezoneId, QDBus::CallMode mode) { call(mode, QStringLiteral("setTimezoneId"), timezoneId); }
void GeneralProxy::setAutosendCrashLogs(bool enabled, QDBus::CallMode mode) { call(mode, QStringLiteral("setAutosendCrashLogs"), enabled); }
void GeneralProxy::setTimezoneOffset(int offset, QDBus::CallMode mode) { call(mode, QStringLiteral("setTimezoneOffset"), offset); }
void GeneralProxy::restoreMode(QDBus::CallMode mode) { call(mode, QStringLiteral("restoreMode")); }
void GeneralProxy::reboot(QDBus::CallMode mode) { call(mode, QStringLiteral("reboot")); }
void GeneralProxy::reset(QDBus::CallMode mode) { call(mode, QStringLiteral("reset")); }
void GeneralProxy::powerOff(QDBus::CallMode mode) { call(mode, QStringLiteral("powerOff")); }
void GeneralProxy::createOnFileSystemLogs(QDBus::CallMode mode) { call(mode, QStringLiteral("createOnFileSystemLogs")); }
void GeneralProxy::createCrashesAndLogsArchive(QDBus::CallMode mode) { call(mode, QStringLiteral("createCrashesAndLogsArchive")); }
void GeneralProxy::triggerCheckFirmwareUpdate(QDBus::CallMode mode) { call(mode, QStringLiteral("triggerCheckFirmwareUpdate")); }

QString GeneralProxy::remoteId(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("remoteId"))); }
QString GeneralProxy::userId(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("userId"))); }
QString GeneralProxy::apiKey(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("apiKey"))); }
QString GeneralProxy::serial(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("serial"))); }
QString GeneralProxy::name(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("name"))); }
QString GeneralProxy::firmwareVersion(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("firmwareVersion"))); }
QString GeneralProxy::hardwareVersion(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("hardwareVersion"))); }
QString GeneralProxy::mode(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("mode"))); }
QString GeneralProxy::acceptedStatsAgreement(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("acceptedStatsAgreement"))); }
QString GeneralProxy::acceptedCrashAgreement(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("acceptedCrashAgreement"))); }
QString GeneralProxy::getLocale(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("getLocale"))); }
QString GeneralProxy::getTimezoneId(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("getTimezoneId"))); }
QString GeneralProxy::firmwareUpdateStatus(QDBus::CallMode mode) { return Reply::value<QString>(call(mode, QStringLiteral("firmwareUpdateStatus"))); }
bool GeneralProxy::autoSendCrashLogs(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("autoSendCrashLogs"))); }
bool GeneralProxy::startUpgrade(QDBus::CallMode mode) { return Reply::value<bool>(call(mode, QStringLiteral("startUpgrade"))); }
int GeneralProxy::getTimezoneOffset(QDBus::CallMode mode) { return Reply::value<int>(call(mode, QStringLiteral("getTimezoneOffset"))); }
QStringList GeneralProxy::supportedDeviceModes(QDBus::CallMode mode) { return Reply::value<QStringList>(Reply::logged(call(mode, QStringLiteral("supportedDeviceModes")), "hsupportedDeviceModes failed ")); }
QStringList GeneralProxy::softwareCapabilities(QDBus::CallMode mode) { return Reply::value<QStringList>(Reply::logged(call(mode, QStringLiteral("softwareCapabilities")), "soft capabilities failed")); }
QStringList GeneralProxy::hardwareCapabilities(QDBus::CallMode mode) { return Reply::value<QStringList>(Reply::logged(call(mode, QStringLiteral("hardwareCapabilities")), "hardware capabilities failed")); }
DeviceState GeneralProxy::state(QDBus::CallMode mode) { return DeviceState::fromMap(Reply::jsonMap(call(mode, QStringLiteral("state")))); }
QVariantMap GeneralProxy::binCodes(QDBus::CallMode mode) { return Reply::entries(call(mode, QStringLiteral("binCodes"))); }

bool GeneralProxy::connectModeChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("modeChanged"), receiver, slot); }
bool GeneralProxy::disconnectModeChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("modeChanged"), receiver, slot); }
bool GeneralProxy::connectNameChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("nameChanged"), receiver, slot); }
bool GeneralProxy::disconnectNameChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("nameChanged"), receiver, slot); }
bool GeneralProxy::connectApiKeyDidSet(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("apiKeyDidSet"), receiver, slot); }
bool GeneralProxy::disconnectApiKeyDidSet(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("apiKeyDidSet"), receiver, slot); }
bool GeneralProxy::connectDaemonDidStart(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("daemonDidStart"), receiver, slot); }
bool GeneralProxy::disconnectDaemonDidStart(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("daemonDidStart"), receiver, slot); }
bool GeneralProxy::connectLogsCreated(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("logsCreated"), receiver, slot); }
bool GeneralProxy::disconnectLogsCreated(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("logsCreated"), receiver, slot); }
bool GeneralProxy::connectArchiveWithLogsAndCrashesCreate(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("archiveWithLogsAndCrashesCreate"), receiver, slot); }
bool GeneralProxy::disconnectArchiveWithLogsAndCrashesCreate(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("archiveWithLogsAndCrashesCreate"), receiver, slot); }
bool GeneralProxy::connectTimezoneOffsetChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("timezoneOffsetChanged"), receiver, slot); }
bool GeneralProxy::disconnectTimezoneOffsetChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("timezoneOffsetChanged"), receiver, slot); }
bool GeneralProxy::connectLocaleChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("localeChanged"), receiver, slot); }
bool GeneralProxy::disconnectLocaleChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("localeChanged"), receiver, slot); }
bool GeneralProxy::connectTimeZoneIdChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("timeZoneIdChanged"), receiver, slot); }
bool GeneralProxy::disconnectTimeZoneIdChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("timeZoneIdChanged"), receiver, slot); }
bool GeneralProxy::connectDateTimeSynchronized(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("dateTimeSynchronized"), receiver, slot); }
bool GeneralProxy::disconnectDateTimeSynchronized(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("dateTimeSynchronized"), receiver, slot); }
bool GeneralProxy::connectUserIdChanged(QObject *receiver, const char *slot) { return subscribe(*this, QStringLiteral("userIdChanged"), receiver, slot); }
bool GeneralProxy::disconnectUserIdChanged(QObject *receiver, const char *slot) { return unsubscribe(*this, QStringLiteral("userIdChanged"), receiver, slot); }

} // namespace Daemon
