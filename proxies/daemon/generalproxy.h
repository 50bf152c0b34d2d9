#pragma once

#include "daemon/devicestate.h"

#include <QDBusInterface>
#include <QStringList>
#include <QVariant>

namespace Daemon
{

/// The device as a whole: who it is, its settings, its agreements, its firmware.
/// Each member says what it puts on the bus, with D-Bus types; an error reply gives the empty value.
class GeneralProxy : public QDBusInterface
{
public:
    GeneralProxy(QObject *parent, const QDBusConnection &connection);

    /// setApiKey(s): the key that the developer server knows the device by.
    void setApiKey(const QString &apiKey, QDBus::CallMode mode);
    /// setName(s): the device's name.
    void setName(const QString &name, QDBus::CallMode mode);
    /// setMode(s): the device mode, one of supportedDeviceModes().
    void setMode(const QString &deviceMode, QDBus::CallMode mode);
    /// setAcceptedStatsAgreement(s): the agreement on statistics that the owner accepted.
    void setAcceptedStatsAgreement(const QString &version, QDBus::CallMode mode);
    /// setAcceptedCrashAgreement(s): the agreement on crash reports that the owner accepted.
    void setAcceptedCrashAgreement(const QString &version, QDBus::CallMode mode);
    /// setLocale(s): the locale's name.
    void setLocale(const QString &locale, QDBus::CallMode mode);
    /// setTimezoneId(s): the time zone's name.
    void setTimezoneId(const QString &timezoneId, QDBus::CallMode mode);
    /// setAutosendCrashLogs(b): whether crash logs leave the device by themselves.
    void setAutosendCrashLogs(bool enabled, QDBus::CallMode mode);
    /// setTimezoneOffset(i): the offset from UTC, in the service's own unit.
    void setTimezoneOffset(int offset, QDBus::CallMode mode);
    /// restoreMode(): back to the mode before the last setMode().
    void restoreMode(QDBus::CallMode mode);
    /// reboot(): restarts the device.
    void reboot(QDBus::CallMode mode);
    /// reset(): back to the factory's settings.
    void reset(QDBus::CallMode mode);
    /// powerOff(): switches the device off.
    void powerOff(QDBus::CallMode mode);
    /// createOnFileSystemLogs(): writes the logs to files; logsCreated announces that they are there.
    void createOnFileSystemLogs(QDBus::CallMode mode);
    /// createCrashesAndLogsArchive(): packs crashes and logs; archiveWithLogsAndCrashesCreate announces the archive.
    void createCrashesAndLogsArchive(QDBus::CallMode mode);
    /// triggerCheckFirmwareUpdate(): has the device ask for newer firmware.
    void triggerCheckFirmwareUpdate(QDBus::CallMode mode);

