#include "formbody.h"
#include "remoteappsapi.h"

#include <QtTest>

namespace
{
QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
} // namespace

class TestRemoteAppsApi : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void url_isTheAppsEndpointOfTheHost();
    void key_becomesTheAuthorizationValue_data();
    void key_becomesTheAuthorizationValue();
    void description_becomesTheBody_data();
    void description_becomesTheBody();
    void registerReply_isRead_data();
    void registerReply_isRead();
    void listReply_isReadForOneDevice_data();
    void listReply_isReadForOneDevice();
    void listReply_keepsEmptyStringsAndNulls();
};

void TestRemoteAppsApi::url_isTheAppsEndpointOfTheHost()
{
    const QString host = text("host.example:8443");

    const QString url = RemoteAppsApi::appsUrl(host);

    QCOMPARE(url, text("https://host.example:8443/api/v1/qwixt/apps"));
}

void TestRemoteAppsApi::key_becomesTheAuthorizationValue_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("empty") << QString() << text("Basic Og==");
    QTest::newRow("one byte") << text("a") << text("Basic OmE=");
    QTest::newRow("two bytes") << text("ab") << text("Basic OmFi");
    QTest::newRow("usual") << text("key") << text("Basic OmtleQ==");
    QTest::newRow("8-bit text") << text("\xc3\xbc") << text("Basic Ovw=");
    QTest::newRow("beyond 8 bits") << text("\xe2\x82\xac") << text("Basic Oj8=");
    QTest::newRow("standard alphabet") << text("?>?>?>") << text("Basic Oj8+Pz4/Pg==");
}

void TestRemoteAppsApi::key_becomesTheAuthorizationValue()
{
    QFETCH(QString, key);

    const QString header = RemoteAppsApi::authorization(key);

    QTEST(header, "value");
}

void TestRemoteAppsApi::description_becomesTheBody_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QVariantMap>("data");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("register") << int(RemoteTaskDescription::Register) << text("u1")
                              << QVariantMap{{text("name"), text("Clock")}, {text("type"), text("t")}}
                              << QByteArray("id=d9&identifier=u1&name=Clock&type=t");
    QTest::newRow("register without data") << int(RemoteTaskDescription::Register) << text("u1")
                                           << QVariantMap() << QByteArray("id=d9&identifier=u1");
    QTest::newRow("register with more data")
        << int(RemoteTaskDescription::Register) << text("u1")
        << QVariantMap{{text("name"), text("n")}, {text("app_id"), text("x")}}
        << QByteArray("id=d9&identifier=u1&name=n");
    QTest::newRow("register with empty strings")
        << int(RemoteTaskDescription::Register) << text("")
        << QVariantMap{{text("name"), text("")}, {text("type"), text("")}}
        << QByteArray("id=d9&identifier=&name=&type=");
    QTest::newRow("update") << int(RemoteTaskDescription::Update) << text("u1")
                            << QVariantMap{{text("app_id"), text("a7")},
                                           {text("name"), text("Clock")},
                                           {text("type"), text("t")}}
                            << QByteArray("app_id=a7&name=Clock&type=t");
    QTest::newRow("update with a number for an id")
        << int(RemoteTaskDescription::Update) << text("u1")
        << QVariantMap{{text("app_id"), 4711}, {text("name"), text("n")}, {text("type"), text("t")}}
        << QByteArray("app_id=4711&name=n&type=t");
    QTest::newRow("delete") << int(RemoteTaskDescription::Delete) << text("u1")
                            << QVariantMap{{text("app_id"), text("a7")}, {text("type"), text("t")}}
                            << QByteArray("app_id=a7&type=t");
    QTest::newRow("delete sends its data as they are")
        << int(RemoteTaskDescription::Delete) << text("u1")
        << QVariantMap{{text("app_id"), 5}, {text("zz"), text("y")}} << QByteArray("app_id=5&zz=y");
    QTest::newRow("list") << int(RemoteTaskDescription::GetList) << QString() << QVariantMap()
                          << QByteArray();
    QTest::newRow("odd values") << int(RemoteTaskDescription::Register) << text("&=%")
                                << QVariantMap{{text("name"), text("a b\n\xc3\xbc")},
                                               {text("type"), text("x=y&z")}}
                                << QByteArray("id=d9&identifier=&=%&name=a b\n\xc3\xbc&type=x=y&z");
}

void TestRemoteAppsApi::description_becomesTheBody()
{
    QFETCH(int, type);
    QFETCH(QString, id);
    QFETCH(QVariantMap, data);

    const QVariantMap fields = RemoteAppsApi::parameters({type, id, data}, text("d9"));

    QTEST(requestBody(fields, QByteArray()), "body");
}

