#include "remotetaskdescription.h"
#include "remotetaskwithdescription.h"

#include <QtTest>

class TestRemoteTaskDescription : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kind_hasItsNumber_data();
    void kind_hasItsNumber();
    void descriptions_areComparedFieldByField_data();
    void descriptions_areComparedFieldByField();
    void task_carriesItsDescription();
};

void TestRemoteTaskDescription::kind_hasItsNumber_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("number");
    QTest::newRow("Register") << int(RemoteTaskDescription::Register) << 1;
    QTest::newRow("Delete") << int(RemoteTaskDescription::Delete) << 2;
    QTest::newRow("Update") << int(RemoteTaskDescription::Update) << 3;
    QTest::newRow("GetList") << int(RemoteTaskDescription::GetList) << 4;
}

void TestRemoteTaskDescription::kind_hasItsNumber()
{
    QFETCH(int, kind);

    QTEST(kind, "number");
}

void TestRemoteTaskDescription::descriptions_areComparedFieldByField_data()
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

void TestRemoteTaskDescription::descriptions_areComparedFieldByField()
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

    const bool isEqual = a == b;
    const bool isDifferent = a != b;
    const bool isLess = a < b;
    const bool isGreater = b < a;

    QTEST(isEqual, "equal");
    QCOMPARE(isDifferent, !isEqual);
    QTEST(isLess, "less");
    QTEST(isGreater, "greater");
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
