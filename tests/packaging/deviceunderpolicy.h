#pragma once

#include "devicesimulator.h"
#include "installedtree.h"
#include "qwixtdprocess.h"
#include "shellprelude.h"
#include "systembus.h"

#include <memory>

/// A device on the system bus, with the installed policy and the installed daemon, which runs as its own
/// user. It begins with an API key, the remote id "d9", the internet, the widgets "u1" and "u2", and at the
/// server the application "a1" of "u1". Root only.
class DeviceUnderPolicy
{
public:
    /// What the policies of the device's services say: who owns their names, here the test. They let nobody
    /// call them.
    static const QByteArray servicesRules;

    explicit DeviceUnderPolicy(const InstalledTree &installed);

    /// Starts all of it and waits until the daemon has its list.
    bool start();

    SystemBus &bus();
    DeviceSimulator &simulator();
    QwixtdProcess &program();

    /// Registers "u2" by a widget's call, made as @p user.
    SystemBus::Answer registerSecondWidget(SystemBus::User user) const;
    /// The server's requests so far, a line each, as "POST id=d9&identifier=u1".
    QByteArray requests() const;
    /// The daemon's signals so far, as "applicationRegistered u2 app-1 t".
    QStringList announced() const;

private:
    const QString policies;
    SystemBus systemBus;
    ShellPrelude asItsUser;
    QwixtdProcess process;
    std::unique_ptr<DeviceSimulator> device;
    QStringList announcements;
};
