#include "console.h"

#include <cstdio>

#include <unistd.h>

Console::Console(QObject *parent)
    : QObject(parent)
{
}

void Console::print(const QString &text)
{
    if (editor) {
        editor->printAbove(text);
        return;
    }
    std::printf("%s\n", text.toUtf8().constData());
    std::fflush(stdout);
}

void Console::startReading()
{
    if (isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) {
        editor = std::make_unique<LineEditor>();
        connect(editor.get(), &LineEditor::lineRead, this, &Console::lineRead);
        connect(editor.get(), &LineEditor::ended, this, &Console::ended);
    } else {
        input = std::make_unique<CommandInput>(STDIN_FILENO);
        connect(input.get(), &CommandInput::lineRead, this, &Console::lineRead);
        connect(input.get(), &CommandInput::ended, this, &Console::ended);
    }
}

void Console::stopReading()
{
    editor.reset();
    input.reset();
}
