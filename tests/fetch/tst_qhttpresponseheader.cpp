#include "qhttpresponseheader.h"

#include <QtTest>

class TestQHttpResponseHeader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void statusLine_isParsed_data();
    void statusLine_isParsed();
    void fields_areFoundWithoutRegardToCase();
    void severalBlocks_theLastOneCounts();
    void trailers_areNoHeader();
    void foldedValue_isOneValue_data();
    void foldedValue_isOneValue();
    void fieldWithoutAName_isLeftOut();
    void setStatusLine_replacesItAndKeepsTheFields();
    void setStatusLine_makesAnEmptyHeaderValid();
};

void TestQHttpResponseHeader::statusLine_isParsed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::newRow("usual") << QStringLiteral("HTTP/1.1 404 Not Found\r\n\r\n") << true << 404
                           << QStringLiteral("Not Found") << 1 << 1;
    QTest::newRow("no reason") << QStringLiteral("HTTP/1.0 200\r\n") << true << 200 << QStringLiteral("") << 1
                               << 0;
    QTest::newRow("HTTP/2") << QStringLiteral("HTTP/2 204 \r\n\r\n") << true << 204 << QStringLiteral("") << 2
                            << 0;
    QTest::newRow("bare line feeds") << QStringLiteral("HTTP/1.1 200 OK\nA: b\n\n") << true << 200
                                     << QStringLiteral("OK") << 1 << 1;
    QTest::newRow("empty") << QStringLiteral("") << false << 0 << QStringLiteral("") << 1 << 1;
    QTest::newRow("no status line") << QStringLiteral("A: b\r\n\r\n") << false << 0 << QStringLiteral("") << 1
                                    << 1;
    QTest::newRow("code of two digits")
        << QStringLiteral("HTTP/1.1 20 OK\r\n") << false << 0 << QStringLiteral("") << 1 << 1;
    // It was read as 20, which is written with two digits.
    QTest::newRow("code below 100") << QStringLiteral("HTTP/1.1 020 OK\r\n") << false << 0
                                    << QStringLiteral("") << 1 << 1;
}

void TestQHttpResponseHeader::statusLine_isParsed()
{
    QFETCH(QString, text);

    const QHttpResponseHeader header(text);

    QTEST(header.isValid(), "valid");
    QTEST(header.statusCode(), "code");
    QTEST(header.reasonPhrase(), "reason");
    QTEST(header.majorVersion(), "major");
    QTEST(header.minorVersion(), "minor");
}

void TestQHttpResponseHeader::fields_areFoundWithoutRegardToCase()
{
    const auto text = QStringLiteral(
        "HTTP/1.1 200 OK\r\nContent-Type:  text/plain \r\nSet-Cookie: a=1\r\nset-cookie: b=2: c\r\n\r\n");

    const QHttpResponseHeader header(text);

    QCOMPARE(header.value(QStringLiteral("content-TYPE")), QStringLiteral("text/plain"));
    QCOMPARE(header.value(QStringLiteral("Set-Cookie")), QStringLiteral("a=1"));
    QCOMPARE(header.allValues(QStringLiteral("SET-COOKIE")),
             (QStringList{QStringLiteral("a=1"), QStringLiteral("b=2: c")}));
    QVERIFY(header.hasKey(QStringLiteral("Content-type")));
    QVERIFY(!header.hasKey(QStringLiteral("Content")));
    QVERIFY(header.value(QStringLiteral("Content")).isNull());
    QCOMPARE(header.keys(), (QStringList{QStringLiteral("Content-Type"), QStringLiteral("Set-Cookie"),
                                         QStringLiteral("set-cookie")}));
}

void TestQHttpResponseHeader::severalBlocks_theLastOneCounts()
{
    const auto text = QStringLiteral(
        "HTTP/1.1 302 Found\r\nLocation: /there\r\nX: first\r\n\r\nHTTP/1.1 100 Continue\r\n\r\n"
        "HTTP/1.1 200 OK\r\nX: last\r\n\r\n");

    const QHttpResponseHeader header(text);

    QCOMPARE(header.statusCode(), 200);
    QCOMPARE(header.allValues(QStringLiteral("X")), QStringList{QStringLiteral("last")});
    QVERIFY(!header.hasKey(QStringLiteral("Location")));
}

void TestQHttpResponseHeader::trailers_areNoHeader()
{
    const auto text = QStringLiteral("HTTP/1.1 200 OK\r\nTrailer: X-Sum\r\nX: y\r\n\r\nX-Sum: 1\r\n\r\n");

    const QHttpResponseHeader header(text);

    QVERIFY(header.isValid());
    QCOMPARE(header.value(QStringLiteral("X")), QStringLiteral("y"));
    QVERIFY(!header.hasKey(QStringLiteral("X-Sum")));
}

void TestQHttpResponseHeader::foldedValue_isOneValue_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::newRow("on three lines") << QStringLiteral("X: one\r\n\ttwo\r\n three\r\n")
                                    << QStringLiteral("one two three");
    QTest::newRow("begins on its second line") << QStringLiteral("X:\r\n one\r\n") << QStringLiteral("one");
    QTest::newRow("ends with a line of spaces") << QStringLiteral("X: one\r\n \r\n") << QStringLiteral("one");
}

void TestQHttpResponseHeader::foldedValue_isOneValue()
{
    QFETCH(QString, field);
    QFETCH(QString, value);

    const QHttpResponseHeader header(QStringLiteral("HTTP/1.1 200 OK\r\n%1Y: z\r\n\r\n").arg(field));

    QCOMPARE(header.value(QStringLiteral("X")), value);
    QCOMPARE(header.value(QStringLiteral("Y")), QStringLiteral("z"));
}

// Such a field was kept, and lost when the header's own text was read again.
void TestQHttpResponseHeader::fieldWithoutAName_isLeftOut()
{
    const QHttpResponseHeader header(QStringLiteral("HTTP/1.1 200 OK\r\n: a\r\n\v: b\r\nX: y\r\n\r\n"));

    QCOMPARE(header.keys(), QStringList{QStringLiteral("X")});
}

void TestQHttpResponseHeader::setStatusLine_replacesItAndKeepsTheFields()
{
    QHttpResponseHeader header(QStringLiteral("HTTP/2 404 Gone\r\nX: y\r\n\r\n"));

    header.setStatusLine(201);

    QCOMPARE(header.toString(), QStringLiteral("HTTP/1.1 201 \r\nX: y\r\n\r\n"));
}

void TestQHttpResponseHeader::setStatusLine_makesAnEmptyHeaderValid()
{
    QHttpResponseHeader header;
    QVERIFY(!header.isValid());
    QVERIFY(header.toString().isEmpty());

    header.setStatusLine(200, QStringLiteral("OK"), 1, 0);

    QVERIFY(header.isValid());
    QCOMPARE(header.toString(), QStringLiteral("HTTP/1.0 200 OK\r\n\r\n"));
}

QTEST_GUILESS_MAIN(TestQHttpResponseHeader)
#include "tst_qhttpresponseheader.moc"
