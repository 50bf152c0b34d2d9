#include "measures.h"
#include "plot.h"
#include "report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <unistd.h>

Q_DECLARE_METATYPE(Row)

/// What the benchmarks make of what they measure.
class TestBenchReport : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void row_isJudgedByItsTarget_data();
    void row_isJudgedByItsTarget();
    void jsonOfADisturbedRow_saysSo();
    void rowsWithoutJudgement_haveNoTargets();
    void quantile_isTheSmallestValueWithThatPartNotAboveIt_data();
    void quantile_isTheSmallestValueWithThatPartNotAboveIt();
    void quantileOfNothing_cannotBeMeasured();
    void processThatIsNotThere_cannotBeMeasured();
    void ownProcess_isMeasured();
    void plot_hasABarForEachSecond();
};

void TestBenchReport::row_isJudgedByItsTarget_data()
{
    QTest::addColumn<Row>("row");
    QTest::addColumn<QString>("cells");
    QTest::addColumn<QJsonValue>("met");
    const auto ms = QStringLiteral("ms");
    const auto value = Row::Judged::Value;
    const auto ratio = Row::Judged::Ratio;
    QTest::newRow("ratio at its target")
        << Row{ms, ms, 3, 2, 1.5, ratio} << QStringLiteral("2.00 ms 3.00 ms 1.50 <= 1.50 yes")
        << QJsonValue(true);
    QTest::newRow("ratio above its target")
        << Row{ms, ms, 3.1, 2, 1.5, ratio} << QStringLiteral("2.00 ms 3.10 ms 1.55 <= 1.50 NO")
        << QJsonValue(false);
    QTest::newRow("value at its target, ratio far above")
        << Row{ms, ms, 50, 0.5, 50, value} << QStringLiteral("0.50 ms 50.0 ms 100 <= 50.0 ms yes")
        << QJsonValue(true);
    QTest::newRow("value above its target, without floor")
        << Row{ms, ms, 51, std::nullopt, 50, value} << QStringLiteral("- 51.0 ms - <= 50.0 ms NO")
        << QJsonValue(false);
    QTest::newRow("target of nothing, met") << Row{ms, QString(), 0, std::nullopt, 0, value}
                                            << QStringLiteral("- 0.00 - <= 0.00 yes") << QJsonValue(true);
    QTest::newRow("target of nothing, missed") << Row{ms, QString(), 1, std::nullopt, 0, value}
                                               << QStringLiteral("- 1.00 - <= 0.00 NO") << QJsonValue(false);
    QTest::newRow("ratio a little below one")
        << Row{ms, ms, 4, 5, 1.5, ratio} << QStringLiteral("5.00 ms 4.00 ms 0.80 <= 1.50 yes")
        << QJsonValue(true);
    QTest::newRow("ratio far below one: the floor was disturbed")
        << Row{ms, ms, 3.9, 5, 1.5, ratio} << QStringLiteral("5.00 ms 3.90 ms 0.78 <= 1.50 disturbed")
        << QJsonValue();
    QTest::newRow("value at its target, ratio far below one")
        << Row{ms, ms, 1, 5, 50, value} << QStringLiteral("5.00 ms 1.00 ms 0.20 <= 50.0 ms yes")
        << QJsonValue(true);
    QTest::newRow("no target, ratio far below one")
        << Row{ms, ms, 1, 5, std::nullopt, ratio} << QStringLiteral("5.00 ms 1.00 ms 0.20 - -")
        << QJsonValue();
    QTest::newRow("no target") << Row{ms, ms, 1234, 617, std::nullopt, ratio}
                               << QStringLiteral("617 ms 1234 ms 2.00 - -") << QJsonValue();
    QTest::newRow("ratio to a floor of nothing")
        << Row{ms, ms, 3, 0, 1.5, ratio} << QStringLiteral("0.00 ms 3.00 ms - <= 1.50 -") << QJsonValue();
    QTest::newRow("ratio without floor") << Row{ms, ms, 3, std::nullopt, 1.5, ratio}
                                         << QStringLiteral("- 3.00 ms - <= 1.50 -") << QJsonValue();
}

void TestBenchReport::row_isJudgedByItsTarget()
{
    QFETCH(Row, row);
    QFETCH(QString, cells);
    QFETCH(QJsonValue, met);
    row.figure = QStringLiteral("figure");

    const QString lastLine = Report::table({row}, true).split(QLatin1Char('\n')).at(1);
    const QJsonObject report = QJsonDocument::fromJson(Report::json({row}, true)).object();

    QCOMPARE(lastLine.simplified(), QStringLiteral("figure ") + cells);
    QCOMPARE(report.value(QStringLiteral("rows")).toArray().at(0).toObject().value(QStringLiteral("met")),
             met);
}

