#include "certificates.h"
#include "privatebus.h"
#include "terminal.h"

#include <QtTest>

#include <QDBusConnection>
#include <QDBusMessage>

#include <csignal>
#include <memory>
#include <sys/stat.h>
#include <sys/wait.h>

namespace
{
constexpr int patienceMs = 20000;
const auto connectionName = QStringLiteral("terminal test");
} // namespace

#define EVENTUALLY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, patienceMs)
#define EVENTUALLY_LAST_ROW(expected)                                                                        \
    QTRY_COMPARE_WITH_TIMEOUT(terminal->screen().last(), expected, patienceMs)

/// The simulator as a person uses it on a terminal.
class TestDevicesimTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void typedCommand_isAnsweredAboveANewPrompt();
    void traceLine_leavesTheTypedTextWhole_data();
    void traceLine_leavesTheTypedTextWhole();
    void traceLine_leavesTheCursorInTheMidstOfTheText();
    void lineOfTheShownPipe_leavesTheTypedTextWhole();
    void earlierCommand_comesBackWithTheArrow();
    void endOfInput_endsTheProgram();
    void signal_givesTheTerminalBack_data();
    void signal_givesTheTerminalBack();
    void interruptKey_endsTheProgram();
    void programStoppedByAShell_goesOn();
    void lostBus_endsTheProgramWithAMessage();

private:
    QStringList arguments() const;
    QStringList rowsWith(const QString &text);
    void causeATraceLine();

    QString pipePath() const;

    const QTemporaryDir directory;
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<Terminal> terminal;
};

void TestDevicesimTerminal::initTestCase()
{
    QCOMPARE(::mkfifo(pipePath().toLocal8Bit().constData(), 0600), 0);
}

void TestDevicesimTerminal::init()
{
    bus = std::make_unique<PrivateBus>();
    QVERIFY(bus->start());
    terminal = std::make_unique<Terminal>();
    QVERIFY(terminal->start(QStringLiteral(QWIXT_DEVICESIM), arguments()));
    EVENTUALLY_LAST_ROW(QStringLiteral("device> |"));
    // The services have announced themselves; nothing more comes by itself.
    QCOMPARE(rowsWith(QStringLiteral("ready: https://127.0.0.1:")).size(), 1);
    QVERIFY(!terminal->isAsAtFirst());
}

void TestDevicesimTerminal::cleanup()
{
    QDBusConnection::disconnectFromBus(connectionName);
    QCOMPARE(terminal->notUnderstood(), QByteArray());
    terminal.reset();
    bus.reset();
}

QString TestDevicesimTerminal::pipePath() const
{
    return directory.filePath(QStringLiteral("shown"));
}

QStringList TestDevicesimTerminal::arguments() const
{
    return {QStringLiteral("--bus"),         bus->address(),
            QStringLiteral("--certificate"), Certificates::shared().serverCertificate(),
            QStringLiteral("--key"),         Certificates::shared().serverKey(),
            QStringLiteral("--show"),        pipePath()};
}

QStringList TestDevicesimTerminal::rowsWith(const QString &text)
{
    return terminal->screen().filter(text);
}

// Asks the simulated device for something: that is one trace line. It is on its way when this returns.
void TestDevicesimTerminal::causeATraceLine()
{
    QDBusConnection::connectToBus(bus->address(), connectionName)
        .call(QDBusMessage::createMethodCall(QStringLiteral("vorlet.daemon"), QStringLiteral("/general"),
                                             QStringLiteral("com.vorlet.daemon.general"),
                                             QStringLiteral("remoteId")));
}

void TestDevicesimTerminal::typedCommand_isAnsweredAboveANewPrompt()
{
    terminal->type("list\r");

    EVENTUALLY(rowsWith(QStringLiteral("the server holds 0 application(s)")).size() == 1);
    EVENTUALLY_LAST_ROW(QStringLiteral("device> |"));
    const QStringList rows = terminal->screen();
    QCOMPARE(rows.at(rows.size() - 3), QStringLiteral("device> list"));
    QCOMPARE(rows.at(rows.size() - 2), QStringLiteral("the server holds 0 application(s)"));
}

