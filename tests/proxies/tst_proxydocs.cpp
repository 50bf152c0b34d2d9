#include "proxydoc.h"

#include <QDirIterator>
#include <QFile>
#include <QtTest>

namespace
{

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The header of each class, by the class's full name.
QMap<QString, QString> headers()
{
    QMap<QString, QString> found;
    QDirIterator files(QStringLiteral(PROXIES_DIRECTORY), {QStringLiteral("*proxy.h")}, QDir::Files,
                       QDirIterator::Subdirectories);
    const QRegularExpression name(QStringLiteral("\\nnamespace (\\w+)\\n.*\\nclass (\\w+) :"),
                                  QRegularExpression::DotMatchesEverythingOption);
    while (files.hasNext()) {
        const QString content = contentOf(files.next());
        const QRegularExpressionMatch match = name.match(content);
        found.insert(match.captured(1) + QStringLiteral("::") + match.captured(2), content);
    }
    return found;
}

} // namespace

/// Holds what is written about the members against what the tables say that they send.
class TestProxyDocs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void table_isUpToDate();
    void argumentsOfTheDesign_areMarkedFixed();
    void header_saysWhatEachMemberSends();
    void header_warnsOfDroppedAnswers();
};

void TestProxyDocs::table_isUpToDate()
{
    const QString table = proxyTable();

    const QString content = contentOf(QStringLiteral(PROXY_DOCUMENT));

    QVERIFY(table.count(QLatin1Char('\n')) > 300);
    QVERIFY2(content.endsWith(table), "docs/proxies.md is stale: build the target proxydocs");
}

void TestProxyDocs::argumentsOfTheDesign_areMarkedFixed()
{
    QStringList fixed;
    int ofTheGeneralProxy = 0;

    for (const DocumentedMember &member : documentedMembers()) {
        if (member.areArgumentsFixed && member.className == QStringLiteral("Daemon::GeneralProxy")) {
            ++ofTheGeneralProxy;
        } else if (member.areArgumentsFixed) {
            fixed.append(member.name + QLatin1Char(' ') + member.signature);
        }
    }

    // 16 commands, 21 getters, and two of the signals.
    QCOMPARE(ofTheGeneralProxy, 39);
    fixed.sort();
    QCOMPARE(fixed,
             (QStringList{QStringLiteral("internetAvailabilityChanged b"),
                          QStringLiteral("isInternetAvailable "), QStringLiteral("isInternetAvailable "),
                          QStringLiteral("listOfInstalledWidgets "), QStringLiteral("newWidgetCreated ss"),
                          QStringLiteral("widgetDeleted ss"), QStringLiteral("windowServerDidStarted ")}));
}

void TestProxyDocs::header_saysWhatEachMemberSends()
{
    const QMap<QString, QString> content = headers();
    QStringList missing;

    for (const DocumentedMember &member : documentedMembers()) {
        const bool isSignal = member.shape == QStringLiteral("signal subscription");
        const QString line =
            QStringLiteral("/// %1%2(%3)%4:")
                .arg(isSignal ? QStringLiteral("Signal ") : QString(), member.name, member.signature,
                     member.result.isEmpty() ? QString() : QStringLiteral(" -> ") + member.result);
        if (!content.value(member.className).contains(line)) {
            missing.append(member.className + QLatin1Char(' ') + line);
        }
    }

    QCOMPARE(content.size(), 24);
    QCOMPARE(missing, QStringList());
}

void TestProxyDocs::header_warnsOfDroppedAnswers()
{
    const QRegularExpression member(
        QStringLiteral("\\n    ([^\\n/]*\\bQDBus::CallMode mode\\)|[^\\n/]*\\bQDBusPendingCall [^\\n]*\\))"));
    int members = 0;
    QStringList silent;

    for (const QString &content : headers()) {
        QRegularExpressionMatchIterator matches = member.globalMatch(content);
        while (matches.hasNext()) {
            const QString declaration = matches.next().captured(1);
            ++members;
            if (!declaration.startsWith(QStringLiteral("void ")) &&
                !declaration.startsWith(QStringLiteral("[[nodiscard]] "))) {
                silent.append(declaration);
            }
        }
    }

    QVERIFY(members > 250);
    QCOMPARE(silent, QStringList());
}

QTEST_GUILESS_MAIN(TestProxyDocs)
#include "tst_proxydocs.moc"
