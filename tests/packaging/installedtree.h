#pragma once

#include <QString>
#include <QTemporaryDir>

/// What the daemon's component installs, in a temporary directory that every user may read.
class InstalledTree
{
public:
    /// Installs from the build under test. A failure ends the test program with the reason.
    InstalledTree();

    /// The daemon.
    QString program() const;
    /// The directory of the bus policy.
    QString busPolicies() const;
    QString serviceUnit() const;

private:
    QString below(const char *path) const;

    QTemporaryDir prefix;
};
