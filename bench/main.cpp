// qwixtd_bench [--smoke] [--json FILE] [GROUP...]: takes the figures of the daemon, each beside its floor,
// and prints a table; FILE may be "-" for JSON in its place. Ends with 1 when a figure cannot be taken; a
// target that is not met is no failure. tools/bench.sh runs it.

#include "figures.h"
#include "measures.h"
#include "report.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace
{
struct Group {
    const char *name;
    QVector<Row> (*take)(const Scale &);
};

const Group groups[] = {
    {"drain", Figures::drain},        {"long-drain", Figures::longDrain}, {"waiting", Figures::waitingQueue},
    {"bus-calls", Figures::busCalls}, {"start", Figures::start},          {"memory", Figures::memory},
    {"idle", Figures::idle},          {"size", Figures::programSize},     {"list", Figures::list},
    {"proxies", Figures::proxies},
};

void say(const QString &text)
{
    std::fputs(qPrintable(text), stdout);
    std::fflush(stdout);
}

/// The groups of these names, or all when there is no name.
QVector<Group> chosen(const QStringList &names)
{
    QVector<Group> all;
    QStringList known;
    for (const Group &group : groups) {
        known.append(QString::fromLatin1(group.name));
        if (names.isEmpty() || names.contains(known.last())) {
            all.append(group);
        }
    }
    for (const QString &name : names) {
        require(known.contains(name), QStringLiteral("there is no group \"%1\"; there are: %2")
                                          .arg(name, known.join(QStringLiteral(", "))));
    }
    return all;
}

void writeReport(const QVector<Row> &rows, bool isJudged, const QString &path)
{
    if (path != QStringLiteral("-")) {
        say(Report::table(rows, isJudged));
    }
    if (path.isEmpty()) {
        return;
    }
    QFile file(path);
    const bool isOpen = path == QStringLiteral("-") ? file.open(stdout, QIODevice::WriteOnly)
                                                    : file.open(QIODevice::WriteOnly);
    require(isOpen, QStringLiteral("%1 cannot be written").arg(path));
    file.write(Report::json(rows, isJudged));
}

void run(const QCommandLineParser &parser)
{
    const bool isSmoke = parser.isSet(QStringLiteral("smoke"));
    const Scale scale = isSmoke ? Scale::smoke() : Scale::full();
    QVector<Row> rows;
    const QVector<Group> all = chosen(parser.positionalArguments());
    for (const Group &group : all) {
        std::fprintf(stderr, "bench: %s\n", group.name);
        rows += group.take(scale);
    }
    writeReport(rows, !isSmoke, parser.value(QStringLiteral("json")));
}
} // namespace

Scale Scale::full()
{
    Scale scale;
    scale.rounds = 8;
    scale.drainRequests = 250;
    scale.shortQueue = 90; // from 100 on the daemon also gives memory back, a second after the end
    scale.longQueue = 10000;
    scale.batch = 200;
    scale.busCalls = 2000;
    scale.listed = 5000;
    scale.starts = 30;
    scale.pollMs = 1500;
    scale.idleMs = 60000;
    return scale;
}

Scale Scale::smoke()
{
    Scale scale;
    scale.rounds = 1;
    scale.drainRequests = 5;
    scale.shortQueue = 5;
    scale.longQueue = 200;
    scale.batch = 20;
    scale.busCalls = 20;
    scale.listed = 100;
    scale.starts = 2;
    scale.pollMs = 200;
    scale.idleMs = 1000;
    return scale;
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("smoke"), QStringLiteral("Small numbers, and no target is judged.")});
    parser.addOption({QStringLiteral("json"),
                      QStringLiteral("Where the figures go as JSON; - is standard output."),
                      QStringLiteral("FILE")});
    parser.addPositionalArgument(QStringLiteral("GROUP"), QStringLiteral("Take these alone."),
                                 QStringLiteral("[GROUP...]"));
    parser.process(application);
    try {
        run(parser);
    } catch (const CannotMeasure &failure) {
        std::fprintf(stderr, "bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
