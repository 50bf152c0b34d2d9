// Tries what the daemon's sandbox has to refuse or hide, one attempt a word of its command line, and writes a
// line for each: the word and what came of it.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sched.h>
#include <string>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
int socketOf(int family)
{
    return ::socket(family, SOCK_RAW, 0);
}

int mapped(int protection)
{
    return ::mmap(nullptr, 4096, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED ? -1 : 0;
}

int madeExecutable()
{
    void *const memory = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return ::mprotect(memory, 4096, PROT_READ | PROT_EXEC);
}

int written(const char *path)
{
    return ::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
}
} // namespace

int main(int argc, char *argv[])
{
    const std::map<std::string, int (*)()> attempts = {
        {"netlink", [] { return socketOf(AF_NETLINK); }},
        {"packets", [] { return socketOf(AF_PACKET); }},
        {"internet", [] { return ::socket(AF_INET, SOCK_STREAM, 0); }},
        {"internet-6", [] { return ::socket(AF_INET6, SOCK_STREAM, 0); }},
        {"unix", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); }},
        {"write-and-execute", [] { return mapped(PROT_WRITE | PROT_EXEC); }},
        {"execute-later", madeExecutable},
        {"change-owner", [] { return ::chown("/tmp", ::geteuid(), ::getegid()); }},
        {"change-user", [] { return ::setuid(::geteuid()); }},
        {"trace", [] { return static_cast<int>(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); }},
        {"schedule",
         [] {
             const sched_param none = {};
             return ::sched_setscheduler(0, SCHED_OTHER, &none);
         }},
        {"write-root", [] { return written("/sandboxprobe"); }},
        {"write-etc", [] { return written("/etc/sandboxprobe"); }},
        {"write-tmp", [] { return written("/tmp/sandboxprobe"); }},
        {"kernel-settings", [] { return ::access("/proc/sys/kernel", F_OK); }},
        {"kernel-log", [] { return ::access("/dev/kmsg", F_OK); }},
    };
    for (int i = 1; i < argc; ++i) {
        errno = 0;
        const int result = attempts.at(argv[i])();
        std::printf("%s: %s\n", argv[i], result < 0 ? ::strerrorname_np(errno) : "done");
    }
    return 0;
}
