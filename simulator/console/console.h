#pragma once

#include "commandinput.h"
#include "lineeditor.h"

#include <QObject>

#include <memory>

/// Where a person or a script types commands and reads what happens: a terminal with a line editor, or plain
/// standard input and output.
class Console : public QObject
{
    Q_OBJECT
public:
    explicit Console(QObject *parent = nullptr);

    /// Writes @p text and a line end to standard output at once. What is being typed stays whole below it.
    void print(const QString &text);

    /// Begins to read commands; on a terminal, with a prompt.
    void startReading();
    /// Reads no more, and gives the terminal back as it was.
    void stopReading();

Q_SIGNALS:
    void lineRead(const QString &line);
    /// Nothing more comes.
    void ended();

private:
    std::unique_ptr<LineEditor> editor;
    std::unique_ptr<CommandInput> input;
};
