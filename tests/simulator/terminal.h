#pragma once

#include <QByteArray>
#include <QStringList>

#include <sys/types.h>

/// A terminal of 80 columns with a program on it: what a person types goes in, and what they see comes out.
class Terminal
{
public:
    static constexpr int columns = 80;

    Terminal() = default;
    /// Ends the program if it still runs.
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;
    Terminal(Terminal &&) = delete;
    Terminal &operator=(Terminal &&) = delete;

    bool start(const QString &program, const QStringList &arguments);
    void type(const QByteArray &keys) const;
    void sendSignal(int number) const;

    /// The rows on the screen now, without spaces at their ends; the last one is the cursor's, "|" stands for
    /// it.
    QStringList screen();
    /// Sequences that this terminal does not know; a screen is right only while there are none.
    QByteArray notUnderstood() const;
    /// Whether the terminal echoes and collects lines by itself, as it does for a shell.
    bool isAsAtFirst() const;
    /// The status of waitpid() once the program has ended; -1 before.
    int endStatus();

private:
    void readWhatIsThere();
    void draw(char byte);
    void control(char byte);
    void sequence(char last);
    QByteArray &row();

    int master = -1;
    pid_t child = -1;
    int status = -1;
    QList<QByteArray> rows{QByteArray()};
    int cursorRow = 0;
    int cursorColumn = 0;
    QByteArray pendingSequence;
    QByteArray unknown;
};
