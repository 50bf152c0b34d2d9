#pragma once

/// Gives the terminal back as it was when a signal ends or stops the program in the midst of editing a line,
/// and takes it again when the program goes on. One at a time.
class TerminalGuard
{
public:
    /// Remembers the terminal on standard input as it is now.
    TerminalGuard();
    ~TerminalGuard();
    TerminalGuard(const TerminalGuard &) = delete;
    TerminalGuard &operator=(const TerminalGuard &) = delete;
    TerminalGuard(TerminalGuard &&) = delete;
    TerminalGuard &operator=(TerminalGuard &&) = delete;
};
