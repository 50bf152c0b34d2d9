#include "journal.h"

namespace
{
constexpr int longestLine = 400;
}

Journal::Journal(const QString &path)
    : file(path)
{
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qPrintable(path));
    }
    elapsed.start();
}

void Journal::note(const QString &line)
{
    const QString shown =
        line.size() <= longestLine
            ? line
            : line.left(longestLine) + QStringLiteral("... (%1 characters)").arg(line.size());
    file.write(QStringLiteral("%1 %2\n")
                   .arg(static_cast<double>(elapsed.elapsed()) / 1000, 9, 'f', 3)
                   .arg(shown)
                   .toUtf8());
    file.flush();
}
