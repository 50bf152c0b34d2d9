#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The build that the tests came from, and further ones configured like it. Every function waits until its
/// program has ended, 280 s at most, and writes what went wrong to @p problem, which it leaves alone when all
/// went well.
namespace BuildUnderTest
{

/// Runs a program and returns its standard output.
/// @param environment variables in the form NAME=value, added to those of the test
QByteArray run(const QString &program, const QStringList &arguments, QString *problem,
               const QStringList &environment = {});

/// Configures the CMake project in @p source in the directory @p build, with the compiler, the generator and
/// the build type of the build under test.
void configure(const QString &source, const QString &build, const QStringList &options, QString *problem);

/// Builds what configure() has configured.
void buildAll(const QString &build, QString *problem);

/// Installs one component of a build, or all of it when @p component is empty.
void install(const QString &build, const QString &component, const QString &prefix, QString *problem);

/// Paths of all files below a directory, relative to it and in order.
QStringList filesBelow(const QString &directory);

/// The directory of the build under test.
QString directory();

/// The top directory of the project's sources.
QString sources();

/// The compiler of the build under test.
QString compiler();

} // namespace BuildUnderTest
