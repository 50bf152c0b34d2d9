#include "report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QSysInfo>
#include <QThread>

namespace
{
const auto nothing = QStringLiteral("-");
constexpr double leastRatio = 0.8; // what noise alone explains

QString number(double value)
{
    return QString::number(value, 'f', value < 10 ? 2 : value < 100 ? 1 : 0);
}

QString withUnit(const std::optional<double> &value, const QString &unit)
{
    return value ? QStringLiteral("%1 %2").arg(number(*value), unit).trimmed() : nothing;
}

QString targetOf(const Row &row)
{
    if (!row.target) {
        return nothing;
    }
    const QString unit = row.judged == Row::Judged::Ratio ? QString() : row.unit;
    return QStringLiteral("<= ") + withUnit(row.target, unit);
}

QString verdict(const Row &row)
{
    if (row.isDisturbed()) {
        return QStringLiteral("disturbed");
    }
    const std::optional<bool> met = row.isMet();
    if (!met) {
        return nothing;
    }
    return *met ? QStringLiteral("yes") : QStringLiteral("NO");
}

QStringList cells(const Row &row, bool isJudged)
{
    QStringList all = {row.figure, withUnit(row.floor, row.unit), withUnit(row.value, row.unit),
                       withUnit(row.ratio(), QString())};
    if (isJudged) {
        all << targetOf(row) << verdict(row);
    }
    return all;
}

QJsonValue jsonOf(const std::optional<double> &value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

QJsonObject jsonOf(const Row &row, bool isJudged)
{
    QJsonObject object = {{QStringLiteral("figure"), row.figure},
                          {QStringLiteral("unit"), row.unit},
                          {QStringLiteral("value"), row.value},
                          {QStringLiteral("floor"), jsonOf(row.floor)},
                          {QStringLiteral("ratio"), jsonOf(row.ratio())}};
    if (isJudged) {
        const std::optional<bool> met = row.isMet();
        const bool isRatio = row.judged == Row::Judged::Ratio;
        object.insert(QStringLiteral("target"), jsonOf(row.target));
        object.insert(QStringLiteral("judged"), isRatio ? QStringLiteral("ratio") : QStringLiteral("value"));
        object.insert(QStringLiteral("met"), met ? QJsonValue(*met) : QJsonValue());
        object.insert(QStringLiteral("disturbed"), row.isDisturbed());
    }
    return object;
}
} // namespace

std::optional<double> Row::ratio() const
{
    return floor && *floor > 0 ? std::optional<double>(value / *floor) : std::nullopt;
}

bool Row::isDisturbed() const
{
    const std::optional<double> measured = ratio();
    return judged == Judged::Ratio && target && measured && *measured < leastRatio;
}

std::optional<bool> Row::isMet() const
{
    const std::optional<double> measured = judged == Judged::Ratio ? ratio() : value;
    return target && measured && !isDisturbed() ? std::optional<bool>(*measured <= *target) : std::nullopt;
}

QString Report::table(const QVector<Row> &rows, bool isJudged)
{
    QVector<QStringList> lines = {{QStringLiteral("figure"), QStringLiteral("floor"),
                                   QStringLiteral("measured"), QStringLiteral("ratio")}};
    if (isJudged) {
        lines.first() << QStringLiteral("target") << QStringLiteral("met");
    }
    for (const Row &row : rows) {
        lines.append(cells(row, isJudged));
    }
    QVector<int> widths(lines.first().size());
    for (const QStringList &line : std::as_const(lines)) {
        for (int i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths.at(i), static_cast<int>(line.at(i).size()));
        }
    }
    QString text;
    for (const QStringList &line : std::as_const(lines)) {
        QString shown = line.first().leftJustified(widths.first());
        for (int i = 1; i < widths.size(); ++i) {
            shown += QStringLiteral("  ") + line.at(i).rightJustified(widths.at(i));
        }
        text += shown + QLatin1Char('\n');
    }
    return text;
}

QByteArray Report::json(const QVector<Row> &rows, bool isJudged)
{
    QJsonArray array;
    for (const Row &row : rows) {
        array.append(jsonOf(row, isJudged));
    }
    const QJsonObject machine = {{QStringLiteral("architecture"), QSysInfo::currentCpuArchitecture()},
                                 {QStringLiteral("processors"), QThread::idealThreadCount()},
                                 {QStringLiteral("system"), QSysInfo::prettyProductName()},
                                 {QStringLiteral("qt"), QString::fromLatin1(qVersion())}};
    const QJsonObject report = {{QStringLiteral("machine"), machine}, {QStringLiteral("rows"), array}};
    return QJsonDocument(report).toJson();
}
