#include "buildundertest.h"
#include "commandinterpreter.h"
#include "deviceundertest.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

/// What is installed to be read says what the programs say of themselves.
class TestInstalledDocuments : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void interfaceFile_isWhatTheDaemonSaysOfItself();
    void simulatorsPage_hasEveryOptionAndNoOther();
    void simulatorsPage_hasEveryCommandAndNoOther();
    void page_namesTheVersion_data();
    void page_namesTheVersion();

private:
    QString content(const char *path) const;

    const QTemporaryDir prefix;
};

namespace
{
const auto daemonsPage = INSTALL_MANDIR "/man8/qwixtd.8";
const auto simulatorsPage = INSTALL_MANDIR "/man1/qwixt-devicesim.1";

// One line a member of the daemon's interface: "method name in:uuid:s". The direction of a signal's arguments
// may be left out, and so may that of a method's.
QStringList membersOf(const QString &introspection)
{
    QStringList members;
    QString member;
    bool isInside = false;
    QXmlStreamReader reader(introspection);
    while (!reader.atEnd()) {
        reader.readNext();
        const QString element = reader.name().toString();
        const QXmlStreamAttributes attributes = reader.attributes();
        const QString name = attributes.value("name"_text).toString();
        if (reader.isStartElement() && element == "interface"_text) {
            isInside = name == "com.vorlet.qwixtd"_text;
        } else if (reader.isStartElement() && (element == "method"_text || element == "signal"_text)) {
            member = element + QLatin1Char(' ') + name;
        } else if (reader.isStartElement() && element == "arg"_text) {
            const bool isSignals = member.startsWith("signal"_text);
            const QString given = attributes.value("direction"_text).toString();
            const QString direction = given.isEmpty() ? (isSignals ? "out"_text : "in"_text) : given;
            member +=
                QStringLiteral(" %1:%2:%3").arg(direction, name, attributes.value("type"_text).toString());
        } else if (isInside && reader.isEndElement() && !member.isEmpty() &&
                   (element == "method"_text || element == "signal"_text)) {
            members.append(member);
        }
    }
    members.sort();
    return reader.hasError() ? QStringList{reader.errorString()} : members;
}

// What the first groups of all matches have taken.
QStringList allMatches(const QString &pattern, const QString &text)
{
    QStringList found;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator matches = expression.globalMatch(text);
    while (matches.hasNext()) {
        found.append(matches.next().captured(1));
    }
    found.sort();
    return found;
}

QString helpOfTheSimulator(QString *problem)
{
    return QString::fromUtf8(
        BuildUnderTest::run(QStringLiteral(SIMULATOR_PROGRAM), {"--help"_text}, problem));
}
} // namespace

void TestInstalledDocuments::initTestCase()
{
    QString problem;
    for (const char *component : {"qwixtd", "simulator"}) {
        BuildUnderTest::install(BuildUnderTest::directory(), QString::fromLatin1(component), prefix.path(),
                                &problem);
    }
    QCOMPARE(problem, QString());
}

QString TestInstalledDocuments::content(const char *path) const
{
    QFile file(prefix.filePath(QString::fromLatin1(path)));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void TestInstalledDocuments::interfaceFile_isWhatTheDaemonSaysOfItself()
{
    DeviceUnderTest device;
    QVERIFY(device.startProgram());

    const QDBusMessage reply = device.call("org.freedesktop.DBus.Introspectable"_text, "Introspect"_text, {});

    const QStringList members = membersOf(reply.arguments().value(0).toString());
    QCOMPARE(members.size(), 6);
    QCOMPARE(membersOf(content(INSTALL_DATADIR "/dbus-1/interfaces/com.vorlet.qwixtd.xml")), members);
}

void TestInstalledDocuments::simulatorsPage_hasEveryOptionAndNoOther()
{
    QString problem;
    const QString help = helpOfTheSimulator(&problem);

    QStringList options = allMatches("^ +(?:-h, |-\\?, -h, )?--([a-z-]+)"_text, help);
    // Qt's own, which is for Qt's developers.
    options.removeAll("help-all"_text);

    QCOMPARE(problem, QString());
    QVERIFY(options.contains("certificate"_text));
    QCOMPARE(allMatches("^\\.It Fl (?:h , )?-([a-z-]+)"_text, content(simulatorsPage)), options);
}

void TestInstalledDocuments::simulatorsPage_hasEveryCommandAndNoOther()
{
    PrivateBus bus;
    QVERIFY(bus.start());
    DeviceSimulator simulator(bus.address());
    CommandInterpreter interpreter(simulator);

    const QStringList commands = allMatches("^  ([a-z-]+) "_text, interpreter.execute("help"_text));

    QVERIFY(commands.contains("quit"_text));
    QCOMPARE(allMatches("^\\.It Ic ([a-z-]+)"_text, content(simulatorsPage)), commands);
}

void TestInstalledDocuments::page_namesTheVersion_data()
{
    QTest::addColumn<QByteArray>("page");
    QTest::newRow("daemon") << QByteArray(daemonsPage);
    QTest::newRow("simulator") << QByteArray(simulatorsPage);
}

void TestInstalledDocuments::page_namesTheVersion()
{
    QFETCH(QByteArray, page);

    const QString text = content(page.constData());

    QVERIFY2(text.contains("This page belongs to version " VERSION ".\n"_text), qPrintable(text));
}

QTEST_GUILESS_MAIN(TestInstalledDocuments)
#include "tst_installeddocuments.moc"
