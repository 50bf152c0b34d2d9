#include "buildundertest.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace BuildUnderTest;

namespace
{

constexpr qint64 mostBytes = 256000;
const QString daemonProgram = QStringLiteral(QWIXTD_PROGRAM);

QByteArray readelf(const QString &options, const QString &file, QString *problem)
{
    return run(QStringLiteral("readelf"), {options, QStringLiteral("-W"), file}, problem);
}

} // namespace

/// The daemon as it is shipped: guarded against faults of memory, and small.
class TestShippedProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void program_isGuardedByTheLoader_data();
    void program_isGuardedByTheLoader();
    void program_checksTheBuffersItPrintsTo();
    void everyPart_checksItsStack_data();
    void everyPart_checksItsStack();
    void strippedProgram_isSmall();
    void strippedProgram_namesItsVersion();
};

void TestShippedProgram::program_isGuardedByTheLoader_data()
{
    QTest::addColumn<QString>("expected");
    QTest::newRow("bound before it starts") << QStringLiteral("\\(FLAGS\\) +BIND_NOW");
    QTest::newRow("bound data is read-only") << QStringLiteral("\n +GNU_RELRO +");
    QTest::newRow("loaded anywhere") << QStringLiteral("\\(FLAGS_1\\) +Flags:.* PIE");
    QTest::newRow("stack holds no code") << QStringLiteral("\n +GNU_STACK +(0x0+ +){3}0x0+ 0x0+ RW +0x");
}

void TestShippedProgram::program_isGuardedByTheLoader()
{
    QFETCH(QString, expected);
    QString problem;

    const QByteArray headers = readelf(QStringLiteral("-dl"), daemonProgram, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY2(QString::fromLatin1(headers).contains(QRegularExpression(expected)), headers.constData());
}

void TestShippedProgram::program_checksTheBuffersItPrintsTo()
{
    QString problem;

    const QByteArray symbols = readelf(QStringLiteral("--dyn-syms"), daemonProgram, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY2(symbols.contains(" UND __vsnprintf_chk@"), symbols.constData());
    QVERIFY2(symbols.contains(" UND __stack_chk_fail@"), symbols.constData());
}

void TestShippedProgram::everyPart_checksItsStack_data()
{
    QTest::addColumn<QString>("file");
    for (const QString &file : QStringLiteral(SHIPPED_LIBRARIES).split(QLatin1Char(','))) {
        QTest::newRow(qPrintable(QFileInfo(file).completeBaseName())) << file;
    }
}

void TestShippedProgram::everyPart_checksItsStack()
{
    QFETCH(QString, file);
    QString problem;

    const QByteArray symbols = readelf(QStringLiteral("-s"), file, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY2(symbols.contains(" UND __stack_chk_fail"), "compiled without a stack protector");
}

void TestShippedProgram::strippedProgram_isSmall()
{
    const QTemporaryDir work;
    const QString stripped = work.filePath(QStringLiteral("qwixtd"));
    QString problem;

    run(QStringLiteral("strip"), {QStringLiteral("-o"), stripped, daemonProgram}, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    const qint64 size = QFileInfo(stripped).size();
    QVERIFY2(size > 0 && size <= mostBytes, qPrintable(QStringLiteral("%1 bytes").arg(size)));
}

void TestShippedProgram::strippedProgram_namesItsVersion()
{
    const QTemporaryDir work;
    const QString stripped = work.filePath(QStringLiteral("qwixtd"));
    QString problem;
    run(QStringLiteral("strip"), {QStringLiteral("-o"), stripped, daemonProgram}, &problem);

    const QByteArray note = run(QStringLiteral("readelf"),
                                {QStringLiteral("-p"), QStringLiteral(".note.package"), stripped}, &problem);

    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY2(note.contains("{\"type\":\"program\",\"name\":\"qwixtd\",\"version\":\"" VERSION "\"}"),
             note.constData());
}

QTEST_GUILESS_MAIN(TestShippedProgram)
#include "tst_shippedprogram.moc"
