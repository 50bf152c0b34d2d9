#include "httpserver.h"
#include "platformcapture.h"
#include "servewhile.h"
#include "vfetchtask.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace
{

// Answers once with each of the given texts and closes; then closes without an answer.
class Server : public HttpServer
{
public:
    Server()
    {
        if (!start()) {
            qFatal("no server to test with: %s", qPrintable(errorText()));
        }
    }

    void queueAnswer(const QByteArray &text) { HttpServer::queueAnswer(HttpAnswer::exactly(text)); }

    void queueAnswer(int status, const QByteArray &body)
    {
        queueAnswer("HTTP/1.1 " + QByteArray::number(status) +
                    " Text\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    }

    QString url(const char *path = "/") const { return HttpServer::url(QString::fromLatin1(path)); }
};

// The server lives on this thread, so the task runs on another one, as it does in the daemon.
void run(VFetchTask &task)
{
    serveWhile([&task] { task.run(); });
}

// All that came behind the head.
QByteArray bodyOf(const HttpRequest &request)
{
    return request.bytes.mid(request.bytes.indexOf("\r\n\r\n") + 4);
}

} // namespace

/// Runs over a real connection: what a server receives, byte for byte.
class TestTransfer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void method_isOnTheWire_data();
    void method_isOnTheWire();
    void emptyPost_goesOutAsOne();
    void largeBody_isSentWhole();
    void form_carriesTextAndFile();
    void redirect_isFollowed();
    void redirectWithoutAPlace_isAFailure();
    void compressedAnswer_isDecoded();
    void closedConnection_isATransferError();
    void bodyCutOff_isATransferErrorWithoutBody();
    void unresolvedHost_isCodeSix();
    void secondRun_startsAfresh();
};

void TestTransfer::method_isOnTheWire_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QByteArray>("word");
    QTest::newRow("Post") << 1 << QByteArray("POST");
    QTest::newRow("Put") << 2 << QByteArray("PUT");
    QTest::newRow("Delete") << 4 << QByteArray("DELETE");
    QTest::newRow("Custom") << 5 << QByteArray("PATCH");
}

void TestTransfer::method_isOnTheWire()
{
    QFETCH(int, method);
    QFETCH(QByteArray, word);
    Server server;
    server.queueAnswer(201, "done");
    VFetchTask task(1);
    task.setUrl(server.url("/a/b?c=d"));
    task.setRequestMethod(method);
    task.setCustomMethod("PATCH");
    task.setHeader(QStringLiteral("X-Mine"), QStringLiteral("yes"));
    task.setPostParams({{QStringLiteral("name"), QStringLiteral("a&b=c%20")}, {QStringLiteral("e"), 1}});
    const QSignalSpy successes(&task, &VFetchTask::success);

    run(task);

    QCOMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(0).toByteArray(), QByteArray("done"));
    QCOMPARE(task.status(), 201);
    const HttpRequest request = server.requests().constFirst();
    QCOMPARE(request.firstLine(), word + " /a/b?c=d HTTP/1.1");
    QVERIFY(request.bytes.contains("\r\nX-Mine: yes\r\n"));
    QCOMPARE(bodyOf(request), QByteArray("e=1&name=a&b=c%20"));
}

void TestTransfer::emptyPost_goesOutAsOne()
{
    Server server;
    server.queueAnswer(200, "");
    VFetchTask task(1);
    task.setUrl(server.url());
    task.setRequestMethod(VFetchTask::Post);
    const QSignalSpy successes(&task, &VFetchTask::success);

    run(task);

    QCOMPARE(successes.count(), 1);
    QCOMPARE(server.requests().constFirst().firstLine(), QByteArray("POST / HTTP/1.1"));
    QVERIFY(server.requests().constFirst().bytes.contains("\r\nContent-Length: 0\r\n"));
    QCOMPARE(bodyOf(server.requests().constFirst()), QByteArray());
}

void TestTransfer::largeBody_isSentWhole()
{
    Server server;
    const QByteArray answer(300000, 'z');
    server.queueAnswer(200, answer);
    const QString value(100 * 1024, QLatin1Char('v'));
    VFetchTask task(1);
    task.setUrl(server.url());
    task.setRequestMethod(VFetchTask::Put);
    task.setPostParam(QStringLiteral("k"), value);
    const QSignalSpy successes(&task, &VFetchTask::success);

    run(task);

    QCOMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(0).toByteArray(), answer);
    QCOMPARE(bodyOf(server.requests().constFirst()), "k=" + value.toLatin1());
}

