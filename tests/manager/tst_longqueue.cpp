#include "openmanager.h"
#include "pendingtasks.h"
#include "platformcapture.h"
#include "remotetaskwithdescription.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QThread>
#include <QtTest>

/// A queue that is too long to be handed to the worker at one go when the manager becomes ready. Whatever
/// happens between its slices, each request goes out once and in the order asked.
class TestLongQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void entersReady_theEventLoopHasItsTurns();
    void requestBetweenSlices_doesNotOvertake();
    void resultsBetweenSlices_changeNothingForTheRest();
    void equalDeletionsInDifferentSlices_areTwoRequests();
    void equalOneLeavesBehindTheWalk_isNotCounted();
    void internetLostBetweenSlices_restGoesOutLater();
    void internetBackBeforeTheNextSlice_nothingIsSentTwice();

private:
    PrivateBus bus;
};

namespace
{

constexpr int length = 130;
constexpr int longestSlice = 50;

const CurlFake::Answer badRequest = {CURLE_OK, 400, "", ""};
const CurlFake::Answer unavailable = {CURLE_OK, 503, "", ""};

QByteArray body(const QByteArray &uuid)
{
    return "id=d9&identifier=" + uuid + "&name=n&type=t";
}

/// What the queue of askForMany() is sent as.
QByteArrayList manyBodies()
{
    QByteArrayList list;
    for (int number = 0; number < length; ++number) {
        list.append(body('u' + QByteArray::number(number)));
    }
    return list;
}

QByteArrayList sentBodies()
{
    QByteArrayList list;
    const QList<CurlFake::Request> requests = CurlFake::requests();
    for (const CurlFake::Request &request : requests) {
        list.append(request.body());
    }
    return list;
}

void beOfflineAfterReady(OpenManager &manager)
{
    manager.beReady();
    manager.loseInternet();
}

void askForMany(OpenManager &manager)
{
    for (int number = 0; number < length; ++number) {
        manager.registerApplication(QStringLiteral("u%1").arg(number), text("n"), text("t"));
    }
}

/// Keeps the event loop waiting until so many transfers have ended. Their results then stand behind the slice
/// that was posted before, and in front of the one after it.
bool haveResultsWaitBehindTheNextSlice(int count)
{
    const QDeadlineTimer patience(5000);
    while (CurlFake::requestCount() <= count &&
           !patience.hasExpired()) { // a transfer begins when another ends
        QThread::msleep(1);
    }
    return CurlFake::requestCount() > count;
}

} // namespace

void TestLongQueue::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false")); // the bodies of so many requests
    QVERIFY(bus.startAsSystemBus());
}

void TestLongQueue::init()
{
    CurlFake::reset();
    PlatformCapture::clear();
}

void TestLongQueue::entersReady_theEventLoopHasItsTurns()
{
    CurlFake::hold();
    OpenManager manager;
    beOfflineAfterReady(manager);
    askForMany(manager);
    QList<int> tasksAtTurns;

    manager.regainInternet();
    tasksAtTurns.append(manager.taskCount());
    while (tasksAtTurns.constLast() < length && tasksAtTurns.size() < length) {
        QCoreApplication::processEvents();
        tasksAtTurns.append(manager.taskCount());
    }
    CurlFake::release();

    QCOMPARE(tasksAtTurns, (QList<int>{longestSlice, 2 * longestSlice, length}));
    QTRY_COMPARE(sentBodies(), manyBodies());
}

void TestLongQueue::requestBetweenSlices_doesNotOvertake()
{
    OpenManager manager;
    beOfflineAfterReady(manager);
    askForMany(manager);
    manager.regainInternet();
    PlatformCapture::clear();

    QVERIFY(manager.registerApplication(text("late"), text("n"), text("t")));

    QCOMPARE(managerLines(LogPriority::Info),
             QList<QByteArray>{"QWixtApplicationManager: added register app task"});
    QTRY_COMPARE(sentBodies(), manyBodies() + QByteArrayList{body("late")});
    // The last slice is gone: the next one goes at once.
    manager.registerApplication(text("later"), text("n"), text("t"));
    QVERIFY(manager.taskOf(Descr::registration("later", "n")) != nullptr);
}

// What leaves the queue shifts the place of all that stands behind it.
void TestLongQueue::resultsBetweenSlices_changeNothingForTheRest()
{
    CurlFake::queueAnswer(badRequest);
    CurlFake::queueAnswer(unavailable);
    OpenManager manager;
    beOfflineAfterReady(manager);
    askForMany(manager);
    QSignalSpy registered(&manager, &QWixtApplicationManager::applicationRegistered);
    manager.regainInternet();

    QVERIFY(haveResultsWaitBehindTheNextSlice(longestSlice / 2));

    QTRY_COMPARE(registered.count(), length - 2);
    QCOMPARE(sentBodies(), manyBodies());
    QCOMPARE(manager.queue(), QList<RemoteTaskDescription>{Descr::registration("u1", "n")});
}

void TestLongQueue::equalDeletionsInDifferentSlices_areTwoRequests()
{
    CurlFake::hold();
    OpenManager manager;
    beOfflineAfterReady(manager);
    manager.deleteApplication(text("a"), text("w"), text("t"));
    askForMany(manager);
    manager.deleteApplication(text("a"), text("w"), text("t"));
    QSignalSpy deleted(&manager, &QWixtApplicationManager::applicationDeleted);

    manager.regainInternet();
    const int outstandingAtFirst = manager.outstandingRunsOf(Descr::deletion("a", "w"));
    CurlFake::release();

    QCOMPARE(outstandingAtFirst, 1);
    QTRY_COMPARE(sentBodies(),
                 QByteArrayList{"app_id=a&type=t"} + manyBodies() + QByteArrayList{"app_id=a&type=t"});
    QTRY_COMPARE(deleted.count(), 2);
    QTRY_VERIFY(manager.holdsNothing());
}

void TestLongQueue::equalOneLeavesBehindTheWalk_isNotCounted()
{
    const RemoteTaskDescription deletion = Descr::deletion("a", "w");
    const RemoteTaskDescription other = Descr::registration("u");
    PendingTasks queue = {deletion, other, deletion};
    queue.startWalk();
    queue.walkOn();

    queue.removeOne(deletion);

    QCOMPARE(queue.walkOn(), other);
    QCOMPARE(queue.walkOn(), deletion);
    QCOMPARE(queue.walkedCount(deletion), 1);
    QVERIFY(queue.isWalkDone());
}

void TestLongQueue::internetLostBetweenSlices_restGoesOutLater()
{
    CurlFake::hold();
    OpenManager manager;
    beOfflineAfterReady(manager);
    askForMany(manager);
    manager.regainInternet();

    manager.loseInternet();
    QCoreApplication::processEvents();
    const int tasksWhenOffline = manager.taskCount();
    manager.regainInternet();
    CurlFake::release();

    QCOMPARE(tasksWhenOffline, longestSlice);
    QTRY_COMPARE(sentBodies(), manyBodies());
    QTRY_VERIFY(manager.holdsNothing());
}

void TestLongQueue::internetBackBeforeTheNextSlice_nothingIsSentTwice()
{
    CurlFake::hold();
    OpenManager manager;
    beOfflineAfterReady(manager);
    askForMany(manager);

    for (int i = 0; i < 3; ++i) {
        manager.regainInternet();
        manager.loseInternet();
    }
    manager.regainInternet();
    CurlFake::release();

    QTRY_VERIFY(manager.holdsNothing());
    QCOMPARE(sentBodies(), manyBodies());
}

QTEST_GUILESS_MAIN(TestLongQueue)
#include "tst_longqueue.moc"