    /// remoteId() -> s: the device's id at the developer server.
    [[nodiscard]] QString remoteId(QDBus::CallMode mode);
    /// userId() -> s: the owner's id.
    [[nodiscard]] QString userId(QDBus::CallMode mode);
    /// apiKey() -> s: the key that the developer server knows the device by; empty before set-up.
    [[nodiscard]] QString apiKey(QDBus::CallMode mode);
    /// serial() -> s: the serial number.
    [[nodiscard]] QString serial(QDBus::CallMode mode);
    /// name() -> s: the device's name.
    [[nodiscard]] QString name(QDBus::CallMode mode);
    /// firmwareVersion() -> s: the installed firmware.
    [[nodiscard]] QString firmwareVersion(QDBus::CallMode mode);
    /// hardwareVersion() -> s: the hardware's revision.
    [[nodiscard]] QString hardwareVersion(QDBus::CallMode mode);
    /// mode() -> s: the present device mode.
    [[nodiscard]] QString mode(QDBus::CallMode mode);
    /// acceptedStatsAgreement() -> s: the accepted agreement on statistics.
    [[nodiscard]] QString acceptedStatsAgreement(QDBus::CallMode mode);
    /// acceptedCrashAgreement() -> s: the accepted agreement on crash reports.
    [[nodiscard]] QString acceptedCrashAgreement(QDBus::CallMode mode);
    /// getLocale() -> s: the locale's name.
    [[nodiscard]] QString getLocale(QDBus::CallMode mode);
    /// getTimezoneId() -> s: the time zone's name.
    [[nodiscard]] QString getTimezoneId(QDBus::CallMode mode);
    /// firmwareUpdateStatus() -> s: how far an update has come.
    [[nodiscard]] QString firmwareUpdateStatus(QDBus::CallMode mode);
    /// autoSendCrashLogs() -> b: whether crash logs leave the device by themselves.
    [[nodiscard]] bool autoSendCrashLogs(QDBus::CallMode mode);
    /// startUpgrade() -> b: begins the pending firmware update; false when there is none.
    [[nodiscard]] bool startUpgrade(QDBus::CallMode mode);
    /// getTimezoneOffset() -> i: the offset from UTC, in the service's own unit.
    [[nodiscard]] int getTimezoneOffset(QDBus::CallMode mode);
    /// supportedDeviceModes() -> as: the modes to choose from; an error is logged.
    [[nodiscard]] QStringList supportedDeviceModes(QDBus::CallMode mode);
    /// softwareCapabilities() -> as: what the firmware can do; an error is logged.
    [[nodiscard]] QStringList softwareCapabilities(QDBus::CallMode mode);
    /// hardwareCapabilities() -> as: what the hardware can do; an error is logged.
    [[nodiscard]] QStringList hardwareCapabilities(QDBus::CallMode mode);
    /// state() -> ay: a JSON object; a missing key leaves its field empty.
    [[nodiscard]] DeviceState state(QDBus::CallMode mode);
    /// binCodes() -> a{sv}: the entries exactly as received, nothing inside them decoded.
    [[nodiscard]] QVariantMap binCodes(QDBus::CallMode mode);

    /// Signal modeChanged(s): the new mode.
    bool connectModeChanged(QObject *receiver, const char *slot);
    bool disconnectModeChanged(QObject *receiver, const char *slot);
    /// Signal nameChanged(s): the new name.
    bool connectNameChanged(QObject *receiver, const char *slot);
    bool disconnectNameChanged(QObject *receiver, const char *slot);
    /// Signal apiKeyDidSet(s): the new key; set-up is over.
    bool connectApiKeyDidSet(QObject *receiver, const char *slot);
    bool disconnectApiKeyDidSet(QObject *receiver, const char *slot);
    /// Signal daemonDidStart(): the service is up again.
    bool connectDaemonDidStart(QObject *receiver, const char *slot);
    bool disconnectDaemonDidStart(QObject *receiver, const char *slot);
    /// Signal logsCreated(s): where the logs lie.
    bool connectLogsCreated(QObject *receiver, const char *slot);
    bool disconnectLogsCreated(QObject *receiver, const char *slot);
    /// Signal archiveWithLogsAndCrashesCreate(s): where the archive lies.
    bool connectArchiveWithLogsAndCrashesCreate(QObject *receiver, const char *slot);
    bool disconnectArchiveWithLogsAndCrashesCreate(QObject *receiver, const char *slot);
    /// Signal timezoneOffsetChanged(i): the new offset.
    bool connectTimezoneOffsetChanged(QObject *receiver, const char *slot);
    bool disconnectTimezoneOffsetChanged(QObject *receiver, const char *slot);
    /// Signal localeChanged(s): the new locale.
    bool connectLocaleChanged(QObject *receiver, const char *slot);
    bool disconnectLocaleChanged(QObject *receiver, const char *slot);
    /// Signal timeZoneIdChanged(s): the new time zone.
    bool connectTimeZoneIdChanged(QObject *receiver, const char *slot);
    bool disconnectTimeZoneIdChanged(QObject *receiver, const char *slot);
    /// Signal dateTimeSynchronized(): the clock was set from the network.
    bool connectDateTimeSynchronized(QObject *receiver, const char *slot);
    bool disconnectDateTimeSynchronized(QObject *receiver, const char *slot);
    /// Signal userIdChanged(s): the new owner's id.
    bool connectUserIdChanged(QObject *receiver, const char *slot);
    bool disconnectUserIdChanged(QObject *receiver, const char *slot);
};

} // namespace Daemon
