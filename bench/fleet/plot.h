#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// Requests a second over time, as bars: those that were carried out, and above them those that failed.
struct Plot {
    struct Mark {
        int second;
        QString text;
    };

    QVector<int> done; ///< one number a second
    QVector<int> failed;
    QVector<Mark> marks;
    QString title;

    /// Counts a request that ended in that second.
    void count(int second, bool isDone);
    int largest() const;
    QByteArray svg() const;
};
