#pragma once

#include "devicesimulator.h"
#include "privatebus.h"
#include "qwixtdprocess.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QTest>

#include <curl/curl.h>

#include <cstddef>
#include <memory>

/// Short for strings in tests: "u1"_text.
inline QString operator""_text(const char *utf8, std::size_t size)
{
    return QString::fromUtf8(utf8, static_cast<int>(size));
}

/// How many times slower than usual the daemon may be, as it is where something watches each of its steps.
constexpr int slowdown = QWIXTD_TEST_SLOWDOWN;

/// Waits, with a bound, until the condition holds or the values are equal.
#define EVENTUALLY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, DeviceUnderTest::patienceMs)
#define EVENTUALLY_EQUAL(actual, expected)                                                                   \
    QTRY_COMPARE_WITH_TIMEOUT(actual, expected, DeviceUnderTest::patienceMs)

/// What announced() begins with once the daemon has its list.
inline const QString started = "daemonDidStarted()"_text;

/// An application at the server, of the device and of the type "t".
inline ServerApplication listedApplication(const QString &appId, const QString &uuid,
                                           const QString &name = "Clock"_text)
{
    return {"d9"_text, appId, uuid, name, "t"_text};
}

/// The pause before a retry is 5 s; a busy machine may add to it.
inline bool isRetryPause(qint64 milliseconds)
{
    return milliseconds >= 4900 && milliseconds <= 5000 + 1500 * slowdown;
}
/// Grace time for "is not sent again": longer than that pause.
constexpr int retryGraceMs = 5000 + 1500 * slowdown;

/// A space and libcurl's words for a transfer that failed with @p code; they differ from version to version.
QByteArray curlsWords(CURLcode code);

/// A whole device for one test: a private bus, the device's services, the developer server and the real
/// daemon as a process of its own. It begins with an API key, the remote id "d9", the internet and the
/// widgets "u1" to "u3". When it goes, the test fails if the daemon ended unasked or wrote a complaint of the
/// framework or of a sanitizer.
class DeviceUnderTest : public QObject
{
    Q_OBJECT
public:
    /// The program as it is shipped, or the same with its debug and verbose lines.
    enum Build { Shipped, WithDebugLines };

    static constexpr int patienceMs = 60000 * slowdown;
    static const QString apiKey;

    explicit DeviceUnderTest(Build build = Shipped);
    /// With the daemon at this path.
    explicit DeviceUnderTest(const QString &program);
    ~DeviceUnderTest() override;

    PrivateBus &bus();
    DaemonService &daemon();
    WidgetManagerService &widgetManager();
    DeveloperServer &server();
    DaemonWatcher &watcher();
    QwixtdProcess &program();
    /// A bus connection of the test's own.
    QDBusConnection connection() const;

    /// Starts the device's two services.
    bool startServices();
    /// Starts the program and waits until it has read the device and answers on the bus.
    bool startProgram();
    /// Both; then waits for daemonDidStarted, with which the daemon has its list.
    bool startAll();
    /// The server ("host:port") of the next startProgram(), in place of the developer server.
    void useServer(const QString &host);
    /// From now on the program may end by itself.
    void expectExit();

    /// Each returns when the bus has carried the signal, so that a call of the daemon that follows arrives
    /// after it.
    bool setInternetAvailable(bool available);
    bool setApiKey(const QString &key);
    bool deleteWidget(const QString &id);
    bool createWidget(const QString &id);

    /// Each calls the daemon's method and returns when the empty answer is there.
    bool registerApplication(const QString &uuid, const QString &name, const QString &type);
    bool updateApplication(const QString &qwixtId, const QString &uuid, const QString &name,
                           const QString &type);
    bool deleteApplication(const QString &qwixtId, const QString &uuid, const QString &type);
    QDBusMessage call(const QString &interface, const QString &member, const QVariantList &arguments) const;
    QDBusMessage call(const QString &member, const QVariantList &arguments) const;
    /// Calls the daemon's method of this name; true when its answer carries nothing, as it always should.
    bool isAnsweredEmpty(const QString &member, const QVariantList &arguments) const;

    /// The daemon's signals so far, as "applicationRegistered(u1, app-1, clock)".
    QStringList announced() const;
    /// The server's requests so far, as "POST id=d9&identifier=u1".
    QStringList requested() const;
    /// The program's lines on standard error so far.
    QList<QByteArray> lines();
    /// Those of the platform log with this letter, without "<letter>/QWIXTD: ".
    QList<QByteArray> lines(char level);
    bool hasLine(const QByteArray &line);

private Q_SLOTS:
    void noteDeviceSignal(const QDBusMessage &message);

private:
    bool answers() const;
    bool waitForDeviceSignal(const QString &member, int countBefore);

    PrivateBus privateBus;
    const QString connectionName;
    QwixtdProcess process;
    std::unique_ptr<DeviceSimulator> simulator;
    QString serverHost;
    QStringList announcements;
    QMap<QString, int> deviceSignals;
    bool mayExit = false;
};
