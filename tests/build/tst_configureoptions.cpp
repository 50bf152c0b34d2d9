#include "buildundertest.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace BuildUnderTest;

namespace
{

const QString qt = QStringLiteral("Qt" QT_MAJOR);

QString off(const char *option)
{
    return QStringLiteral("-D%1=OFF").arg(QLatin1String(option));
}

// As on a machine that does not have the package.
QString without(const QString &package)
{
    return QStringLiteral("-DCMAKE_DISABLE_FIND_PACKAGE_%1=ON").arg(package);
}

} // namespace

/// Each part of the project asks for what it builds, and for nothing else.
class TestConfigureOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partLeftOut_needsNothingOfWhatItAloneUses_data();
    void partLeftOut_needsNothingOfWhatItAloneUses();
};

void TestConfigureOptions::partLeftOut_needsNothingOfWhatItAloneUses_data()
{
    const QString test = qt + QStringLiteral("Test");
    const QString network = qt + QStringLiteral("Network");
    const QString pkgConfig = QStringLiteral("PkgConfig");
    QTest::addColumn<QStringList>("options");
    QTest::newRow("no tests: no Qt Test") << QStringList{off("BUILD_TESTING"), without(test)};
    QTest::newRow("no simulator: no libedit")
        << QStringList{off("QWIXTD_BUILD_SIMULATOR"), without(pkgConfig)};
    QTest::newRow("neither: no Qt Network either")
        << QStringList{off("BUILD_TESTING"), off("QWIXTD_BUILD_SIMULATOR"), without(test), without(network),
                       without(pkgConfig)};
}

void TestConfigureOptions::partLeftOut_needsNothingOfWhatItAloneUses()
{
    QFETCH(QStringList, options);
    const QTemporaryDir build;
    QString problem;

    configure(sources(), build.path(), options << QStringLiteral("-DQWIXTD_QT_MAJOR=" QT_MAJOR), &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
}

QTEST_GUILESS_MAIN(TestConfigureOptions)
#include "tst_configureoptions.moc"
