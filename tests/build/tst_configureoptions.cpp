#include "buildundertest.h"

#include <QDir>
#include <QFile>
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

// A Qt of which CMake can find the name and the version, and nothing else.
void putQtOn(const QString &machine, const QString &major)
{
    const QString package = machine + QStringLiteral("/usr/lib/cmake/Qt") + major;
    QVERIFY(QDir().mkpath(package));
    QFile config(package + QStringLiteral("/Qt%1Config.cmake").arg(major));
    QVERIFY(config.open(QIODevice::WriteOnly));
    QFile version(package + QStringLiteral("/Qt%1ConfigVersion.cmake").arg(major));
    QVERIFY(version.open(QIODevice::WriteOnly));
    const QByteArray text = "set(PACKAGE_VERSION " + major.toLatin1() + ".77.0)\n";
    QCOMPARE(version.write(text), qint64(text.size()));
}

} // namespace

/// Each part of the project asks for what it builds, and for nothing else.
class TestConfigureOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partLeftOut_needsNothingOfWhatItAloneUses_data();
    void partLeftOut_needsNothingOfWhatItAloneUses();
    void qtOfTheMachine_isTakenAsAsked_data();
    void qtOfTheMachine_isTakenAsAsked();
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

void TestConfigureOptions::qtOfTheMachine_isTakenAsAsked_data()
{
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("line");
    const QString five = QStringLiteral("5");
    const QString six = QStringLiteral("6");
    const QString builtWithFive = QStringLiteral("-- Building against Qt 5.77.0\n");
    const QString builtWithSix = QStringLiteral("-- Building against Qt 6.77.0\n");
    QTest::newRow("both") << QStringList{five, six} << QString() << builtWithSix;
    QTest::newRow("Qt 6 alone") << QStringList{six} << QString() << builtWithSix;
    QTest::newRow("Qt 5 alone") << QStringList{five} << QString() << builtWithFive;
    QTest::newRow("both, Qt 5 asked for") << QStringList{five, six} << five << builtWithFive;
    QTest::newRow("both, Qt 6 asked for") << QStringList{five, six} << six << builtWithSix;
    QTest::newRow("Qt 5 alone, Qt 6 asked for")
        << QStringList{five} << six
        << QStringLiteral("following names:\n\n    Qt6Config.cmake\n    qt6-config.cmake\n\n");
    QTest::newRow("neither") << QStringList{} << QString()
                             << QStringLiteral(
                                    "    Qt6Config.cmake\n    qt6-config.cmake\n    Qt5Config.cmake\n");
    QTest::newRow("both, Qt 4 asked for")
        << QStringList{five, six} << QStringLiteral("4")
        << QStringLiteral("QWIXTD_QT_MAJOR is \"4\": it can be 5, 6 or empty");
}

void TestConfigureOptions::qtOfTheMachine_isTakenAsAsked()
{
    QFETCH(QStringList, installed);
    QFETCH(QString, asked);
    QFETCH(QString, line);
    const QTemporaryDir build;
    const QTemporaryDir machine;
    for (const QString &major : installed) {
        putQtOn(machine.path(), major);
    }
    QString output;

    // The stand-ins have nothing to build with, so that configuring goes on to fail.
    configure(sources(), build.path(),
              {QStringLiteral("-DCMAKE_FIND_ROOT_PATH=") + machine.path(),
               QStringLiteral("-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY"),
               QStringLiteral("-DQWIXTD_PROXIES_ONLY=ON"), QStringLiteral("-DQWIXTD_QT_MAJOR=") + asked},
              &output);

    QVERIFY2(output.contains(line), qPrintable(output));
}

QTEST_GUILESS_MAIN(TestConfigureOptions)
#include "tst_configureoptions.moc"
