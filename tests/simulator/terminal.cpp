#include "terminal.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace
{
constexpr char escape = 27;
} // namespace

Terminal::~Terminal()
{
    if (child > 0 && endStatus() < 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
    }
    if (master >= 0) {
        ::close(master);
    }
}

bool Terminal::start(const QString &program, const QStringList &arguments)
{
    QList<QByteArray> words{program.toLocal8Bit()};
    for (const QString &argument : arguments) {
        words.append(argument.toLocal8Bit());
    }
    std::vector<char *> pointers;
    for (QByteArray &word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const winsize size{24, columns, 0, 0};
    child = forkpty(&master, nullptr, nullptr, &size);
    if (child == 0) {
        ::setenv("TERM", "vt100", 1);
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    return child > 0;
}

void Terminal::type(const QByteArray &keys) const
{
    if (::write(master, keys.constData(), static_cast<size_t>(keys.size())) != keys.size()) {
        qWarning("cannot type into the terminal");
    }
}

void Terminal::sendSignal(int number) const
{
    ::kill(child, number);
}

QStringList Terminal::screen()
{
    readWhatIsThere();
    QStringList shown;
    for (int index = 0; index < rows.size(); ++index) {
        QByteArray text = rows.at(index);
        if (index == cursorRow) {
            text = text.leftJustified(cursorColumn, ' ').insert(cursorColumn, '|');
        }
        while (text.endsWith(' ')) {
            text.chop(1);
        }
        shown.append(QString::fromUtf8(text));
    }
    return shown;
}

QByteArray Terminal::notUnderstood() const
{
    return unknown;
}

bool Terminal::isAsAtFirst() const
{
    termios now{};
    return tcgetattr(master, &now) == 0 && (now.c_lflag & ECHO) != 0 && (now.c_lflag & ICANON) != 0;
}

int Terminal::endStatus()
{
    if (status < 0) {
        int state = 0;
        status = ::waitpid(child, &state, WNOHANG) == child ? state : -1;
    }
    return status;
}

void Terminal::readWhatIsThere()
{
    char buffer[4096];
    pollfd waiting{master, POLLIN, 0};
    while (::poll(&waiting, 1, 0) > 0 && (waiting.revents & POLLIN) != 0) {
        const ssize_t count = ::read(master, buffer, sizeof buffer);
        for (ssize_t index = 0; index < count; ++index) {
            draw(buffer[index]);
        }
    }
}

void Terminal::draw(char byte)
{
    const bool isControl = static_cast<unsigned char>(byte) < ' ';
    if (!pendingSequence.isEmpty()) {
        pendingSequence.append(byte);
        if (pendingSequence.size() > 2 && byte >= '@') {
            sequence(byte);
            pendingSequence.clear();
        }
    } else if (byte == escape) {
        pendingSequence = QByteArray(1, escape);
    } else if (isControl) {
        control(byte);
    } else {
        if (cursorColumn == columns) {
            control('\r');
            control('\n');
        }
        row().replace(cursorColumn, 1, QByteArray(1, byte));
        ++cursorColumn;
    }
}

void Terminal::control(char byte)
{
    switch (byte) {
    case '\r':
        cursorColumn = 0;
        break;
    case '\n':
        ++cursorRow;
        break;
    case '\b':
        cursorColumn = qMax(0, cursorColumn - 1);
        break;
    case '\a':
    case 0:  // padding
    case 15: // back to the usual letters
        break;
    default:
        unknown.append(byte);
        break;
    }
}

void Terminal::sequence(char last)
{
    const QByteArray digits = pendingSequence.mid(2, pendingSequence.size() - 3);
    const int count = qMax(1, digits.toInt());
    switch (last) {
    case 'A':
        cursorRow = qMax(0, cursorRow - count);
        break;
    case 'C':
        cursorColumn += count;
        break;
    case 'D':
        cursorColumn = qMax(0, cursorColumn - count);
        break;
    case 'J':
        rows = rows.mid(0, cursorRow + 1);
        row().truncate(cursorColumn);
        break;
    case 'K':
        row().truncate(cursorColumn);
        break;
    case 'm': // looks
        break;
    default:
        unknown.append(pendingSequence);
        break;
    }
}

// The cursor's row, as long as to reach the cursor.
QByteArray &Terminal::row()
{
    while (rows.size() <= cursorRow) {
        rows.append(QByteArray());
    }
    rows[cursorRow] = rows[cursorRow].leftJustified(cursorColumn, ' ');
    return rows[cursorRow];
}
