#include "remotetaskdescription.h"
#include "remotetaskwithdescription.h"

#include <QtTest>

class TestRemoteTaskDescription : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kinds_haveTheirNumbers();
    void comparison_data();
    void comparison();
    void task_carriesItsDescription();
};

void TestRemoteTaskDescription::kinds_haveTheirNumbers()
{
    QCOMPARE(static_cast<int>(RemoteTaskDescription::Register), 1);
    QCOMPARE(static_cast<int>(RemoteTaskDescription::Delete), 2);
    QCOMPARE(static_cast<int>(RemoteTaskDescription::Update), 3);
    QCOMPARE(static_cast<int>(RemoteTaskDescription::GetList), 4);
}

void TestRemoteTaskDescription::comparison_data()
{
    QTest::addColumn<int>("typeA");
    QTest::addColumn<QString>("idA");
    QTest::addColumn<int>("dataA");
    QTest::addColumn<int>("typeB");
    QTest::addColumn<QString>("idB");
    QTest::addColumn<int>("dataB");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<bool>("less");
    QTest::addColumn<bool>("greater");
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    QTest::newRow("equal") << 1 << a << 0 << 1 << a << 0 << true << false << false;
    QTest::newRow("type") << 1 << a << 0 << 2 << a << 0 << false << true << false;
    QTest::newRow("id") << 1 << a << 0 << 1 << b << 0 << false << true << false;
    QTest::newRow("data only: each is less") << 1 << a << 0 << 1 << a << 1 << false << true << true;
    QTest::newRow("type against id: each is less") << 1 << b << 0 << 2 << a << 0 << false << true << true;
    QTest::newRow("all differ: each is less") << 1 << a << 0 << 2 << b << 1 << false << true << true;
}

void TestRemoteTaskDescription::comparison()
{
    QFETCH(int, typeA);
    QFETCH(QString, idA);
    QFETCH(int, dataA);
    QFETCH(int, typeB);
    QFETCH(QString, idB);
    QFETCH(int, dataB);
    const QString key = QStringLiteral("k");
    const RemoteTaskDescription a = {typeA, idA, {{key, dataA}}};
    const RemoteTaskDescription b = {typeB, idB, {{key, dataB}}};
    QTEST(a == b, "equal");
    QCOMPARE(a != b, !(a == b));
    QTEST(a < b, "less");
    QTEST(b < a, "greater");
}

void TestRemoteTaskDescription::task_carriesItsDescription()
{
    const RemoteTaskDescription descr = {
        3, QStringLiteral("u"), {{QStringLiteral("name"), QStringLiteral("n")}}};
    const RemoteTaskWithDescription task(descr);
    QVERIFY(task.description == descr);
    QCOMPARE(task.id(), 0);
    QCOMPARE(task.type(), VFetchTask::SingleShot);
    QCOMPARE(task.metaObject()->className(), "RemoteTaskWithDescription");
    QCOMPARE(task.metaObject()->methodCount(), VFetchTask::staticMetaObject.methodCount());
}

QTEST_GUILESS_MAIN(TestRemoteTaskDescription)
#include "tst_remotetaskdescription.moc"
