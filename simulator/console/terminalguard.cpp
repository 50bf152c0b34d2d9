#include "terminalguard.h"

#include <cerrno>
#include <csignal>
#include <termios.h>
#include <unistd.h>

namespace
{
constexpr int guarded[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP};

termios asItWas{};

void install(int number);

// Only calls that a signal handler may make.
void giveBack(int number)
{
    const int errorBefore = errno;
    termios editing{};
    tcgetattr(STDIN_FILENO, &editing);
    tcsetattr(STDIN_FILENO, TCSANOW, &asItWas);
    // The handler is gone by now: this does what the signal does by itself.
    raise(number);
    // Only a program that was stopped, and goes on, comes here.
    tcsetattr(STDIN_FILENO, TCSANOW, &editing);
    install(number);
    errno = errorBefore;
}

void install(int number)
{
    struct sigaction action = {};
    action.sa_handler = giveBack;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER | SA_RESTART;
    sigaction(number, &action, nullptr);
}
} // namespace

TerminalGuard::TerminalGuard()
{
    tcgetattr(STDIN_FILENO, &asItWas);
    for (const int number : guarded) {
        install(number);
    }
}

TerminalGuard::~TerminalGuard()
{
    for (const int number : guarded) {
        std::signal(number, SIG_DFL);
    }
    tcsetattr(STDIN_FILENO, TCSANOW, &asItWas);
}