void TestTransfer::form_carriesTextAndFile()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("upload.txt"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("content of the file");
    file.close();
    Server server;
    server.queueAnswer(200, "");
    VFetchTask task(1);
    task.setUrl(server.url());
    task.setRequestMethod(VFetchTask::PostForm);
    task.setFormPart(QStringLiteral("b"), QStringLiteral("text"), QStringLiteral("some text"));
    task.setFormPart(QStringLiteral("a"), QStringLiteral("file"), path);
    task.setFormPart(QStringLiteral("c"), QStringLiteral("other"), QStringLiteral("skipped"));

    run(task);

    QCOMPARE(task.status(), 200);
    const HttpRequest request = server.requests().constFirst();
    QVERIFY(request.bytes.startsWith("POST / HTTP/1.1\r\n"));
    QVERIFY(request.bytes.contains("Content-Type: multipart/form-data; boundary="));
    const auto file1 = request.bytes.indexOf("name=\"a\"; filename=\"upload.txt\"");
    const auto text1 = request.bytes.indexOf("name=\"b\"\r\n\r\nsome text\r\n");
    QVERIFY(file1 > 0);
    QVERIFY(text1 > file1); // ascending order of names
    QVERIFY(request.bytes.contains("content of the file"));
    QVERIFY(!request.bytes.contains("skipped"));
}

void TestTransfer::redirect_isFollowed()
{
    Server server;
    server.queueAnswer("HTTP/1.1 302 Found\r\nLocation: /there\r\nX: first\r\nContent-Length: 0\r\n"
                       "Connection: close\r\n\r\n");
    server.queueAnswer("HTTP/1.1 200 OK\r\nX: last\r\nContent-Length: 2\r\n\r\nok");
    VFetchTask task(1);
    task.setUrl(server.url("/here"));
    const QSignalSpy successes(&task, &VFetchTask::success);

    run(task);

    QCOMPARE(successes.count(), 1);
    QCOMPARE(server.requests().at(1).firstLine(), QByteArray("GET /there HTTP/1.1"));
    QCOMPARE(task.responseHeader().allValues(QStringLiteral("x")), QStringList{QStringLiteral("last")});
}

void TestTransfer::redirectWithoutAPlace_isAFailure()
{
    Server server;
    server.queueAnswer(300, "choose");
    VFetchTask task(1);
    task.setUrl(server.url());
    const QSignalSpy failures(&task, &VFetchTask::failure);

    run(task);

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 300);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray("choose"));
}

void TestTransfer::compressedAnswer_isDecoded()
{
    // "compressed text" as gzip packs it
    static const QByteArray packed =
        QByteArray::fromHex("1f8b08000000000002034bcecf2d284a2d2e4e4d512849ad280100c218d8d80f000000");
    Server server;
    server.queueAnswer("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: " +
                       QByteArray::number(packed.size()) + "\r\n\r\n" + packed);
    VFetchTask task(1);
    task.setUrl(server.url());
    const QSignalSpy successes(&task, &VFetchTask::success);

    run(task);

    QVERIFY(server.requests().constFirst().bytes.contains("\r\nAccept-Encoding: "));
    QCOMPARE(successes.count(), 1);
    QCOMPARE(successes.at(0).at(0).toByteArray(), QByteArray("compressed text"));
}

void TestTransfer::closedConnection_isATransferError()
{
    Server server; // no answer queued: it closes
    VFetchTask task(1);
    task.setUrl(server.url());
    const QSignalSpy failures(&task, &VFetchTask::failure);

    run(task);

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 52);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(task.status(), 0);
}

void TestTransfer::bodyCutOff_isATransferErrorWithoutBody()
{
    Server server;
    server.queueAnswer("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf");
    VFetchTask task(1);
    task.setUrl(server.url());
    const QSignalSpy failures(&task, &VFetchTask::failure);

    run(task);

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 18);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(task.status(), 0);
}

void TestTransfer::unresolvedHost_isCodeSix()
{
    VFetchTask task(1);
    task.setUrl(QStringLiteral("http://no-such-host.invalid/"));
    const QSignalSpy failures(&task, &VFetchTask::failure);
    PlatformCapture::clear();

    run(task);

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 6);
    QVERIFY(PlatformCapture::texts(LogPriority::Error)
                .constFirst()
                .startsWith("FetchTask: [Error] 6 http://no-such-host.invalid/ "));
}

void TestTransfer::secondRun_startsAfresh()
{
    Server server;
    server.queueAnswer(200, "one");
    server.queueAnswer(404, "two");
    VFetchTask task(1);
    task.setUrl(server.url());
    const QSignalSpy failures(&task, &VFetchTask::failure);

    run(task);
    run(task);

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 404);
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray("two"));
    QCOMPARE(task.responseBody(), QByteArray("two"));
}

QTEST_GUILESS_MAIN(TestTransfer)
#include "tst_transfer.moc"
