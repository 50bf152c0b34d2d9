#include "openmanager.h"
#include "platformcapture.h"
#include "remotetaskwithdescription.h"

#include <QPointer>
#include <QTimer>
#include <QtTest>

/// How often one request runs: never twice at a time, whatever the internet does, and as often as equal
/// deletions ask.
class TestOutstandingRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void internetComesAndGoes_requestsUnderWayAreNotRepeated();
    void resultWithoutSuccess_allowsTheNextRun();
    void requestGivenUp_isSentAgainWhenAskedAgain();
    void retryDue_whileARunIsOutstandingWaitsForItsResult();
    void listAskedWhileOnItsWay_isNotRepeatedAtReady();

    void equalDeletionsBeforeReady_areTwoRequests();
    void equalDeletion_whileOneRunsIsOneMoreAtReady();
    void equalDeletions_endInEveryOrder_data();
    void equalDeletions_endInEveryOrder();
    void equalDeletion_whileARetryWaitsKeepsTheRetry();
    void equalDeletion_whileARetryWaitsOffline_bothGoOutLater();
    void replacingTask_takesTheWaitingRetryOver();

private:
    PrivateBus bus;
};

namespace
{

const CurlFake::Answer ok = {CURLE_OK, 200, R"({"app_id":"a"})", ""};
const CurlFake::Answer unavailable = {CURLE_OK, 503, "", ""};
const CurlFake::Answer notFound = {CURLE_OK, 404, "", ""};
const CurlFake::Answer badRequest = {CURLE_OK, 400, "", ""};
const CurlFake::Answer lost = {CURLE_GOT_NOTHING, 0, "", ""};

QByteArrayList bodies()
{
    QByteArrayList list;
    const QList<CurlFake::Request> requests = CurlFake::requests();
    for (const CurlFake::Request &request : requests) {
        list.append(request.body());
    }
    return list;
}

/// Has every retry due as soon as it waits, until nothing is pending any more.
bool finish(OpenManager &manager)
{
    return QTest::qWaitFor([&manager] {
        manager.retryNow();
        return manager.queue().isEmpty();
    });
}

} // namespace

void TestOutstandingRuns::initTestCase()
{
    QVERIFY(bus.startAsSystemBus());
}

void TestOutstandingRuns::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestOutstandingRuns::internetComesAndGoes_requestsUnderWayAreNotRepeated()
{
    CurlFake::hold();
    CurlFake::setAnswer(ok);
    OpenManager manager;
    manager.beReady();
    QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    for (const char *uuid : {"u1", "u2", "u3"}) {
        manager.registerApplication(text(uuid), text("n"), text("t"));
    }

    for (int i = 0; i < 5; ++i) {
        manager.loseInternet();
        manager.regainInternet();
    }
    manager.registerApplication(text("u4"), text("n"), text("t"));
    CurlFake::release();

    QTRY_COMPARE(registered.count(), 4);
    QTRY_VERIFY(!manager.isRunOutstanding());
    QCOMPARE(bodies(),
             (QByteArrayList{"id=d9&identifier=u1&name=n&type=t", "id=d9&identifier=u2&name=n&type=t",
                             "id=d9&identifier=u3&name=n&type=t", "id=d9&identifier=u4&name=n&type=t"}));
    QCOMPARE(registered.count(), 4);
    QVERIFY(manager.holdsNothing());
}

void TestOutstandingRuns::resultWithoutSuccess_allowsTheNextRun()
{
    CurlFake::queueAnswer(lost);
    CurlFake::setAnswer(ok);
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    manager.loseInternet();
    QTRY_COMPARE(manager.retryCount(), 1);
    QVERIFY(!manager.isRunOutstanding());
    manager.retryNow();
    QTRY_COMPARE(manager.retryCount(), 0); // offline: it waits for the next Ready

    manager.regainInternet();

    QTRY_VERIFY(manager.queue().isEmpty());
    QCOMPARE(CurlFake::requestCount(), 2);
    QVERIFY(manager.holdsNothing());
}

