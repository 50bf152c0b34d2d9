#include "buildundertest.h"

#include <QDir>
#include <QDirIterator>
#include <QProcess>

namespace BuildUnderTest
{

namespace
{

constexpr int timeoutMs = 280000;
const QString cmake = QStringLiteral(CMAKE_PROGRAM);

} // namespace

QByteArray run(const QString &program, const QStringList &arguments, QString *problem,
               const QStringList &environment)
{
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment() + environment);
    process.start(program, arguments);
    const bool finished = process.waitForFinished(timeoutMs);
    const QByteArray output = process.readAllStandardOutput();
    if (!finished || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        *problem = program + QStringLiteral(" failed: ") + process.errorString() + QLatin1Char('\n') +
                   QString::fromLocal8Bit(output + process.readAllStandardError());
    }
    return output;
}

void configure(const QString &source, const QString &build, const QStringList &options, QString *problem)
{
    run(cmake,
        QStringList{QStringLiteral("-S"), source, QStringLiteral("-B"), build, QStringLiteral("-G"),
                    QStringLiteral(GENERATOR), QStringLiteral("-DCMAKE_CXX_COMPILER=") + compiler(),
                    QStringLiteral("-DCMAKE_BUILD_TYPE=" CONFIGURATION)} +
            options,
        problem);
}

void buildAll(const QString &build, QString *problem)
{
    run(cmake, {QStringLiteral("--build"), build}, problem);
}

void install(const QString &build, const QString &component, const QString &prefix, QString *problem)
{
    QStringList arguments{QStringLiteral("--install"), build, QStringLiteral("--prefix"), prefix};
    if (!component.isEmpty()) {
        arguments << QStringLiteral("--component") << component;
    }
    run(cmake, arguments, problem);
}

QStringList filesBelow(const QString &directory)
{
    QStringList files;
    QDirIterator iterator(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        files.append(QDir(directory).relativeFilePath(iterator.next()));
    }
    files.sort();
    return files;
}

QString directory()
{
    return QStringLiteral(BUILD_DIRECTORY);
}

QString sources()
{
    return QStringLiteral(SOURCE_DIRECTORY);
}

QString compiler()
{
    return QStringLiteral(COMPILER);
}

} // namespace BuildUnderTest
