#include "formbody.h"

#include <QtTest>

class TestFormBody : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parameters_becomePairs_data();
    void parameters_becomePairs();
    void rawBody_takesTheirPlace_data();
    void rawBody_takesTheirPlace();
    void value_countsAsNullOrNot_data();
    void value_countsAsNullOrNot();
};

void TestFormBody::parameters_becomePairs_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QByteArray>("body");
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    QTest::newRow("none") << QVariantMap() << QByteArray();
    QTest::newRow("ascending order of names")
        << QVariantMap{{b, 2}, {a, 1}, {QStringLiteral("B"), 0}} << QByteArray("B=0&a=1&b=2");
    QTest::newRow("nothing is percent-encoded")
        << QVariantMap{{a, QStringLiteral("x&y=z%20 +\n/?")}} << QByteArray("a=x&y=z%20 +\n/?");
    QTest::newRow("UTF-8") << QVariantMap{{a, QString::fromUtf8("\xc3\xbc\xe2\x82\xac\xf0\x9f\x98\x80")}}
                           << QByteArray("a=\xc3\xbc\xe2\x82\xac\xf0\x9f\x98\x80");
    QTest::newRow("empty string is sent")
        << QVariantMap{{a, QStringLiteral("")}, {b, 1}} << QByteArray("a=&b=1");
    QTest::newRow("null string is skipped") << QVariantMap{{a, QString()}, {b, 1}} << QByteArray("b=1");
    QTest::newRow("invalid value is skipped") << QVariantMap{{a, QVariant()}, {b, 1}} << QByteArray("b=1");
    QTest::newRow("empty name is skipped") << QVariantMap{{QString(), 1}, {b, 1}} << QByteArray("b=1");
    QTest::newRow("all skipped") << QVariantMap{{a, QVariant()}, {QString(), 1}} << QByteArray();
    QTest::newRow("large number") << QVariantMap{{a, Q_INT64_C(9223372036854775807)}}
                                  << QByteArray("a=9223372036854775807");
    QTest::newRow("boolean") << QVariantMap{{a, true}} << QByteArray("a=true");
}

void TestFormBody::parameters_becomePairs()
{
    QFETCH(QVariantMap, parameters);

    const QByteArray made = requestBody(parameters, QByteArray());

    QTEST(made, "body");
}

void TestFormBody::rawBody_takesTheirPlace_data()
{
    QTest::addColumn<QByteArray>("raw");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("plain") << QByteArray("raw body") << QByteArray("raw body");
    QTest::newRow("ends at its first zero byte") << QByteArray("be\0hind", 7) << QByteArray("be");
    QTest::newRow("begins with a zero byte") << QByteArray("\0x", 2) << QByteArray();
    QTest::newRow("8-bit text becomes UTF-8") << QByteArray("\xfc") << QByteArray("\xc3\xbc");
    QTest::newRow("empty: the parameters stay") << QByteArray() << QByteArray("a=1");
}

void TestFormBody::rawBody_takesTheirPlace()
{
    QFETCH(QByteArray, raw);

    const QByteArray made = requestBody({{QStringLiteral("a"), 1}}, raw);

    QTEST(made, "body");
}

void TestFormBody::value_countsAsNullOrNot_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("null");
    QTest::newRow("invalid") << QVariant() << true;
    QTest::newRow("null string") << QVariant(QString()) << true;
    QTest::newRow("empty string") << QVariant(QStringLiteral("")) << false;
    QTest::newRow("null bytes") << QVariant(QByteArray()) << true;
    QTest::newRow("empty bytes") << QVariant(QByteArray("")) << false;
    QTest::newRow("null pointer") << QVariant::fromValue(nullptr) << true;
    QTest::newRow("zero") << QVariant(0) << false;
}

void TestFormBody::value_countsAsNullOrNot()
{
    QFETCH(QVariant, value);

    const bool isNull = isNullValue(value);

    QTEST(isNull, "null");
}

QTEST_GUILESS_MAIN(TestFormBody)
#include "tst_formbody.moc"
