#include "deviceundertest.h"
#include "shellprelude.h"

#include <QFile>

/// A daemon that is started without some of its standard files.
class TestStandardFiles : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void closedFiles_areOpenedOnNothingAndRequestsSucceed_data();
    void closedFiles_areOpenedOnNothingAndRequestsSucceed();
};

namespace
{
const QStringList names = {"input"_text, "output"_text, "errors"_text};

// What the process has open under this number, or nothing when it has nothing there.
QString openFile(qint64 processId, int number)
{
    return QFile::symLinkTarget(QStringLiteral("/proc/%1/fd/%2").arg(processId).arg(number));
}
} // namespace

void TestStandardFiles::closedFiles_areOpenedOnNothingAndRequestsSucceed_data()
{
    QTest::addColumn<QList<int>>("closed");

    for (int combination = 0; combination < 8; ++combination) {
        QStringList closedNames;
        QList<int> closed;
        for (int file = 0; file < names.size(); ++file) {
            if ((combination & (1 << file)) != 0) {
                closed.append(file);
                closedNames.append(names.at(file));
            }
        }
        QTest::newRow(closed.isEmpty() ? "none" : qPrintable(closedNames.join(" and "_text))) << closed;
    }
}

void TestStandardFiles::closedFiles_areOpenedOnNothingAndRequestsSucceed()
{
    QFETCH(QList<int>, closed);
    QByteArray commands = "exec";
    for (const int file : closed) {
        commands += ' ' + QByteArray::number(file) + (file == 0 ? "<&-" : ">&-");
    }
    const ShellPrelude prelude(QStringLiteral(QWIXTD_PROGRAM), commands);
    DeviceUnderTest device(prelude.path());

    QVERIFY(device.startAll());
    QVERIFY(device.registerApplication("u1"_text, "Clock"_text, "t"_text));
    // With a warning to write.
    QVERIFY(device.updateApplication("a9"_text, "u2"_text, "Radio"_text, "t"_text));

    EVENTUALLY_EQUAL(device.announced(), QStringList({started, "applicationRegistered(u1, app-1, t)"_text,
                                                      "applicationRegistered(u2, app-2, t)"_text}));
    for (int file = 0; file < names.size(); ++file) {
        const QString target = openFile(device.program().processId(), file);
        QVERIFY(!target.isEmpty());
        QCOMPARE(target == "/dev/null"_text, closed.contains(file));
    }
    EVENTUALLY_EQUAL(device.lines().size(), closed.contains(2) ? 0 : 5);
}

QTEST_GUILESS_MAIN(TestStandardFiles)
#include "tst_qwixtd_standardfiles.moc"
