#pragma once

#include "terminalguard.h"

#include <QObject>
#include <QSocketNotifier>

#include <histedit.h>
#include <memory>

/// The line that a person types on the terminal of standard input and output, with its prompt, editing keys
/// and history.
class LineEditor : public QObject
{
    Q_OBJECT
public:
    explicit LineEditor(QObject *parent = nullptr);
    ~LineEditor() override;

    /// Writes @p text and a line end to the terminal. Prompt and typed text step aside and are drawn again
    /// below.
    void printAbove(const QString &text);

Q_SIGNALS:
    /// A line was typed to its end; the prompt is off the screen.
    void lineRead(const QString &line);
    /// End of input (Ctrl-D on an empty line), or the terminal is gone.
    void ended();

private:
    using Editor = std::unique_ptr<EditLine, decltype(&el_end)>;
    using Past = std::unique_ptr<History, decltype(&history_end)>;

    void hide();
    void show();
    void readKey();
    void finishLine(const QByteArray &line);
    int rowsAboveCursor() const;
    bool isTerminalGone() const;

    const TerminalGuard guard;
    Editor editor;
    Past past;
    QSocketNotifier notifier;
    bool isShown = false;
};
