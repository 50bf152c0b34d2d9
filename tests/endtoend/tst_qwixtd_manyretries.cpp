#include "deviceundertest.h"

/// Many requests that fail at the same time: not one retry is lost, and none is sent twice.
class TestManyRetries : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void tenRegistrationsFail_areAllRetriedAndAnnounced();
    void requestsOfAllKindsFail_areAllRetriedAndAnnounced();
};

namespace
{
constexpr int firstId = 1;
constexpr int count = 10;
constexpr int ofEachKind = 6;

QStringList sorted(QStringList texts)
{
    texts.sort();
    return texts;
}
} // namespace

void TestManyRetries::tenRegistrationsFail_areAllRetriedAndAnnounced()
{
    DeviceUnderTest device;
    QVERIFY(device.startAll());
    device.server().failNext(count, ServerFault::withStatus(503));
    QStringList requests;
    QStringList announcements;

    for (int i = firstId; i < firstId + count; ++i) {
        QVERIFY(device.registerApplication("u1"_text, QStringLiteral("Name %1").arg(i),
                                           QStringLiteral("t%1").arg(i)));
        requests.append(QStringLiteral("POST id=d9&identifier=u1&name=Name %1&type=t%1").arg(i));
        announcements.append(QStringLiteral("applicationRegistered(u1, app-%1, t%1)").arg(i));
    }

    EVENTUALLY_EQUAL(device.announced().size(), count + 1);
    // Retried in the order in which they failed, after all of them had failed.
    QCOMPARE(device.requested().mid(1), requests + requests);
    QCOMPARE(device.announced().mid(1), announcements);
    const QList<HttpRequest> seen = device.server().requests();
    const qint64 pauseMs = seen.at(1 + count).receivedAtMs - seen.at(1).answeredAtMs;
    QVERIFY2(isRetryPause(pauseMs), QByteArray::number(pauseMs).constData());
    QCOMPARE(device.server().maximumConcurrent(), 1);
}

void TestManyRetries::requestsOfAllKindsFail_areAllRetriedAndAnnounced()
{
    DeviceUnderTest device;
    for (int i = 0; i < ofEachKind; ++i) {
        const QString number = QString::number(i);
        device.server().addApplication(listedApplication("delete-"_text + number, "u1"_text, "Name"_text));
        device.server().addApplication(listedApplication("update-"_text + number, "u2"_text, "Name"_text));
    }
    QVERIFY(device.startAll());
    device.server().failNext(3 * ofEachKind, ServerFault::withStatus(503));
    QStringList requests;
    QStringList announcements;

    for (int i = 0; i < ofEachKind; ++i) {
        const QString number = QString::number(i);
        QVERIFY(device.registerApplication("u3"_text, number, "type-"_text + number));
        QVERIFY(device.deleteApplication("delete-"_text + number, "u1"_text, "t"_text));
        QVERIFY(device.updateApplication("update-"_text + number, "u2"_text, "Other"_text, "t"_text));
        requests.append(QStringLiteral("POST id=d9&identifier=u3&name=%1&type=type-%1").arg(number));
        requests.append(QStringLiteral("DELETE app_id=delete-%1&type=t").arg(number));
        requests.append(QStringLiteral("PUT app_id=update-%1&name=Other&type=t").arg(number));
        announcements.append(
            QStringLiteral("applicationRegistered(u3, app-%1, type-%2)").arg(i + 1).arg(number));
        announcements.append(QStringLiteral("applicationDeleted(u1, delete-%1, t)").arg(number));
    }

    EVENTUALLY_EQUAL(device.requested().size(), 1 + 6 * ofEachKind);
    EVENTUALLY_EQUAL(device.announced().size(), 1 + 2 * ofEachKind);
    QCOMPARE(device.requested().mid(1), requests + requests);
    QCOMPARE(sorted(device.announced().mid(1)), sorted(announcements));
    EVENTUALLY_EQUAL(device.lines('I').count("QWixtApplicationManager: Application updated"), ofEachKind);
}

QTEST_GUILESS_MAIN(TestManyRetries)
#include "tst_qwixtd_manyretries.moc"
