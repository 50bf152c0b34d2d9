#include "membersof.h"
#include "platformcapture.h"
#include "privatebus.h"
#include "qwixtdbusadaptor.h"
#include "qwixtdbuscontext.h"

#include <QtTest>

/// The adaptor and the service object, called in this process; the manager behind them waits for a device.
class TestBusInterface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(bus.startAsSystemBus()); }
    void init() { PlatformCapture::clear(); }

    void metaObject_isThePublishedInterface();
    void adaptor_isAChildOfItsServiceObject();
    void requests_haveTheirDebugLines();
    void emptyStrings_reachTheManager();

private:
    PrivateBus bus;
};

void TestBusInterface::metaObject_isThePublishedInterface()
{
    const QMetaObject &meta = QwixtDbusAdaptor::staticMetaObject;

    const QMetaClassInfo information = meta.classInfo(meta.classInfoOffset());
    const QStringList members = membersOf(meta);

    QCOMPARE(meta.classInfoCount() - meta.classInfoOffset(), 1);
    QCOMPARE(information.name(), "D-Bus Interface");
    QCOMPARE(information.value(), "com.vorlet.qwixtd");
    QCOMPARE(
        members,
        (QStringList{
            QStringLiteral("signal void daemonDidStarted()"),
            QStringLiteral("signal void applicationRegistered(QString uuid, QString qwixId, QString type)"),
            QStringLiteral("signal void applicationDeleted(QString uuid, QString qwixtid, QString type)"),
            QStringLiteral("slot void registerQwixtApplication(QString uuid, QString name, QString type)"),
            QStringLiteral("slot void updateQwixtApplication(QString qwixtId, QString uuid, QString name,"
                           " QString type)"),
            QStringLiteral("slot void deleteQwixtApplication(QString qwixtId, QString uuid, QString type)"),
        }));
}

void TestBusInterface::adaptor_isAChildOfItsServiceObject()
{
    auto *const context = new QwixtDbusContext;
    const QPointer<QwixtDbusAdaptor> adaptor = new QwixtDbusAdaptor(context);
    QCOMPARE(adaptor->parent(), context);
    QVERIFY(context->parent() == nullptr);

    delete context;

    QVERIFY(adaptor.isNull());
}

void TestBusInterface::requests_haveTheirDebugLines()
{
    QwixtDbusContext context;
    QwixtDbusAdaptor adaptor(&context);

    adaptor.registerQwixtApplication(QStringLiteral("u1"), QStringLiteral("n1"), QStringLiteral("t1"));
    adaptor.updateQwixtApplication(QStringLiteral("a2"), QStringLiteral("u2"), QStringLiteral("n2"),
                                   QStringLiteral("t2"));
    adaptor.deleteQwixtApplication(QStringLiteral("a3"), QStringLiteral("u3"), QStringLiteral("t3"));

    QCOMPARE(PlatformCapture::texts(), (QList<QByteArray>{
                                           "QwixtDbusContext: Request register application u1 n1 t1 ",
                                           "QWixtApplicationManager: state is WaitForDaemonsToStart",
                                           "QwixtDbusContext: Request update application u2 n2 t2 ",
                                           "No remote info about application a2 register one more time",
                                           "QwixtDbusContext: Request delete application u3 t3  ",
                                       }));
}

void TestBusInterface::emptyStrings_reachTheManager()
{
    QwixtDbusContext context;
    QwixtDbusAdaptor adaptor(&context);
    adaptor.registerQwixtApplication(QString(), QString(), QString());
    PlatformCapture::clear();

    // The manager holds the first one: an equal second one is refused there.
    adaptor.registerQwixtApplication(QStringLiteral(""), QStringLiteral(""), QStringLiteral(""));

    QCOMPARE(PlatformCapture::texts(), (QList<QByteArray>{
                                           "QwixtDbusContext: Request register application    ",
                                           "QWixtApplicationManager: register task already exists",
                                       }));
}

QTEST_GUILESS_MAIN(TestBusInterface)
#include "tst_businterface.moc"
