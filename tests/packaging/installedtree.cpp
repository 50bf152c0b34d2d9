#include "installedtree.h"

#include "buildundertest.h"

#include <QFile>

InstalledTree::InstalledTree()
{
    QString problem;
    BuildUnderTest::install(BuildUnderTest::directory(), QStringLiteral("qwixtd"), prefix.path(), &problem);
    const auto forAll = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                        QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    if (!problem.isEmpty() || !QFile::setPermissions(prefix.path(), forAll)) {
        qFatal("cannot install the daemon into %s: %s", qPrintable(prefix.path()), qPrintable(problem));
    }
}

QString InstalledTree::program() const
{
    return below(INSTALL_BINDIR "/qwixtd");
}

QString InstalledTree::busPolicies() const
{
    return below(INSTALL_DATADIR "/dbus-1/system.d");
}

QString InstalledTree::serviceUnit() const
{
    return below("lib/systemd/system/qwixtd.service");
}

QString InstalledTree::below(const char *path) const
{
    return prefix.filePath(QString::fromLatin1(path));
}
