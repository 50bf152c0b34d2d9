#include "buildundertest.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

/// The recipe for Yocto against the project that it builds. Yocto itself is not at hand, so that this reads
/// the recipe by the rules of its language that the recipe needs.
class TestRecipe : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void everyLine_isOfTheRecipesLanguage();
    void shellOfTheRecipe_isOfTheShellsLanguage();
    void sources_areUnpackedWhereEveryReleaseLooks();
    void name_holdsTheVersion();
    void option_isOneOfTheProjects();
    void unit_isInstalledWhereItIsMovedFrom();
    void user_isTheUnits();

private:
    QString value(const char *variable) const;

    QMap<QString, QString> variables;
    QStringList classes;
    QString shell; ///< the bodies of all tasks
    QStringList foreignLines;
};

namespace
{
const QString packaging = QStringLiteral(SOURCE_DIRECTORY "/packaging/");

QString content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString recipePath()
{
    const QDir directory(packaging + QStringLiteral("yocto"));
    return directory.filePath(directory.entryList({QStringLiteral("qwixtd_*.bb")}).value(0));
}

QStringList words(const QString &text)
{
    return text.simplified().split(QLatin1Char(' '));
}
} // namespace

void TestRecipe::initTestCase()
{
    const QRegularExpression assignment(
        QStringLiteral("^([A-Z_]+(?::[a-z]+|:\\$\\{PN\\})*) (?:=|\\?=|\\+=|:=) \"([^\"]*)\"$"));
    const QRegularExpression inheritance(QStringLiteral("^inherit ([a-z0-9- ]+)$"));
    const QRegularExpression task(QStringLiteral("^do_[a-z]+(?::append|:prepend)?\\(\\) \\{$"));
    bool isInTask = false;
    // A line that ends with a backslash goes on in the next.
    const QStringList lines =
        content(recipePath()).replace(QStringLiteral("\\\n"), QString()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QRegularExpressionMatch assigned = assignment.match(line);
        const QRegularExpressionMatch inherited = inheritance.match(line);
        if (isInTask) {
            isInTask = line != QLatin1String("}");
            shell += isInTask ? line + QLatin1Char('\n') : QString();
        } else if (task.match(line).hasMatch()) {
            isInTask = true;
        } else if (assigned.hasMatch()) {
            variables[assigned.captured(1)] = assigned.captured(2);
        } else if (inherited.hasMatch()) {
            classes += words(inherited.captured(1));
        } else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
            foreignLines.append(line);
        }
    }
    QVERIFY2(!isInTask, "a task has no end");
}

QString TestRecipe::value(const char *variable) const
{
    return variables.value(QString::fromLatin1(variable));
}

void TestRecipe::everyLine_isOfTheRecipesLanguage()
{
    QCOMPARE(foreignLines, QStringList());
    for (const char *variable : {"SUMMARY", "LICENSE", "SRC_URI", "SRCREV", "DEPENDS", "EXTRA_OECMAKE"}) {
        QVERIFY2(!value(variable).isEmpty(), variable);
    }
    QCOMPARE(classes, QStringList({QStringLiteral("qt6-cmake"), QStringLiteral("systemd"),
                                   QStringLiteral("useradd")}));
}

void TestRecipe::shellOfTheRecipe_isOfTheShellsLanguage()
{
    QTemporaryDir directory;
    const QString script = directory.filePath(QStringLiteral("tasks"));
    QFile file(script);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(shell.toUtf8()) > 0);
    file.close();
    QString problem;

    BuildUnderTest::run(QStringLiteral("sh"), {QStringLiteral("-n"), script}, &problem);

    QCOMPARE(problem, QString());
}

void TestRecipe::sources_areUnpackedWhereEveryReleaseLooks()
{
    const QStringList source = value("SRC_URI").split(QLatin1Char(';'));

    QVERIFY2(source.contains(QStringLiteral("destsuffix=${BP}")), qPrintable(value("SRC_URI")));
    QVERIFY2(!variables.contains(QStringLiteral("S")), qPrintable(value("S")));
}

void TestRecipe::name_holdsTheVersion()
{
    const QString version = QRegularExpression(QStringLiteral("_(.*)\\.bb$")).match(recipePath()).captured(1);

    QCOMPARE(version, QStringLiteral(VERSION).section(QLatin1Char('.'), 0, 1));
}

void TestRecipe::option_isOneOfTheProjects()
{
    const QString project = content(QStringLiteral(SOURCE_DIRECTORY "/CMakeLists.txt"));
    const QStringList options = words(value("EXTRA_OECMAKE"));

    QVERIFY(options.size() > 1);
    for (const QString &option : options) {
        const QString name = QRegularExpression(QStringLiteral("^-D([A-Z_]+)=")).match(option).captured(1);
        const QRegularExpression declared(QStringLiteral("^(option|set)\\(%1 .*").arg(name),
                                          QRegularExpression::MultilineOption);
        QVERIFY2(!name.isEmpty() && declared.match(project).hasMatch(), qPrintable(option));
    }
}

void TestRecipe::unit_isInstalledWhereItIsMovedFrom()
{
    const QTemporaryDir prefix;
    QString problem;

    BuildUnderTest::install(BuildUnderTest::directory(), QStringLiteral("qwixtd"), prefix.path(), &problem);

    QCOMPARE(problem, QString());
    const QString unit = QStringLiteral("/lib/systemd/system/") + value("SYSTEMD_SERVICE:${PN}");
    QVERIFY(QFile::exists(prefix.path() + unit));
    QVERIFY2(shell.contains(QStringLiteral("mv ${D}${prefix}%1 ").arg(unit)), qPrintable(shell));
}

void TestRecipe::user_isTheUnits()
{
    const QString unit = content(packaging + value("SYSTEMD_SERVICE:${PN}"));

    const QString user = words(value("USERADD_PARAM:${PN}")).constLast();

    QCOMPARE(value("USERADD_PACKAGES"), QStringLiteral("${PN}"));
    QVERIFY2(unit.contains(QStringLiteral("\nUser=%1\n").arg(user)), qPrintable(user));
}

QTEST_GUILESS_MAIN(TestRecipe)
#include "tst_recipe.moc"