void TestOutstandingRuns::requestGivenUp_isSentAgainWhenAskedAgain()
{
    CurlFake::setAnswer(badRequest);
    OpenManager manager;
    manager.beReady();
    manager.registerApplication(text("u1"), text("n"), text("t"));
    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 1);

    manager.registerApplication(text("u1"), text("n"), text("t"));

    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 2);
}

void TestOutstandingRuns::retryDue_whileARunIsOutstandingWaitsForItsResult()
{
    // A list that was armed again has two runs; the retry of the first must not become a third.
    CurlFake::hold();
    OpenManager manager;
    manager.beReady();
    manager.getListOfRemoteApps();
    QTRY_COMPARE(CurlFake::requestCount(), 1);
    manager.holdInWorker(manager.onlyTask());
    manager.getListOfRemoteApps();
    QCOMPARE(manager.outstandingRunsOf(Descr::list()), 2);
    manager.fail(Descr::list(), 503);
    QCOMPARE(manager.retryCount(), 1);
    manager.letGoInWorker();

    manager.retryNow();
    QTRY_COMPARE(manager.retryCount(), 0);
    CurlFake::release();

    QTRY_VERIFY(manager.holdsNothing());
    QTRY_COMPARE(CurlFake::requestCount(), 2);
    QTest::qWait(50); // grace time: no third run
    QCOMPARE(CurlFake::requestCount(), 2);
}

void TestOutstandingRuns::listAskedWhileOnItsWay_isNotRepeatedAtReady()
{
    CurlFake::hold();
    OpenManager manager;
    manager.beReady();
    manager.getListOfRemoteApps();
    QTRY_COMPARE(CurlFake::requestCount(), 1);

    manager.loseInternet();
    manager.regainInternet();
    CurlFake::release();

    QTRY_VERIFY(manager.queue().isEmpty());
    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 1);
}

void TestOutstandingRuns::equalDeletionsBeforeReady_areTwoRequests()
{
    CurlFake::setAnswer(ok);
    OpenManager manager;
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    manager.deleteApplication(text("a"), text("u"), text("t"));
    manager.deleteApplication(text("a"), text("u"), text("t"));
    QCOMPARE(manager.queue().size(), 2);

    manager.beReady();
    manager.processRequests();
    QCOMPARE(manager.taskCount(), 1);
    manager.processRequests(); // both are on their way now

    QTRY_COMPARE(deleted.count(), 2);
    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 2);
}

void TestOutstandingRuns::equalDeletion_whileOneRunsIsOneMoreAtReady()
{
    CurlFake::hold();
    CurlFake::setAnswer(ok);
    OpenManager manager;
    manager.beReady();
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    manager.deleteApplication(text("a"), text("u"), text("t"));
    manager.loseInternet();
    manager.deleteApplication(text("a"), text("u"), text("t"));

    manager.regainInternet();
    CurlFake::release();

    QTRY_COMPARE(deleted.count(), 2);
    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 2);
}

Q_DECLARE_METATYPE(CurlFake::Answer)

void TestOutstandingRuns::equalDeletions_endInEveryOrder_data()
{
    QTest::addColumn<CurlFake::Answer>("first");
    QTest::addColumn<CurlFake::Answer>("second");
    QTest::addColumn<int>("requests");
    QTest::addColumn<int>("announced");
    QTest::newRow("200, 200") << ok << ok << 2 << 2;
    QTest::newRow("503, 200") << unavailable << ok << 3 << 2;
    QTest::newRow("200, 503") << ok << unavailable << 3 << 2;
    QTest::newRow("503, 503") << unavailable << unavailable << 4 << 2;
    QTest::newRow("404, 404") << notFound << notFound << 2 << 2;
    QTest::newRow("404, 503") << notFound << unavailable << 3 << 2;
    QTest::newRow("503, 404") << unavailable << notFound << 3 << 2;
    QTest::newRow("lost, 200") << lost << ok << 3 << 2;
    QTest::newRow("200, lost") << ok << lost << 3 << 2;
    QTest::newRow("lost, lost") << lost << lost << 4 << 2;
    QTest::newRow("400, 503") << badRequest << unavailable << 3 << 1;
    QTest::newRow("503, 400") << unavailable << badRequest << 3 << 1;
}

