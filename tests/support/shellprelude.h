#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A program of another program's name: a shell that runs some commands and then becomes that program. For
/// what a process can only be given by the one that starts it, such as a closed standard file.
class ShellPrelude
{
public:
    /// A failure to write the program ends the test program with the reason.
    ShellPrelude(const QString &program, const QByteArray &commands);

    QString path() const;

private:
    QTemporaryDir directory;
    QString script;
};