void TestDevicesimTerminal::traceLine_leavesTheTypedTextWhole_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QStringList>("shown");
    const QString row(Terminal::columns - 8, QLatin1Char('x'));
    QTest::newRow("nothing") << QByteArray() << QStringList{QStringLiteral("device> |")};
    QTest::newRow("a word") << QByteArray("reg") << QStringList{QStringLiteral("device> reg|")};
    QTest::newRow("more than a row") << row.toLatin1() + "yy"
                                     << QStringList{QStringLiteral("device> ") + row, QStringLiteral("yy|")};
    QTest::newRow("exactly a row") << row.toLatin1()
                                   << QStringList{QStringLiteral("device> ") + row, QStringLiteral("|")};
}

void TestDevicesimTerminal::traceLine_leavesTheTypedTextWhole()
{
    QFETCH(const QByteArray, typed);
    QFETCH(const QStringList, shown);
    terminal->type(typed);
    const auto endOfScreen = [&] {
        return QStringList(terminal->screen().mid(terminal->screen().size() - shown.size()));
    };
    QTRY_COMPARE_WITH_TIMEOUT(endOfScreen(), shown, patienceMs);
    const auto rowsBefore = terminal->screen().size();

    causeATraceLine();

    EVENTUALLY(rowsWith(QStringLiteral("vorlet.daemon remoteId() -> (\"\")")).size() == 1);
    QTRY_COMPARE_WITH_TIMEOUT(endOfScreen(), shown, patienceMs);
    // The trace line took one row, the one where the prompt had been, and nothing of the prompt stayed
    // behind.
    QCOMPARE(terminal->screen().size(), rowsBefore + 1);
    QVERIFY(
        QRegularExpression(QStringLiteral("^[0-9:.]+ bus    vorlet\\.daemon remoteId\\(\\) -> \\(\"\"\\)$"))
            .match(terminal->screen().at(rowsBefore - shown.size()))
            .hasMatch());
    QCOMPARE(rowsWith(QStringLiteral("device>")).size(), 1);
}

void TestDevicesimTerminal::traceLine_leavesTheCursorInTheMidstOfTheText()
{
    terminal->type("lst\x02\x02"); // twice to the left
    EVENTUALLY_LAST_ROW(QStringLiteral("device> l|st"));

    causeATraceLine();
    EVENTUALLY(rowsWith(QStringLiteral("vorlet.daemon remoteId()")).size() == 1);
    EVENTUALLY_LAST_ROW(QStringLiteral("device> l|st"));
    terminal->type("i\r");

    EVENTUALLY(rowsWith(QStringLiteral("the server holds 0 application(s)")).size() == 1);
}

