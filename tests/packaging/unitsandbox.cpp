#include "unitsandbox.h"

#include "buildundertest.h"
#include "serviceunit.h"

#include <QMap>
#include <QSet>

#include <seccomp.h>

#include <cerrno>
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
const auto yes = QStringList{QStringLiteral("yes")};

QStringList linesOfGroup(const QString &group)
{
    QString problem;
    const QByteArray listing = BuildUnderTest::run(QStringLiteral("systemd-analyze"),
                                                   {QStringLiteral("syscall-filter"), group}, &problem);
    if (!problem.isEmpty()) {
        qFatal("%s", qPrintable(problem));
    }
    QStringList names;
    const QStringList lines = QString::fromUtf8(listing).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        // The members are indented, and so are remarks.
        const QString word = line.trimmed();
        if (line.startsWith(QLatin1Char(' ')) && !word.isEmpty() && !word.startsWith(QLatin1Char('#'))) {
            names.append(word);
        }
    }
    return names;
}

// The names of system calls behind a list of names and groups.
QSet<QString> callsOf(const QStringList &names)
{
    QSet<QString> calls;
    for (const QString &name : names) {
        if (name.startsWith(QLatin1Char('@'))) {
            calls += callsOf(linesOfGroup(name));
        } else {
            calls.insert(name);
        }
    }
    return calls;
}

void check(int result, const char *what, const QString &name)
{
    if (result < 0) {
        qFatal("cannot %s %s: %s", what, qPrintable(name), qPrintable(qt_error_string(-result)));
    }
}
} // namespace

UnitSandbox::UnitSandbox(const ServiceUnit &unit, const QStringList &visible)
{
    addFileSystem(unit, visible);
    if (unit.has(QStringLiteral("Service/CapabilityBoundingSet")) &&
        unit.words(QStringLiteral("Service/CapabilityBoundingSet")).isEmpty()) {
        words += {QStringLiteral("--cap-drop"), QStringLiteral("ALL")};
    }
    if (unit.has(QStringLiteral("Service/SystemCallFilter"))) {
        addCallFilter(unit);
    }
    if (unit.has(QStringLiteral("Service/RestrictAddressFamilies"))) {
        addFamilyFilter(unit);
    }
    if (unit.words(QStringLiteral("Service/MemoryDenyWriteExecute")) == yes) {
        addMemoryFilter();
    }
}

UnitSandbox::~UnitSandbox()
{
    for (const int descriptor : descriptors) {
        ::close(descriptor);
    }
}

QStringList UnitSandbox::arguments() const
{
    return words;
}

void UnitSandbox::addFileSystem(const ServiceUnit &unit, const QStringList &visible)
{
    if (unit.words(QStringLiteral("Service/ProtectSystem")) == QStringList{QStringLiteral("strict")}) {
        words += {QStringLiteral("--ro-bind"), QStringLiteral("/"), QStringLiteral("/")};
    }
    if (unit.words(QStringLiteral("Service/PrivateDevices")) == yes) {
        words += {QStringLiteral("--dev"), QStringLiteral("/dev")};
    }
    QStringList hidden;
    if (unit.words(QStringLiteral("Service/PrivateTmp")) == yes) {
        hidden += {QStringLiteral("/tmp"), QStringLiteral("/var/tmp")};
    }
    if (unit.words(QStringLiteral("Service/ProtectHome")) == yes) {
        hidden += {QStringLiteral("/home"), QStringLiteral("/root"), QStringLiteral("/run/user")};
    }
    if (unit.words(QStringLiteral("Service/ProcSubset")) == QStringList{QStringLiteral("pid")}) {
        hidden += {QStringLiteral("/proc/sys")};
    }
    for (const QString &directory : std::as_const(hidden)) {
        if (::access(directory.toLocal8Bit().constData(), F_OK) == 0) {
            words += {QStringLiteral("--tmpfs"), directory};
        }
    }
    for (const QString &path : visible) {
        words += {QStringLiteral("--ro-bind"), path, path};
    }
}

void UnitSandbox::addCallFilter(const ServiceUnit &unit)
{
    const QStringList names = unit.words(QStringLiteral("Service/SystemCallFilter"));
    const Filter filter = seccomp_init(SCMP_ACT_ERRNO(EPERM));
    // The service manager lets what every process needs through unasked.
    const QSet<QString> calls = callsOf(names + QStringList{QStringLiteral("@default")});
    for (const QString &name : calls) {
        const int number = seccomp_syscall_resolve_name(name.toLatin1().constData());
        if (number == __NR_SCMP_ERROR && !names.contains(name)) {
            continue; // newer than this libseccomp
        }
        check(number == __NR_SCMP_ERROR ? -EINVAL : 0, "find the system call", name);
        const int result = seccomp_rule_add(filter, SCMP_ACT_ALLOW, number, 0);
        check(result == -EDOM ? 0 : result, "allow the system call", name); // not of this processor
    }
    add(filter);
}

void UnitSandbox::addFamilyFilter(const ServiceUnit &unit)
{
    const QMap<QString, int> families = {{QStringLiteral("AF_UNIX"), AF_UNIX},
                                         {QStringLiteral("AF_INET"), AF_INET},
                                         {QStringLiteral("AF_INET6"), AF_INET6},
                                         {QStringLiteral("AF_NETLINK"), AF_NETLINK}};
    QSet<int> allowed;
    const QStringList names = unit.words(QStringLiteral("Service/RestrictAddressFamilies"));
    for (const QString &name : names) {
        check(families.contains(name) ? 0 : -EINVAL, "find the address family", name);
        allowed.insert(families.value(name));
    }
    const Filter filter = seccomp_init(SCMP_ACT_ALLOW);
    for (int family = 0; family < AF_MAX; ++family) {
        if (!allowed.contains(family)) {
            const scmp_arg_cmp isThat = SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(family));
            check(seccomp_rule_add(filter, SCMP_ACT_ERRNO(EAFNOSUPPORT), SCMP_SYS(socket), 1, isThat),
                  "refuse the address family", QString::number(family));
        }
    }
    add(filter);
}

// Memory is never writable and executable: neither at once nor one after the other.
void UnitSandbox::addMemoryFilter()
{
    const Filter filter = seccomp_init(SCMP_ACT_ALLOW);
    const auto refuse = [filter](int call, const scmp_arg_cmp &argument) {
        check(seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), call, 1, argument), "refuse the system call",
              QString::number(call));
    };
    refuse(SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_WRITE | PROT_EXEC, PROT_WRITE | PROT_EXEC));
    refuse(SCMP_SYS(mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, PROT_EXEC));
    refuse(SCMP_SYS(pkey_mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, PROT_EXEC));
    refuse(SCMP_SYS(shmat), SCMP_A2(SCMP_CMP_MASKED_EQ, SHM_EXEC, SHM_EXEC));
    add(filter);
}

void UnitSandbox::add(Filter filter)
{
    const int descriptor = ::memfd_create("filter", 0); // for the child to inherit
    check(descriptor < 0 ? -errno : 0, "make a file for", QStringLiteral("a filter"));
    check(seccomp_export_bpf(filter, descriptor), "write a filter to descriptor",
          QString::number(descriptor));
    ::lseek(descriptor, 0, SEEK_SET);
    seccomp_release(filter);
    words += {QStringLiteral("--add-seccomp-fd"), QString::number(descriptor)};
    descriptors.push_back(descriptor);
}
