#pragma once

#include <QStringList>

#include <vector>

class ServiceUnit;

/// The restrictions of a service unit as arguments of bubblewrap: no capabilities, a file system to read
/// only, directories of its own in place of /tmp and the homes, no devices, and filters of system calls that
/// are made from the unit's lists. Restrictions that the unit does not ask for are left out.
class UnitSandbox
{
public:
    /// @p visible are the files and directories that stay visible for reading wherever they are. A name in
    /// the unit that systemd or the kernel does not know ends the test program with the reason.
    UnitSandbox(const ServiceUnit &unit, const QStringList &visible);
    ~UnitSandbox();
    Q_DISABLE_COPY(UnitSandbox)

    /// Good for one start of bubblewrap, as a child of this process and while this object lives.
    QStringList arguments() const;

private:
    using Filter = void *; // libseccomp's scmp_filter_ctx

    void addFileSystem(const ServiceUnit &unit, const QStringList &visible);
    void addCallFilter(const ServiceUnit &unit);
    void addFamilyFilter(const ServiceUnit &unit);
    void addMemoryFilter();
    void add(Filter filter);

    QStringList words;
    std::vector<int> descriptors; // of the filters, as files without a name
};
