#include "remotetaskwithdescription.h"
#include "tasksbydescription.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

namespace
{

/// A stand-in for a task that is known by its address only.
RemoteTaskWithDescription *task(int number)
{
    static char addresses[4096];
    return reinterpret_cast<RemoteTaskWithDescription *>(addresses + number);
}

/// Descriptions of few ids, names and kinds, so that many share each of them; no two are equal.
QList<RemoteTaskDescription> mixture()
{
    QList<RemoteTaskDescription> all;
    for (int type = 1; type <= 3; ++type) {
        for (int id = 0; id < 6; ++id) {
            for (int name = 0; name < 6; ++name) {
                all.append({type, QString::number(id), {{QStringLiteral("key"), name}}});
            }
        }
    }
    return all;
}

} // namespace

class TestTasksByDescription : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pendingRegisters_areAllFound_data();
    void pendingRegisters_areAllFound();
    void anyOrderOfEntries_keepsThemAll_data();
    void anyOrderOfEntries_keepsThemAll();
    void storing_replacesAnEqualEntry();
    void taking_removesOneEntry();
    void tenThousandWithEqualData_areStoredQuickly();
};

void TestTasksByDescription::pendingRegisters_areAllFound_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {1, 2, 3, 5, 12, 100}) {
        QTest::addRow("%d", count) << count;
    }
}

void TestTasksByDescription::pendingRegisters_areAllFound()
{
    QFETCH(int, count);
    TasksByDescription tasks;

    for (int i = 0; i < count; ++i) {
        QVERIFY(tasks.store({1, QString::number(i), {{QStringLiteral("key"), i}}}, task(i)) == nullptr);
    }

    QCOMPARE(tasks.size(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(tasks.find({1, QString::number(i), {{QStringLiteral("key"), i}}}), task(i));
    }
    QVERIFY(tasks.find({1, QStringLiteral("0"), {}}) == nullptr);
    QVERIFY(tasks.find({2, QStringLiteral("0"), {{QStringLiteral("key"), 0}}}) == nullptr);
}

void TestTasksByDescription::anyOrderOfEntries_keepsThemAll_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 50; ++seed) {
        QTest::addRow("seed %u", seed) << seed;
    }
}

void TestTasksByDescription::anyOrderOfEntries_keepsThemAll()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    QList<RemoteTaskDescription> order = mixture();
    std::shuffle(order.begin(), order.end(), random);
    TasksByDescription tasks;
    for (int i = 0; i < order.size(); ++i) {
        QVERIFY(tasks.store(order.at(i), task(i)) == nullptr);
    }
    QCOMPARE(tasks.size(), static_cast<int>(order.size()));
    for (int i = 0; i < order.size(); ++i) {
        QCOMPARE(tasks.find(order.at(i)), task(i));
    }

    for (int i = 0; i < order.size(); i += 2) {
        QCOMPARE(tasks.take(order.at(i)), task(i));
    }

    for (int i = 0; i < order.size(); ++i) {
        QCOMPARE(tasks.find(order.at(i)), i % 2 == 0 ? nullptr : task(i));
    }
}

void TestTasksByDescription::storing_replacesAnEqualEntry()
{
    TasksByDescription tasks;
    const QList<RemoteTaskDescription> all = mixture();
    for (int i = 0; i < all.size(); ++i) {
        QVERIFY(tasks.store(all.at(i), task(i)) == nullptr);
    }

    QList<RemoteTaskWithDescription *> replaced;
    for (int i = 0; i < all.size(); ++i) {
        replaced.append(tasks.store(all.at(i), task(1000 + i)));
    }

    QCOMPARE(tasks.size(), static_cast<int>(all.size()));
    for (int i = 0; i < all.size(); ++i) {
        QCOMPARE(replaced.at(i), task(i));
        QCOMPARE(tasks.find(all.at(i)), task(1000 + i));
    }
}

void TestTasksByDescription::taking_removesOneEntry()
{
    TasksByDescription tasks;
    const QList<RemoteTaskDescription> all = mixture();
    for (int i = 0; i < all.size(); ++i) {
        QVERIFY(tasks.store(all.at(i), task(i)) == nullptr);
    }

    const RemoteTaskWithDescription *const taken = tasks.take(all.at(40));
    const RemoteTaskWithDescription *const takenAgain = tasks.take(all.at(40));

    QCOMPARE(taken, static_cast<const RemoteTaskWithDescription *>(task(40)));
    QVERIFY(takenAgain == nullptr);
    QCOMPARE(tasks.size(), static_cast<int>(all.size()) - 1);
}

void TestTasksByDescription::tenThousandWithEqualData_areStoredQuickly()
{
    // Widgets of one name and type differ in their ids only, which the ordering sorts.
    constexpr int count = 10000;
    QList<RemoteTaskDescription> order;
    for (int i = 0; i < count; ++i) {
        order.append({1, QString::number(i), {{QStringLiteral("name"), QStringLiteral("Clock")}}});
    }
    QRandomGenerator random(4711);
    std::shuffle(order.begin(), order.end(), random);
    TasksByDescription tasks;
    QElapsedTimer elapsed;

    elapsed.start();
    for (int i = 0; i < count; ++i) {
        QVERIFY(tasks.store(order.at(i), task(i % 4096)) == nullptr);
    }

    QVERIFY2(elapsed.elapsed() < 2000, qPrintable(QString::number(elapsed.elapsed())));
    QCOMPARE(tasks.size(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(tasks.find(order.at(i)), task(i % 4096));
    }
}

QTEST_GUILESS_MAIN(TestTasksByDescription)
#include "tst_tasksbydescription.moc"