void TestOutstandingRuns::equalDeletions_endInEveryOrder()
{
    QFETCH(CurlFake::Answer, first);
    QFETCH(CurlFake::Answer, second);
    QFETCH(int, requests);
    QFETCH(int, announced);
    CurlFake::hold();
    CurlFake::queueAnswer(first);
    CurlFake::queueAnswer(second);
    CurlFake::setAnswer(ok);
    OpenManager manager;
    manager.beReady();
    manager.addRemote({text("a"), text("u"), text("n"), text("t")});
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    manager.deleteApplication(text("a"), text("u"), text("t"));
    const QPointer<RemoteTaskWithDescription> firstTask = manager.onlyTask();
    manager.deleteApplication(text("a"), text("u"), text("t"));
    const QPointer<RemoteTaskWithDescription> secondTask = manager.onlyTask();
    QVERIFY(secondTask != firstTask);
    CurlFake::release();
    QTRY_VERIFY(!manager.isRunOutstanding());

    QVERIFY(finish(manager));

    QCOMPARE(CurlFake::requestCount(), requests);
    QCOMPARE(deleted.count(), announced);
    QVERIFY(manager.holdsNothing());
    QTRY_VERIFY(firstTask.isNull());
    QTRY_VERIFY(secondTask.isNull());
    QTRY_COMPARE(manager.findChildren<QTimer *>().size(), 1); // the refresh timer
}

void TestOutstandingRuns::equalDeletion_whileARetryWaitsKeepsTheRetry()
{
    CurlFake::queueAnswer(unavailable);
    CurlFake::setAnswer(ok);
    OpenManager manager;
    manager.beReady();
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    manager.deleteApplication(text("a"), text("u"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);

    manager.deleteApplication(text("a"), text("u"), text("t"));

    QTRY_COMPARE(deleted.count(), 1); // the second one, at once
    QCOMPARE(manager.queue().size(), 1);
    QCOMPARE(manager.retryCount(), 1);
    QVERIFY(manager.onlyRetry()->isActive());
    manager.retryNow();
    QTRY_COMPARE(deleted.count(), 2);
    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 3);
}

void TestOutstandingRuns::equalDeletion_whileARetryWaitsOffline_bothGoOutLater()
{
    CurlFake::queueAnswer(unavailable);
    CurlFake::setAnswer(ok);
    OpenManager manager;
    manager.beReady();
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);
    manager.deleteApplication(text("a"), text("u"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    manager.loseInternet();
    manager.deleteApplication(text("a"), text("u"), text("t"));

    manager.regainInternet();
    QCOMPARE(manager.retryCount(), 1); // both wait for the retry
    QCOMPARE(CurlFake::requestCount(), 1);
    manager.retryNow();

    QTRY_COMPARE(deleted.count(), 2);
    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(CurlFake::requestCount(), 3);
}

void TestOutstandingRuns::replacingTask_takesTheWaitingRetryOver()
{
    CurlFake::queueAnswer(unavailable);
    OpenManager manager;
    manager.beReady();
    manager.deleteApplication(text("a"), text("u"), text("t"));
    QTRY_COMPARE(manager.retryCount(), 1);
    const QTimer *const timer = manager.onlyRetry();
    const QPointer<RemoteTaskWithDescription> replaced = manager.onlyTask();
    CurlFake::hold();

    manager.deleteApplication(text("a"), text("u"), text("t"));

    QCOMPARE(manager.retryCount(), 1);
    QCOMPARE(manager.taskOfOnlyRetry(), manager.onlyTask());
    QCOMPARE(manager.onlyRetry(), timer);
    QVERIFY(timer->isActive());
    CurlFake::release();
    QTRY_VERIFY(replaced.isNull());
}

QTEST_GUILESS_MAIN(TestOutstandingRuns)
#include "tst_outstandingruns.moc"
