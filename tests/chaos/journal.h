#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QString>

/// The readable log of a run: one line for each thing that happened, after the seconds since its beginning.
class Journal
{
public:
    explicit Journal(const QString &path);

    /// Long lines are cut in the middle of nowhere: a megabyte is no reading.
    void note(const QString &line);

private:
    QFile file;
    QElapsedTimer elapsed;
};
