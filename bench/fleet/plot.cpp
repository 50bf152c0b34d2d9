#include "plot.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double left = 60;
constexpr double top = 50;
constexpr double width = 820;
constexpr double height = 260;
constexpr int tickSeconds = 5;
constexpr int lines = 4;

const char *const doneColour = "#2f7d4f";
const char *const failedColour = "#c0562b";

QString text(double x, double y, const QString &words, const char *anchor = "start")
{
    return QStringLiteral("<text x=\"%1\" y=\"%2\" text-anchor=\"%3\">%4</text>\n")
        .arg(x, 0, 'f', 1)
        .arg(y, 0, 'f', 1)
        .arg(QLatin1String(anchor), words.toHtmlEscaped());
}

QString box(double x, double y, double boxWidth, double boxHeight, const char *colour)
{
    return QStringLiteral("<rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" fill=\"%5\"/>\n")
        .arg(x, 0, 'f', 1)
        .arg(y, 0, 'f', 1)
        .arg(boxWidth, 0, 'f', 1)
        .arg(boxHeight, 0, 'f', 1)
        .arg(QLatin1String(colour));
}

QString line(double x1, double y1, double x2, double y2, const char *style)
{
    return QStringLiteral("<line x1=\"%1\" y1=\"%2\" x2=\"%3\" y2=\"%4\" %5/>\n")
        .arg(x1, 0, 'f', 1)
        .arg(y1, 0, 'f', 1)
        .arg(x2, 0, 'f', 1)
        .arg(y2, 0, 'f', 1)
        .arg(QLatin1String(style));
}

/// The number at the top of the scale: a round one that is not below @p largest.
int roundedUp(int largest)
{
    const double size = std::pow(10.0, std::floor(std::log10(std::max(largest, 1))));
    for (const double step : {1.0, 2.0, 4.0, 6.0, 8.0, 10.0}) {
        if (step * size >= largest) {
            return static_cast<int>(std::max(step * size, static_cast<double>(lines)));
        }
    }
    return largest;
}

QString scale(int seconds, int highest)
{
    QString drawn;
    for (int i = 0; i <= lines; ++i) {
        const double y = top + height - height * i / lines;
        drawn += line(left, y, left + width, y, "stroke=\"#ddd\"");
        drawn += text(left - 6, y + 4, QString::number(highest * i / lines), "end");
    }
    for (int second = 0; second <= seconds; second += tickSeconds) {
        drawn += text(left + width * second / seconds, top + height + 18, QString::number(second), "middle");
    }
    return drawn + text(left + width / 2, top + height + 38, QStringLiteral("seconds"), "middle");
}

QString legend()
{
    const double y = top + height + 28;
    return box(left, y, 10, 10, doneColour) + text(left + 15, y + 10, QStringLiteral("carried out")) +
           box(left + 100, y, 10, 10, failedColour) + text(left + 115, y + 10, QStringLiteral("failed"));
}
} // namespace

void Plot::count(int second, bool isDone)
{
    if (second >= done.size()) {
        done.resize(second + 1);
        failed.resize(second + 1);
    }
    ++(isDone ? done : failed)[second];
}

int Plot::largest() const
{
    int most = 0;
    for (int i = 0; i < done.size(); ++i) {
        most = std::max(most, done.at(i) + failed.at(i));
    }
    return most;
}

QByteArray Plot::svg() const
{
    const int seconds = std::max(static_cast<int>(done.size()), 1);
    const int highest = roundedUp(largest());
    const double bar = width / seconds;
    QString drawn = QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 920 360\" "
                                   "font-family=\"sans-serif\" font-size=\"12\">\n");
    drawn += box(0, 0, 920, 360, "#fff") + text(left, 20, title) + scale(seconds, highest);
    for (int i = 0; i < done.size(); ++i) {
        const double doneHeight = height * done.at(i) / highest;
        const double failedHeight = height * failed.at(i) / highest;
        const double x = left + bar * i;
        drawn += box(x, top + height - doneHeight, bar * 0.9, doneHeight, doneColour);
        drawn += box(x, top + height - doneHeight - failedHeight, bar * 0.9, failedHeight, failedColour);
    }
    for (const Mark &mark : marks) {
        const double x = left + bar * mark.second;
        drawn += line(x, top - 8, x, top + height, "stroke=\"#555\" stroke-dasharray=\"4 3\"");
        drawn += text(x + 4, top - 2, mark.text);
    }
    return (drawn + legend() + QStringLiteral("</svg>\n")).toUtf8();
}