void TestDevicesimTerminal::lineOfTheShownPipe_leavesTheTypedTextWhole()
{
    const QByteArray line = "I/QWIXTD: a line of the daemon's log";
    terminal->type("reg");
    EVENTUALLY_LAST_ROW(QStringLiteral("device> reg|"));

    // As a daemon does that is started again: each writer ends before the next.
    for (int writer = 0; writer < 2; ++writer) {
        QFile file(pipePath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(line + '\n');
    }

    EVENTUALLY(rowsWith(QString::fromLatin1(line)).size() == 2);
    EVENTUALLY_LAST_ROW(QStringLiteral("device> reg|"));
    QCOMPARE(terminal->screen().filter(QRegularExpression(QStringLiteral("^I/QWIXTD: .* log$"))).size(), 2);
}

void TestDevicesimTerminal::earlierCommand_comesBackWithTheArrow()
{
    terminal->type("list\r");
    EVENTUALLY_LAST_ROW(QStringLiteral("device> |"));

    terminal->type("\x1b[A");
    EVENTUALLY_LAST_ROW(QStringLiteral("device> list|"));
    terminal->type("\r");

    EVENTUALLY(rowsWith(QStringLiteral("the server holds 0 application(s)")).size() == 2);
}

void TestDevicesimTerminal::endOfInput_endsTheProgram()
{
    QVERIFY(terminal->endStatus() < 0);

    terminal->type("\x04");

    EVENTUALLY(terminal->endStatus() >= 0);
    QVERIFY(WIFEXITED(terminal->endStatus()));
    QCOMPARE(WEXITSTATUS(terminal->endStatus()), 0);
    QVERIFY(terminal->isAsAtFirst());
    QVERIFY(rowsWith(QStringLiteral("device>")).isEmpty());
}

void TestDevicesimTerminal::signal_givesTheTerminalBack_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGQUIT") << SIGQUIT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestDevicesimTerminal::signal_givesTheTerminalBack()
{
    QFETCH(const int, number);

    terminal->sendSignal(number);

    EVENTUALLY(terminal->endStatus() >= 0);
    QVERIFY(WIFSIGNALED(terminal->endStatus()));
    QCOMPARE(WTERMSIG(terminal->endStatus()), number);
    QVERIFY(terminal->isAsAtFirst());
}

void TestDevicesimTerminal::interruptKey_endsTheProgram()
{
    terminal->type("half a comm\x03");

    EVENTUALLY(terminal->endStatus() >= 0);
    QVERIFY(WIFSIGNALED(terminal->endStatus()));
    QCOMPARE(WTERMSIG(terminal->endStatus()), SIGINT);
    QVERIFY(terminal->isAsAtFirst());
}

void TestDevicesimTerminal::programStoppedByAShell_goesOn()
{
    terminal->type("quit\r");
    EVENTUALLY(terminal->endStatus() >= 0);
    const auto script = QStringLiteral("set -m; \"$0\" \"$@\"; echo first stop; read -r line; "
                                       "fg; echo second stop; read -r line; fg");
    terminal = std::make_unique<Terminal>();
    QVERIFY(terminal->start(QStringLiteral("/bin/bash"),
                            QStringList{QStringLiteral("-c"), script, QStringLiteral(QWIXT_DEVICESIM)} +
                                arguments()));
    EVENTUALLY_LAST_ROW(QStringLiteral("device> |"));

    const QStringList stops{QStringLiteral("first stop"), QStringLiteral("second stop")};
    for (int index = 0; index < stops.size(); ++index) {
        terminal->type("\x1a");
        EVENTUALLY(rowsWith(stops.at(index)).size() == 1);
        QVERIFY(terminal->isAsAtFirst());
        terminal->type("\r");
        EVENTUALLY(!terminal->isAsAtFirst());
        terminal->type("no-such\r");
        EVENTUALLY(rowsWith(QStringLiteral("error: no such command: \"no-such\"")).size() == index + 1);
        EVENTUALLY_LAST_ROW(QStringLiteral("device> |"));
    }
}

void TestDevicesimTerminal::lostBus_endsTheProgramWithAMessage()
{
    terminal->type("half a comm");
    EVENTUALLY_LAST_ROW(QStringLiteral("device> half a comm|"));

    bus->stop();

    EVENTUALLY(terminal->endStatus() >= 0);
    QVERIFY(WIFEXITED(terminal->endStatus()));
    QCOMPARE(WEXITSTATUS(terminal->endStatus()), 1);
    QVERIFY(terminal->isAsAtFirst());
    QVERIFY(terminal->screen().join(QString()).contains(
        QStringLiteral("qwixt-devicesim: lost the bus at unix:")));
    QVERIFY(rowsWith(QStringLiteral("device>")).isEmpty());
}

QTEST_GUILESS_MAIN(TestDevicesimTerminal)
#include "tst_devicesim_terminal.moc"
