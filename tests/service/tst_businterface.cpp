#include "platformcapture.h"
#include "privatebus.h"
#include "qwixtdbusadaptor.h"
#include "qwixtdbuscontext.h"

#include <QSignalSpy>
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
    void emptyTexts_reachTheManager();

private:
    PrivateBus bus;
};

void TestBusInterface::metaObject_isThePublishedInterface()
{
    const QMetaObject &meta = QwixtDbusAdaptor::staticMetaObject;
    QCOMPARE(meta.classInfoCount() - meta.classInfoOffset(), 1);
    QCOMPARE(meta.classInfo(meta.classInfoOffset()).name(), "D-Bus Interface");
    QCOMPARE(meta.classInfo(meta.classInfoOffset()).value(), "com.vorlet.qwixtd");

    QStringList members;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        QByteArray line = method.methodType() == QMetaMethod::Signal ? "signal " : "method ";
        line += method.methodSignature();
        const QList<QByteArray> names = method.parameterNames();
        for (const QByteArray &name : names) {
            line += ' ' + name;
        }
        members.append(QString::fromLatin1(line));
        QCOMPARE(method.returnType(), static_cast<int>(QMetaType::Void));
    }
    QCOMPARE(members,
             (QStringList{
                 QStringLiteral("signal daemonDidStarted()"),
                 QStringLiteral("signal applicationRegistered(QString,QString,QString) uuid qwixId type"),
                 QStringLiteral("signal applicationDeleted(QString,QString,QString) uuid qwixtid type"),
                 QStringLiteral("method registerQwixtApplication(QString,QString,QString) uuid name type"),
                 QStringLiteral(
                     "method updateQwixtApplication(QString,QString,QString,QString) qwixtId uuid name type"),
                 QStringLiteral("method deleteQwixtApplication(QString,QString,QString) qwixtId uuid type"),
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

void TestBusInterface::emptyTexts_reachTheManager()
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
