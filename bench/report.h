#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

/// One line of the table: a figure, and beside it the floor, which is what the libraries underneath cost
/// alone.
struct Row {
    enum class Judged {
        Value, ///< the target is in the figure's unit
        Ratio  ///< the target is the figure divided by its floor
    };

    QString figure;
    QString unit;
    double value = 0;
    std::optional<double> floor;
    std::optional<double> target;
    Judged judged = Judged::Ratio;

    /// Nothing without a floor above 0.
    std::optional<double> ratio() const;
    /// Whether the ratio by which it is judged is so far below 1 that something else slowed the floor down:
    /// the floor is a part of what is measured.
    bool isDisturbed() const;
    /// Nothing without a target, or when it is disturbed.
    std::optional<bool> isMet() const;
};

namespace Report
{

/// @p isJudged false leaves targets out.
QString table(const QVector<Row> &rows, bool isJudged);
/// An object with the machine and the rows.
QByteArray json(const QVector<Row> &rows, bool isJudged);

} // namespace Report
