#include "httpserver.h"
#include "platformcapture.h"
#include "servewhile.h"
#include "vfetchtask.h"

#include <QSignalSpy>
#include <QtTest>

#include <curl/curl.h>

#include <memory>

namespace
{
const QByteArray bodyText = "id=d9&name=Clock";

// Answers /here with a redirect, and everything else with 200.
class Server : public HttpServer
{
public:
    Server()
    {
        if (!start()) {
            qFatal("no server to test with: %s", qPrintable(errorText()));
        }
    }

    void redirect(int status, const QString &location)
    {
        const QByteArray text = "HTTP/1.1 " + QByteArray::number(status) +
                                " Moved\r\nLocation: " + location.toLatin1() +
                                "\r\nContent-Length: 0\r\n\r\n";
        setScript([text](const HttpRequest &request) {
            return request.target == "/here" ? HttpAnswer::exactly(text) : HttpAnswer();
        });
    }

    QString here() const { return url(QStringLiteral("/here")); }
};

std::unique_ptr<VFetchTask> makeTask(int method, const QString &url)
{
    auto task = std::make_unique<VFetchTask>(1);
    task->setUrl(url);
    task->setRequestMethod(method);
    task->setHeader(QStringLiteral("Authorization"), QStringLiteral("Basic secret"));
    if (method != VFetchTask::Get) {
        task->setBody(bodyText);
    }
    return task;
}

// The server lives on this thread, so the task runs on another one, as it does in the daemon.
void run(VFetchTask &task)
{
    serveWhile([&task] { task.run(); });
}
} // namespace

/// What a redirect makes of a request: SECURITY.md has the same table.
class TestRedirects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void redirect_changesMethodAndBody_data();
    void redirect_changesMethodAndBody();
    void redirectToAnotherServer_losesTheKey_data();
    void redirectToAnotherServer_losesTheKey();
    void redirectToAnotherProtocol_isRefused_data();
    void redirectToAnotherProtocol_isRefused();
    void redirectsWithoutEnd_endTheRequest();
};

void TestRedirects::redirect_changesMethodAndBody_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("method");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("body");

    const struct {
        int method;
        const char *word;
        const char *wordAfterOldRedirect;
    } methods[] = {
        {VFetchTask::Get, "GET", "GET"},
        {VFetchTask::Post, "POST", "GET"},
        {VFetchTask::Put, "PUT", "PUT"},
        {VFetchTask::Delete, "DELETE", "DELETE"},
    };
    for (const int status : {301, 302, 303, 307, 308}) {
        const bool keepsBody = status >= 307;
        for (const auto &each : methods) {
            const bool hasBody = keepsBody && each.method != VFetchTask::Get;
            QTest::addRow("%d %s", status, each.word)
                << status << each.method << QByteArray(keepsBody ? each.word : each.wordAfterOldRedirect)
                << (hasBody ? bodyText : QByteArray());
        }
    }
}

void TestRedirects::redirect_changesMethodAndBody()
{
    QFETCH(int, status);
    QFETCH(int, method);
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, body);
    Server server;
    server.redirect(status, QStringLiteral("/there"));
    const auto task = makeTask(method, server.here());

    run(*task);

    QCOMPARE(task->status(), 200);
    QCOMPARE(server.requestCount(), 2);
    const HttpRequest request = server.requests().at(1);
    QCOMPARE(request.firstLine(), word + " /there HTTP/1.1");
    QCOMPARE(request.bytes.mid(request.bytes.indexOf("\r\n\r\n") + 4), body);
    // The server that the key is for gets it again.
    QCOMPARE(request.header("Authorization"), QByteArray("Basic secret"));
}

void TestRedirects::redirectToAnotherServer_losesTheKey_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("isSameServer");

    QTest::newRow("another port") << QStringLiteral("127.0.0.1") << false;
    QTest::newRow("another name") << QStringLiteral("localhost") << true;
}

void TestRedirects::redirectToAnotherServer_losesTheKey()
{
    QFETCH(QString, host);
    QFETCH(bool, isSameServer);
    Server first;
    Server another;
    Server &target = isSameServer ? first : another;
    first.redirect(307, QStringLiteral("http://%1:%2/there").arg(host).arg(target.port()));
    another.redirect(307, QString());
    const auto task = makeTask(VFetchTask::Post, first.here());

    run(*task);

    QCOMPARE(task->status(), 200);
    QCOMPARE(first.requests().at(0).header("Authorization"), QByteArray("Basic secret"));
    const HttpRequest request = target.requests().constLast();
    QCOMPARE(request.firstLine(), QByteArray("POST /there HTTP/1.1"));
    QVERIFY(!request.bytes.toLower().contains("authorization"));
    QVERIFY(!request.bytes.contains("secret"));
}

void TestRedirects::redirectToAnotherProtocol_isRefused_data()
{
    QTest::addColumn<QString>("location");

    QTest::newRow("file") << QStringLiteral("file:///etc/passwd");
    QTest::newRow("scp") << QStringLiteral("scp://127.0.0.1/there");
    QTest::newRow("gopher") << QStringLiteral("gopher://127.0.0.1/there");
    QTest::newRow("smb") << QStringLiteral("smb://127.0.0.1/there");
    QTest::newRow("dict") << QStringLiteral("dict://127.0.0.1/there");
}

void TestRedirects::redirectToAnotherProtocol_isRefused()
{
    QFETCH(QString, location);
    Server server;
    server.redirect(302, location);
    const auto task = makeTask(VFetchTask::Get, server.here());
    const QSignalSpy failures(task.get(), &VFetchTask::failure);

    run(*task);

    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toInt(), 1); // CURLE_UNSUPPORTED_PROTOCOL
    QCOMPARE(failures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(server.requestCount(), 1);
}

void TestRedirects::redirectsWithoutEnd_endTheRequest()
{
    // As many as the timeout leaves time for; from 8.3 on, libcurl follows 30 and no more.
    const QList<int> ends = {CURLE_OPERATION_TIMEDOUT, CURLE_TOO_MANY_REDIRECTS};
    Server server;
    server.setScript([](const HttpRequest &) {
        HttpAnswer answer =
            HttpAnswer::exactly("HTTP/1.1 302 Found\r\nLocation: /here\r\nContent-Length: 0\r\n\r\n");
        answer.ending = HttpAnswer::Ending::KeepOpen;
        answer.delayMs = 50;
        return answer;
    });
    const auto task = makeTask(VFetchTask::Get, server.here());
    task->setTimeout(3);
    const QSignalSpy failures(task.get(), &VFetchTask::failure);

    run(*task);

    QCOMPARE(failures.count(), 1);
    QVERIFY2(ends.contains(failures.at(0).at(0).toInt()), qPrintable(failures.at(0).at(0).toString()));
    QVERIFY(server.requestCount() > 1);
}

QTEST_GUILESS_MAIN(TestRedirects)
#include "tst_redirects.moc"
