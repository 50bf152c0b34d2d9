#include "authority.h"
#include "deviceundertest.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <vector>

/// Servers that the daemon must not talk to: none of them gets a request, and each is tried again.
class TestTls : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void serverIsNotTrustworthy_getsNoRequestAndIsTriedAgain();
    void refusedServerIsMended_isTriedAfterFiveSecondsAndAccepted();
    void redirectToAnotherScheme_isFollowedWithoutTheKey();
};

namespace
{
constexpr int retryMs = 5000;
constexpr int slackMs = 3000 * slowdown;
const auto serverAddress = "IP:127.0.0.1"_text;

/// A device whose daemon trusts one authority alone, and whose server is made in each test.
class Device
{
public:
    explicit Device(const QString &bundle)
        : daemon(QStringLiteral(QWIXTD_PROGRAM), bundle)
    {
        device.server().stop();
    }

    bool start(const Authority::Identity &identity, quint16 port = 0)
    {
        return server().start(identity.certificate, identity.key, port) && start(server().host());
    }

    bool start(const QString &host)
    {
        url = "https://" + host.toLatin1() + "/api/v1/qwixt/apps";
        return device.startServices() && daemon.start(device.bus().address(), host);
    }

    DeveloperServer &server() { return device.server(); }

    QByteArray refusal(CURLcode code) const
    {
        return "E/QWIXTD: FetchTask: [Error] " + QByteArray::number(code) + ' ' + url + curlsWords(code);
    }

    DeviceUnderTest device;
    QwixtdProcess daemon;

private:
    QByteArray url;
};

/// Whether a request was refused and its retry too; a slow machine may see more of them.
bool areRefusals(const QList<QByteArray> &lines, const QByteArray &refusal)
{
    return lines.size() >= 2 && lines.count(refusal) == lines.size();
}

/// A real server that speaks no TLS newer than 1.0, at the level of security that this needs nowadays.
class OldServer
{
public:
    explicit OldServer(const Authority::Identity &identity)
    {
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start("setpriv"_text,
                      {"--pdeathsig"_text, "KILL"_text, "openssl"_text, "s_server"_text, "-accept"_text,
                       "127.0.0.1:0"_text, "-tls1"_text, "-cipher"_text, "ALL:@SECLEVEL=0"_text, "-cert"_text,
                       identity.certificate, "-key"_text, identity.key});
    }

    ~OldServer()
    {
        process.kill();
        process.waitForFinished();
    }

    /// "127.0.0.1:PORT"; empty until it listens.
    QString host()
    {
        static const QRegularExpression accept("ACCEPT (127\\.0\\.0\\.1:\\d+)"_text);
        return accept.match(QString::fromLatin1(output())).captured(1);
    }

    /// What it says, and what clients say to it.
    QByteArray output()
    {
        process.waitForReadyRead(0);
        written += process.readAll();
        return written;
    }

private:
    QProcess process;
    QByteArray written;
};
} // namespace

void TestTls::serverIsNotTrustworthy_getsNoRequestAndIsTriedAgain()
{
    Authority trusted;
    Authority stranger;
    const struct {
        const char *name;
        Authority::Identity identity;
    } servers[] = {
        {"untrusted issuer", stranger.issue(serverAddress)},
        {"self-signed", trusted.issueSelfSigned(serverAddress)},
        {"another host", trusted.issue("DNS:other.example"_text)},
        {"expired", trusted.issue(serverAddress, -20, -10)},
        {"not yet valid", trusted.issue(serverAddress, 10, 20)},
    };
    // All at a time: each takes as long as a retry.
    std::vector<std::unique_ptr<Device>> devices;
    for (const auto &each : servers) {
        devices.push_back(std::make_unique<Device>(trusted.bundle()));
        QVERIFY2(devices.back()->start(each.identity), each.name);
    }
    OldServer old(trusted.issue(serverAddress));
    EVENTUALLY(!old.host().isEmpty());
    Device withOld(trusted.bundle());
    QVERIFY(withOld.start(old.host()));

    for (std::size_t i = 0; i < devices.size(); ++i) {
        const QByteArray refusal = devices[i]->refusal(CURLE_PEER_FAILED_VERIFICATION);
        EVENTUALLY(areRefusals(devices[i]->daemon.errorLines(), refusal));
        QVERIFY2(devices[i]->server().requestCount() == 0, servers[i].name);
    }
    const QByteArray refusal = withOld.refusal(CURLE_SSL_CONNECT_ERROR);
    EVENTUALLY(areRefusals(withOld.daemon.errorLines(), refusal));
    // Refused by the client, or by the server already when the client's library has forgotten that version.
    QVERIFY2(old.output().contains("ERROR"), old.output().constData());
    QVERIFY2(!old.output().contains("HTTP/1.1"), old.output().constData());
}

void TestTls::refusedServerIsMended_isTriedAfterFiveSecondsAndAccepted()
{
    Authority authority;
    const Authority::Identity mended = authority.issue(serverAddress);
    Device device(authority.bundle());
    QElapsedTimer sinceRefusal;
    const auto connection =
        connect(&device.server(), &HttpServer::handshakeFailed, this, [&] { sinceRefusal.start(); });
    QVERIFY(device.start(authority.issue(serverAddress, -20, -10)));
    EVENTUALLY(sinceRefusal.isValid());
    disconnect(connection);

    const quint16 port = device.server().port();
    device.server().stop();
    QVERIFY(device.server().start(mended.certificate, mended.key, port));

    EVENTUALLY_EQUAL(device.device.announced(), QStringList("daemonDidStarted()"_text));
    const qint64 elapsedMs = sinceRefusal.elapsed();
    QVERIFY2(elapsedMs >= retryMs && elapsedMs < retryMs + slackMs, QByteArray::number(elapsedMs));
    QCOMPARE(device.server().requestCount(), 1);
    QVERIFY(device.server().requests().at(0).header("Authorization").startsWith("Basic "));
}

void TestTls::redirectToAnotherScheme_isFollowedWithoutTheKey()
{
    DeviceUnderTest device;
    HttpServer plain;
    QVERIFY(plain.start());
    plain.setScript([](const HttpRequest &) { return HttpAnswer(); });
    QVERIFY(device.startAll());
    const QByteArray location = plain.url("/there"_text).toLatin1();
    device.server().setScript([=](const HttpRequest &) {
        return HttpAnswer::exactly("HTTP/1.1 307 Temporary Redirect\r\nLocation: " + location +
                                   "\r\nContent-Length: 0\r\n\r\n");
    });

    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));

    EVENTUALLY_EQUAL(plain.requestCount(), 1);
    QVERIFY(device.server().requests().at(1).header("Authorization").startsWith("Basic "));
    const HttpRequest redirected = plain.requests().at(0);
    QCOMPARE(redirected.firstLine(), QByteArray("POST /there HTTP/1.1"));
    QCOMPARE(redirected.body, QByteArray("id=d9&identifier=u1&name=Clock&type=t"));
    QVERIFY(!redirected.bytes.toLower().contains("authorization"));
}

QTEST_GUILESS_MAIN(TestTls)
#include "tst_qwixtd_tls.moc"