void TestRemoteAppsApi::registerReply_isRead_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("appId");
    QTest::addColumn<QString>("status");
    QTest::newRow("strings") << QByteArray(R"({"app_id":"a7","status":"ok"})") << text("a7") << text("ok");
    QTest::newRow("number") << QByteArray(R"({"app_id":9007199254740993,"status":1})")
                            << text("9007199254740993") << text("1");
    QTest::newRow("missing") << QByteArray("{}") << text("") << text("");
    QTest::newRow("null") << QByteArray(R"({"app_id":null})") << text("") << text("");
    QTest::newRow("not JSON") << QByteArray("<html>") << text("") << text("");
    QTest::newRow("empty") << QByteArray() << text("") << text("");
    QTest::newRow("array") << QByteArray(R"(["app_id"])") << text("") << text("");
}

void TestRemoteAppsApi::registerReply_isRead()
{
    QFETCH(QByteArray, reply);

    const RemoteAppsApi::RegisterReply read = RemoteAppsApi::readRegisterReply(reply);

    QTEST(read.appId, "appId");
    QTEST(read.status, "status");
}

void TestRemoteAppsApi::listReply_isReadForOneDevice_data()
{
    QTest::addColumn<QString>("remoteId");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QStringList>("records");
    QTest::newRow("two of this device, one of another")
        << text("d9") << QByteArray(R"({"apps":[
            {"device_id":"d9","app_id":"2","identifier":"u2","name":"n2","type":"t2","more":[1]},
            {"device_id":"d8","app_id":"3","identifier":"u2","name":"n3","type":"t3"},
            {"device_id":"d9","app_id":1,"identifier":"u1","name":"n1","type":"t1"}]})")
        << QStringList{text("2 u2 n2 t2"), text("1 u1 n1 t1")};
    QTest::newRow("same id twice: both are read")
        << text("d9")
        << QByteArray(
               R"({"apps":[{"device_id":"d9","app_id":"1"},{"device_id":"d9","app_id":"1","name":"n"}]})")
        << QStringList{text("1   "), text("1  n ")};
    QTest::newRow("device id in another case")
        << text("d9") << QByteArray(R"({"apps":[{"device_id":"D9","app_id":"1"}]})") << QStringList();
    QTest::newRow("device id as a number is its digits")
        << text("9") << QByteArray(R"({"apps":[{"device_id":9,"app_id":"1"},{"device_id":90,"app_id":"2"}]})")
        << QStringList{text("1   ")};
    QTest::newRow("device ids that are one number only")
        << text("9")
        << QByteArray(R"({"apps":[{"device_id":"09","app_id":"1"},{"device_id":" 9","app_id":"2"},
                                  {"device_id":"9.0","app_id":"3"},{"device_id":"+9","app_id":"4"}]})")
        << QStringList();
    QTest::newRow("no apps") << text("d9") << QByteArray("{}") << QStringList();
    QTest::newRow("apps is no array")
        << text("d9") << QByteArray(R"({"apps":{"device_id":"d9"}})") << QStringList();
    QTest::newRow("elements that are no objects")
        << text("d9")
        << QByteArray(R"({"apps":[1,"x",null,[{"device_id":"d9"}],{"device_id":"d9","app_id":"1"}]})")
        << QStringList{text("1   ")};
    QTest::newRow("not JSON") << text("d9") << QByteArray("no") << QStringList();
    QTest::newRow("cut off") << text("d9") << QByteArray(R"({"apps":[{"device_id":"d9")") << QStringList();
}

void TestRemoteAppsApi::listReply_isReadForOneDevice()
{
    QFETCH(QString, remoteId);
    QFETCH(QByteArray, reply);

    const QList<RemoteApplication> read = RemoteAppsApi::readListReply(reply, remoteId);

    QStringList records;
    for (const RemoteApplication &application : read) {
        records.append(application.appId + QLatin1Char(' ') + application.identifier + QLatin1Char(' ') +
                       application.name + QLatin1Char(' ') + application.type);
    }
    QTEST(records, "records");
}

void TestRemoteAppsApi::listReply_keepsEmptyStringsAndNulls()
{
    const QByteArray reply = R"({"apps":[{"device_id":"d9","app_id":"1","name":null,"type":""}]})";

    const RemoteApplication read = RemoteAppsApi::readListReply(reply, text("d9")).value(0);

    QVERIFY(!read.type.isNull()); // sent as "type="
    QVERIFY(read.name.isNull());  // not sent
    QVERIFY(read.identifier.isNull());
}

QTEST_GUILESS_MAIN(TestRemoteAppsApi)
#include "tst_remoteappsapi.moc"
