#include "lineeditor.h"

#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
constexpr int linesRemembered = 200;
constexpr char endOfInput = 4;
char prompt[] = "device> ";

char *promptOf(EditLine * /*editor*/)
{
    return prompt;
}
} // namespace

LineEditor::LineEditor(QObject *parent)
    : QObject(parent)
    , editor(el_init("qwixt-devicesim", stdin, stdout, stderr), &el_end)
    , past(history_init(), &history_end)
    , notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    HistEvent event{};
    history(past.get(), &event, H_SETSIZE, linesRemembered);
    el_set(editor.get(), EL_PROMPT, &promptOf);
    el_set(editor.get(), EL_EDITOR, "emacs");
    el_set(editor.get(), EL_HIST, &history, past.get());
    // From here on el_gets() takes one key and returns; this draws the prompt, too.
    el_set(editor.get(), EL_UNBUFFERED, 1);
    isShown = true;
    connect(&notifier, &QSocketNotifier::activated, this, [this] { readKey(); });
}

LineEditor::~LineEditor()
{
    hide();
}

void LineEditor::printAbove(const QString &text)
{
    const bool wasShown = isShown;
    hide();
    std::printf("%s\n", text.toUtf8().constData());
    std::fflush(stdout);
    if (wasShown) {
        show();
    }
}

void LineEditor::hide()
{
    if (!isShown) {
        return;
    }
    isShown = false;
    const int rows = rowsAboveCursor();
    if (rows > 0) {
        std::printf("\033[%dA", rows);
    }
    std::fputs("\r\033[J", stdout);
    std::fflush(stdout);
}

void LineEditor::show()
{
    el_resize(editor.get());
    el_set(editor.get(), EL_REFRESH);
    isShown = true;
}

void LineEditor::readKey()
{
    int count = 0;
    const char *const text = el_gets(editor.get(), &count);
    if (text == nullptr || count <= 0) {
        // Nothing is typed, or nothing can be.
        if (isTerminalGone()) {
            notifier.setEnabled(false);
            Q_EMIT ended();
        }
        return;
    }
    const QByteArray typed(text, count);
    if (typed == QByteArray(1, endOfInput)) {
        notifier.setEnabled(false);
        hide();
        Q_EMIT ended();
    } else if (typed.endsWith('\n')) {
        finishLine(typed.left(count - 1));
    }
}

void LineEditor::finishLine(const QByteArray &line)
{
    isShown = false;
    if (!line.trimmed().isEmpty()) {
        HistEvent event{};
        history(past.get(), &event, H_ENTER, line.constData());
    }
    // Off and on again: the editor begins a new line.
    el_set(editor.get(), EL_UNBUFFERED, 0);
    Q_EMIT lineRead(QString::fromUtf8(line));
    el_set(editor.get(), EL_UNBUFFERED, 1);
    isShown = true;
}

int LineEditor::rowsAboveCursor() const
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return 0;
    }
    const LineInfo *const line = el_line(editor.get());
    const QString before = QString::fromUtf8(line->buffer, static_cast<int>(line->cursor - line->buffer));
    const auto columns = static_cast<int>(std::strlen(prompt)) + static_cast<int>(before.size());
    return columns / size.ws_col;
}

bool LineEditor::isTerminalGone() const
{
    pollfd terminal{STDIN_FILENO, POLLIN, 0};
    return ::poll(&terminal, 1, 0) > 0 && (terminal.revents & (POLLHUP | POLLERR)) != 0;
}
