// The real daemon on a real bus and behind a real web server, in a storm of everything that can go wrong.

#include "course.h"
#include "world.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRandomGenerator>

#include <cstdio>

namespace
{
struct Options {
    int seconds;
    quint32 seed;
    QString directory;
};

Options readOptions(const QCoreApplication &application)
{
    const auto seconds = QStringLiteral("seconds");
    const auto seed = QStringLiteral("seed");
    const auto directory = QStringLiteral("directory");
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Runs the daemon in chaos, and checks what came of it."));
    parser.addHelpOption();
    parser.addOptions(
        {{seconds, QStringLiteral("About how long."), QStringLiteral("n"), QStringLiteral("60")},
         {seed, QStringLiteral("Of what happens; random unless given."), QStringLiteral("n"),
          QStringLiteral("0")},
         {directory, QStringLiteral("An empty directory for the logs."), QStringLiteral("path"),
          QStringLiteral(".")}});
    parser.process(application);
    const quint32 given = parser.value(seed).toUInt();
    return {parser.value(seconds).toInt(),
            given != 0 ? given : QRandomGenerator::system()->bounded(1U, 1000000U), parser.value(directory)};
}
} // namespace

int main(int argc, char *argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const QCoreApplication application(argc, argv);
    const Options options = readOptions(application);
    std::printf("chaos for %d s, seed %u\n", options.seconds, options.seed);

    World world(QStringLiteral(QWIXTD_PROGRAM), QDir(options.directory));
    if (!world.start()) {
        std::puts("there is no device to try");
        return 2;
    }
    Course course(world, options.seed);
    const QStringList wrong = course.run(options.seconds);
    for (const QString &line : wrong) {
        world.note(QStringLiteral("WRONG   ") + line);
        std::printf("wrong: %s\n", qPrintable(line));
    }
    std::printf("%s\n", qPrintable(course.summary()));
    return wrong.isEmpty() ? 0 : 1;
}
