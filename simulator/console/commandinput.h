#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

/// Reads lines from a file descriptor as they come, without ever waiting for one.
class CommandInput : public QObject
{
    Q_OBJECT
public:
    explicit CommandInput(int descriptor, QObject *parent = nullptr);

Q_SIGNALS:
    void lineRead(const QString &line);
    /// Nothing more comes. A last line without a line end has been reported before.
    void ended();

private:
    void readWhatIsThere();

    const int descriptor;
    QSocketNotifier notifier;
    QByteArray partialLine;
};
