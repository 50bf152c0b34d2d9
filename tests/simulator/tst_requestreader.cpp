#include "requestreader.h"

#include <QtTest>

namespace
{
const QByteArray getRequest = "GET /a?b=c HTTP/1.1\r\nHost: h\r\nX-B:  b \r\nx-b: again\r\n\r\n";
const QByteArray putRequest = "PUT /p HTTP/1.1\r\nContent-Length: 5\r\n\r\n\r\n\r\n!";
} // namespace

class TestRequestReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void request_isTakenApart();
    void request_isWholeAtItsLastByte_data();
    void request_isWholeAtItsLastByte();
    void requestsBehindEachOther_areParted();
    void bytes_areAllThatHadCome();
    void bodyOfTheLargestSize_isWaitedFor();
    void whatIsNoRequest_isMalformed_data();
    void whatIsNoRequest_isMalformed();
};

void TestRequestReader::request_isTakenApart()
{
    RequestReader reader;

    reader.add(getRequest);
    const std::optional<HttpRequest> request = reader.take();

    QVERIFY(request.has_value());
    const QList<QPair<QByteArray, QByteArray>> headers{{"Host", "h"}, {"X-B", "b"}, {"x-b", "again"}};
    QCOMPARE(request->method, QByteArray("GET"));
    QCOMPARE(request->target, QByteArray("/a?b=c"));
    QCOMPARE(request->headers, headers);
    QCOMPARE(request->header("X-b"), QByteArray("b"));
    QCOMPARE(request->firstLine(), QByteArray("GET /a?b=c HTTP/1.1"));
    QCOMPARE(request->body, QByteArray());
    QCOMPARE(request->bytes, getRequest);
}

void TestRequestReader::request_isWholeAtItsLastByte_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("without a body") << getRequest << QByteArray();
    QTest::newRow("with a body that looks like the end of a head") << putRequest << QByteArray("\r\n\r\n!");
    QTest::newRow("length in another case")
        << QByteArray("POST / HTTP/1.1\r\ncontent-length:3\r\n\r\nabc") << QByteArray("abc");
    QTest::newRow("length 0") << QByteArray("POST / HTTP/1.1\r\nContent-Length: 0\r\n\r\n") << QByteArray();
}

void TestRequestReader::request_isWholeAtItsLastByte()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, body);
    RequestReader reader;

    for (int index = 0; index < text.size() - 1; ++index) {
        reader.add(text.mid(index, 1));
        QVERIFY2(!reader.take().has_value(), qPrintable(QString::number(index)));
    }
    reader.add(text.right(1));
    const std::optional<HttpRequest> request = reader.take();

    QVERIFY(request.has_value());
    QCOMPARE(request->body, body);
    QCOMPARE(request->bytes, text);
    QVERIFY(!reader.isMalformed());
}

void TestRequestReader::requestsBehindEachOther_areParted()
{
    RequestReader reader;

    reader.add(putRequest + getRequest);
    const std::optional<HttpRequest> first = reader.take();
    const std::optional<HttpRequest> second = reader.take();
    const std::optional<HttpRequest> third = reader.take();

    QCOMPARE(first->method, QByteArray("PUT"));
    QCOMPARE(first->body, QByteArray("\r\n\r\n!"));
    QCOMPARE(second->method, QByteArray("GET"));
    QVERIFY(!third.has_value());
}

void TestRequestReader::bytes_areAllThatHadCome()
{
    RequestReader reader;

    reader.add(putRequest + "too much");
    const std::optional<HttpRequest> request = reader.take();

    QCOMPARE(request->body, QByteArray("\r\n\r\n!"));
    QCOMPARE(request->bytes, putRequest + "too much");
}

// The sum of the two sizes went over the largest number, and the request was taken at once.
void TestRequestReader::bodyOfTheLargestSize_isWaitedFor()
{
    RequestReader reader;

    reader.add("PUT / HTTP/1.1\r\nContent-Length: 2147483647\r\n\r\nbody");
    const std::optional<HttpRequest> request = reader.take();

    QVERIFY(!request.has_value());
    QVERIFY(!reader.isMalformed());
}

void TestRequestReader::whatIsNoRequest_isMalformed_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("no request line") << QByteArray("\r\n\r\n");
    QTest::newRow("two words") << QByteArray("GET /\r\n\r\n");
    QTest::newRow("two spaces") << QByteArray("GET  / HTTP/1.1\r\n\r\n");
    QTest::newRow("four words") << QByteArray("GET / HTTP/1.1 x\r\n\r\n");
    QTest::newRow("no method") << QByteArray(" / HTTP/1.1\r\n\r\n");
    QTest::newRow("another protocol") << QByteArray("GET / HTTPS/1.1\r\n\r\n");
    QTest::newRow("header without a colon") << QByteArray("GET / HTTP/1.1\r\nHost\r\n\r\n");
    QTest::newRow("header without a name") << QByteArray("GET / HTTP/1.1\r\n: h\r\n\r\n");
    QTest::newRow("space in a header's name") << QByteArray("GET / HTTP/1.1\r\nHost : h\r\n\r\n");
    QTest::newRow("length in words") << QByteArray("GET / HTTP/1.1\r\nContent-Length: few\r\n\r\n");
    QTest::newRow("length below 0") << QByteArray("GET / HTTP/1.1\r\nContent-Length: -1\r\n\r\n");
    const QByteArray post = "POST / HTTP/1.1\r\n";
    QTest::newRow("length with a sign") << post + "Content-Length: +5\r\n\r\nabcde";
    QTest::newRow("length behind a sign and a space") << post + "Content-Length: + 5\r\n\r\nabcde";
    QTest::newRow("length without a value") << post + "Content-Length:\r\n\r\n";
    QTest::newRow("length in hexadecimal digits") << post + "Content-Length: 0x5\r\n\r\nabcde";
    QTest::newRow("list of lengths") << post + "Content-Length: 5, 5\r\n\r\nabcde";
    QTest::newRow("length above all numbers") << post + "Content-Length: 99999999999999999999\r\n\r\nabcde";
    QTest::newRow("two lengths") << post + "Content-Length: 5\r\nContent-Length: 0\r\n\r\nabcde";
    QTest::newRow("the same length twice") << post + "Content-Length: 5\r\ncontent-length: 5\r\n\r\nabcde";
    QTest::newRow("second length without a value")
        << post + "Content-Length: 5\r\nContent-Length:\r\n\r\nabcde";
    QTest::newRow("in chunks") << QByteArray("PUT / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
    QTest::newRow("head without end") << QByteArray(300 * 1024, 'x');
    QTest::newRow("large head that has come at once")
        << "GET / HTTP/1.1\r\nX: " + QByteArray(300 * 1024, 'x') + "\r\n\r\n";
}

void TestRequestReader::whatIsNoRequest_isMalformed()
{
    QFETCH(const QByteArray, text);
    RequestReader reader;

    reader.add(text);
    const std::optional<HttpRequest> request = reader.take();

    QVERIFY(!request.has_value());
    QVERIFY(reader.isMalformed());
    // Nor does what follows make it good.
    reader.add(getRequest);
    QVERIFY(!reader.take().has_value());
}

QTEST_GUILESS_MAIN(TestRequestReader)
#include "tst_requestreader.moc"