void TestBenchReport::jsonOfADisturbedRow_saysSo()
{
    const Row quiet = {QStringLiteral("f"), QStringLiteral("ms"), 5, 5, 1.5};
    const Row disturbed = {QStringLiteral("f"), QStringLiteral("ms"), 1, 5, 1.5};

    const QJsonArray rows = QJsonDocument::fromJson(Report::json({quiet, disturbed}, true))
                                .object()
                                .value(QStringLiteral("rows"))
                                .toArray();

    QCOMPARE(rows.at(0).toObject().value(QStringLiteral("disturbed")), QJsonValue(false));
    QCOMPARE(rows.at(1).toObject().value(QStringLiteral("disturbed")), QJsonValue(true));
}

void TestBenchReport::rowsWithoutJudgement_haveNoTargets()
{
    const Row row = {QStringLiteral("f"), QStringLiteral("ms"), 3, 2, 1.5};

    const QString table = Report::table({row}, false);
    const QByteArray json = Report::json({row}, false);

    QVERIFY(table.contains(QStringLiteral("3.00 ms")));
    QVERIFY(!table.contains(QStringLiteral("met")));
    QVERIFY(json.contains("\"value\": 3"));
    QVERIFY(!json.contains("met"));
}

void TestBenchReport::quantile_isTheSmallestValueWithThatPartNotAboveIt_data()
{
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<double>("part");
    QTest::addColumn<double>("expected");
    const QVector<double> five = {5, 1, 4, 2, 3};
    QTest::newRow("least") << five << 0.0 << 1.0;
    QTest::newRow("a fifth") << five << 0.2 << 1.0;
    QTest::newRow("above a fifth") << five << 0.21 << 2.0;
    QTest::newRow("median") << five << 0.5 << 3.0;
    QTest::newRow("tail") << five << 0.99 << 5.0;
    QTest::newRow("all") << five << 1.0 << 5.0;
    QTest::newRow("median of two is the lower") << QVector<double>{2, 1} << 0.5 << 1.0;
}

void TestBenchReport::quantile_isTheSmallestValueWithThatPartNotAboveIt()
{
    QFETCH(QVector<double>, values);
    QFETCH(double, part);
    QFETCH(double, expected);

    const double found = quantile(values, part);

    QCOMPARE(found, expected);
}

void TestBenchReport::quantileOfNothing_cannotBeMeasured()
{
    QVERIFY_EXCEPTION_THROWN(median({}), CannotMeasure);
}

void TestBenchReport::processThatIsNotThere_cannotBeMeasured()
{
    const qint64 nobody = 1 << 23; // above the highest that a kernel gives

    QVERIFY_EXCEPTION_THROWN(Measure::processorNs(nobody), CannotMeasure);
    QVERIFY_EXCEPTION_THROWN(Measure::mainThreadProcessorNs(nobody), CannotMeasure);
    QVERIFY_EXCEPTION_THROWN(Measure::privateDirtyBytes(nobody), CannotMeasure);
    QVERIFY_EXCEPTION_THROWN(Measure::contextSwitches(nobody), CannotMeasure);
}

void TestBenchReport::ownProcess_isMeasured()
{
    const qint64 self = getpid();
    const qint64 processorBefore = Measure::processorNs(self);
    const qint64 threadBefore = Measure::mainThreadProcessorNs(self);
    const double memoryBefore = Measure::privateDirtyBytes(self);
    const QString thread = QString::number(self);
    const qint64 switchesBefore = Measure::contextSwitches(self).value(thread);

    const QByteArray written(4 * 1024 * 1024, 'x');
    QTest::qSleep(1); // gives the processor away

    QVERIFY(Measure::processorNs(self) > processorBefore);
    QVERIFY(Measure::mainThreadProcessorNs(self) > threadBefore);
    QVERIFY(Measure::privateDirtyBytes(self) >= memoryBefore + static_cast<double>(written.size()));
    QVERIFY(Measure::contextSwitches(self).value(thread) > switchesBefore);
}

void TestBenchReport::plot_hasABarForEachSecond()
{
    Plot plot;
    plot.title = QStringLiteral("a < b");
    plot.marks = {{1, QStringLiteral("outage")}};

    plot.count(0, true);
    plot.count(2, false);
    plot.count(2, true);

    QCOMPARE(plot.done, QVector<int>({1, 0, 1}));
    QCOMPARE(plot.failed, QVector<int>({0, 0, 1}));
    QCOMPARE(plot.largest(), 2);
    const QByteArray svg = plot.svg();
    QVERIFY(svg.contains("a &lt; b"));
    QVERIFY(svg.contains(">outage</text>"));
    QVERIFY(svg.endsWith("</svg>\n"));
}

QTEST_GUILESS_MAIN(TestBenchReport)
#include "tst_benchreport.moc"
