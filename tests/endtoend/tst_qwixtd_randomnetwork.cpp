#include "deviceundertest.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>

/// An internet that goes and comes at random, under a server that fails a fifth of all requests. Ends with 30
/// s of calm, after which everything asked has been done and announced, once.
///
/// The environment sets its length, QWIXTD_RANDOMNETWORK_SECONDS, and repeats a run,
/// QWIXTD_RANDOMNETWORK_SEED.
class TestRandomNetwork : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everythingAsked_isDoneOnce();
};

namespace
{

constexpr int defaultSeconds = 15;
constexpr int asksPerSecond = 4;
constexpr int calmMs = 30000 * slowdown;

int secondsOfStorm()
{
    const int seconds = qEnvironmentVariableIntValue("QWIXTD_RANDOMNETWORK_SECONDS");
    return seconds > 0 ? seconds : defaultSeconds;
}

quint32 seedOfRun()
{
    const int seed = qEnvironmentVariableIntValue("QWIXTD_RANDOMNETWORK_SEED");
    return seed != 0 ? static_cast<quint32>(seed) : QRandomGenerator::system()->bounded(1U, 1000000U);
}

/// A fifth of the answers fail; all take up to a quarter of a second.
void failAtRandom(DeveloperServer &server, QRandomGenerator &random, int answers)
{
    const QList<ServerFault> failures = {ServerFault::withStatus(503), ServerFault::withStatus(500),
                                         ServerFault::withStatus(401), ServerFault::withStatus(429),
                                         ServerFault::withClosedConnection()};
    for (int i = 0; i < answers; ++i) {
        const bool fails = random.bounded(5) == 0;
        ServerFault fault =
            fails ? failures.at(random.bounded(static_cast<int>(failures.size()))) : ServerFault();
        fault.delayMs = random.bounded(250);
        server.failNext(1, fault);
    }
}

/// What was asked: the requests that must reach the server, and what must be announced.
struct Asked {
    QStringList requests;
    QStringList announcements = {started};
};

bool ask(DeviceUnderTest &device, int number, Asked &asked)
{
    const QString id = QString::number(number);
    switch (number % 3) {
    case 0:
        asked.requests.append(QStringLiteral("POST id=d9&identifier=w%1&name=Name&type=t").arg(id));
        asked.announcements.append(QStringLiteral("applicationRegistered(w%1, app, t)").arg(id));
        return device.registerApplication("w"_text + id, "Name"_text, "t"_text);
    case 1:
        asked.requests.append(QStringLiteral("PUT app_id=kept-%1&name=Other&type=t").arg(id));
        return device.updateApplication("kept-"_text + id, "u2"_text, "Other"_text, "t"_text);
    default:
        asked.requests.append(QStringLiteral("DELETE app_id=gone-%1&type=t").arg(id));
        asked.announcements.append(QStringLiteral("applicationDeleted(u1, gone-%1, t)").arg(id));
        return device.deleteApplication("gone-"_text + id, "u1"_text, "t"_text);
    }
}

/// The announcements without the ids that the server gave.
QStringList announced(const DeviceUnderTest &device)
{
    return device.announced().replaceInStrings(QRegularExpression("app-\\d+"_text), "app"_text);
}

/// The requests that the server did, in order; the list apart.
QStringList carriedOut(DeviceUnderTest &device)
{
    QStringList texts;
    const QList<HttpRequest> requests = device.server().requests();
    for (const HttpRequest &request : requests) {
        if (request.method != "GET" && request.status >= 200 && request.status <= 299) {
            texts.append(QString::fromUtf8(request.method + ' ' + request.body));
        }
    }
    return texts;
}

QStringList sorted(QStringList texts)
{
    texts.sort();
    return texts;
}

} // namespace

void TestRandomNetwork::everythingAsked_isDoneOnce()
{
    const int seconds = secondsOfStorm();
    const quint32 seed = seedOfRun();
    qInfo("%d s of storm, seed %u", seconds, seed);
    QRandomGenerator random(seed);
    DeviceUnderTest device;
    for (int i = 0; i < asksPerSecond * seconds; ++i) {
        const QString id = QString::number(i);
        device.server().addApplication(listedApplication("kept-"_text + id, "u2"_text, "Name"_text));
        device.server().addApplication(listedApplication("gone-"_text + id, "u1"_text, "Name"_text));
    }
    QVERIFY(device.startAll());
    failAtRandom(device.server(), random, 10 * asksPerSecond * seconds);
    Asked asked;

    QElapsedTimer storm;
    storm.start();
    for (int number = 0; number < asksPerSecond * seconds; ++number) {
        QVERIFY(ask(device, number, asked));
        while (storm.elapsed() < (number + 1) * 1000 / asksPerSecond) {
            QVERIFY(device.setInternetAvailable(random.bounded(3) != 0));
            QTest::qWait(random.bounded(10, 400));
        }
    }
    device.server().clearFaults();
    QVERIFY(device.setInternetAvailable(true));

    QTRY_COMPARE_WITH_TIMEOUT(sorted(carriedOut(device)), sorted(asked.requests), calmMs);
    QTRY_COMPARE_WITH_TIMEOUT(sorted(announced(device)), sorted(asked.announcements), 1000 * slowdown);
    QTest::qWait(6000); // grace time: longer than a retry takes
    QCOMPARE(sorted(carriedOut(device)), sorted(asked.requests));
    QCOMPARE(device.server().maximumConcurrent(), 1);
    qInfo("%d asked, %d requests sent", static_cast<int>(asked.requests.size()),
          device.server().requestCount());
}

int main(int argc, char *argv[])
{
    // A storm may be longer than a test function usually takes.
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number((secondsOfStorm() + 120) * 1000));
    const QCoreApplication application(argc, argv);
    TestRandomNetwork test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_qwixtd_randomnetwork.moc"
