#include "shellprelude.h"

#include <QFile>
#include <QFileInfo>

ShellPrelude::ShellPrelude(const QString &program, const QByteArray &commands)
    : script(directory.filePath(QFileInfo(program).fileName()))
{
    QFile file(script);
    const QByteArray text = "#!/bin/sh\n" + commands + "\nexec '" + program.toLocal8Bit() + "'\n";
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
                           file.flush() &&
                           file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (!isWritten) {
        qFatal("cannot write %s: %s", qPrintable(script), qPrintable(file.errorString()));
    }
}

QString ShellPrelude::path() const
{
    return script;
}
