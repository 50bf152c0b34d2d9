// The server's replies, as the manager reads them: what they may change, and what they may not.

#include "descriptions.h"
#include "fuzzing.h"
#include "generatedjson.h"
#include "openrecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{

using Records = QMap<QString, RemoteApplication>;

const QString remoteId = QStringLiteral("d9");
const QStringList installed = {QStringLiteral("u1"), QStringLiteral("u2"), QString::fromLatin1("")};
const RemoteApplication known = {QStringLiteral("7"), QStringLiteral("u1"), QStringLiteral("Clock"),
                                 QStringLiteral("t")};

// A value as text: what is no text, number or truth has none.
QString textOf(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Double:
        return value.toVariant().toString();
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    default:
        return {};
    }
}

QJsonObject objectIn(const QByteArray &reply)
{
    return QJsonDocument::fromJson(reply).object();
}

// What the records must be after a list reply: those of this device, the first of each id.
Records listedIn(const QByteArray &reply)
{
    Records records;
    const QJsonArray apps = objectIn(reply).value(QStringLiteral("apps")).toArray();
    for (const QJsonValue &element : apps) {
        const QJsonObject app = element.toObject();
        const QString appId = textOf(app.value(QStringLiteral("app_id")));
        const bool isOurs = element.isObject() && textOf(app.value(QStringLiteral("device_id"))) == remoteId;
        if (isOurs && !records.contains(appId)) {
            records.insert(appId, {appId, textOf(app.value(QStringLiteral("identifier"))),
                                   textOf(app.value(QStringLiteral("name"))),
                                   textOf(app.value(QStringLiteral("type")))});
        }
    }
    return records;
}

void requireRecords(const OpenRecords &manager, const Records &mustBe)
{
    const Records records = manager.records();
    requireEqual(records.size(), mustBe.size(), "as many records as there must be");
    for (auto record = mustBe.cbegin(); record != mustBe.cend(); ++record) {
        require(records.contains(record.key()), "every record is there");
        const RemoteApplication is = records.value(record.key());
        requireEqual(is.appId, record.key(), "a record stands under its own id");
        requireEqual(is.identifier, record->identifier, "a record's identifier");
        requireEqual(is.name, record->name, "a record's name");
        requireEqual(is.type, record->type, "a record's type");
    }
}

void requireAnnounced(const OpenRecords &manager, const QStringList &mustBe)
{
    requireEqual(manager.announced.join(QLatin1Char('\n')), mustBe.join(QLatin1Char('\n')),
                 "what is announced");
}

void requirePending(const OpenRecords &manager, const QList<RemoteTaskDescription> &mustBe)
{
    requireEqual(manager.queue().size(), mustBe.size(), "as many requests wait as must");
    require(manager.queue() == mustBe, "the requests that wait");
    require(!manager.isAnythingSent(), "nothing is sent while the device is unknown");
}

QString announcement(const char *what, const QString &uuid, const QString &appId, const QString &type)
{
    return QStringList{QString::fromLatin1(what), uuid, appId, type}.join(QLatin1Char('|'));
}

QByteArray takeReply(FuzzedDataProvider &input)
{
    switch (input.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
        return takeRest(input);
    case 1:
        return GeneratedJson::takeValue(input, 3);
    case 2:
        return GeneratedJson::takeRegisterReply(input);
    default:
        return GeneratedJson::takeListReply(input);
    }
}

// Of a failure: libcurl's, or any status but those of a success.
int takeCode(FuzzedDataProvider &input)
{
    const std::vector<int> usual = {-2,  -1,  6,   7,   28,  35,  60,  301, 400,
                                    401, 403, 404, 408, 410, 429, 500, 503};
    return input.ConsumeBool() ? takeOneOf(input, usual) : input.ConsumeIntegralInRange<int>(300, 599);
}

void checkList(OpenRecords &manager, const QByteArray &reply)
{
    manager.begin(remoteId, installed, known, Descriptions::list());
    manager.succeed(Descriptions::list(), reply);

    const Records listed = listedIn(reply);
    requireRecords(manager, listed);
    requireAnnounced(manager, {});
    QList<RemoteTaskDescription> deletions;
    for (const RemoteApplication &application : listed) {
        if (!installed.contains(application.identifier)) {
            deletions.append(
                Descriptions::deletion(application.appId, application.identifier, application.type));
        }
    }
    requirePending(manager, deletions);
    require(manager.isListKnown(), "a list reply is a list, whatever it says");
}

void checkRegistration(OpenRecords &manager, const QByteArray &reply)
{
    const RemoteApplication asked = {textOf(objectIn(reply).value(QStringLiteral("app_id"))),
                                     QStringLiteral("u2"), QStringLiteral("Radio"), QStringLiteral("r")};
    const RemoteTaskDescription descr = Descriptions::registration(asked.identifier, asked.name, asked.type);
    manager.begin(remoteId, installed, known, descr);
    manager.succeed(descr, reply);

    Records records = {{known.appId, known}};
    records.insert(asked.appId, asked);
    requireRecords(manager, records);
    requireAnnounced(manager, {announcement("registered", asked.identifier, asked.appId, asked.type)});
    requirePending(manager, {});
}

void checkDeletion(OpenRecords &manager, const QByteArray &reply)
{
    const RemoteTaskDescription descr = Descriptions::deletion(known.appId, known.identifier, known.type);
    manager.begin(remoteId, installed, known, descr);
    manager.succeed(descr, reply);

    requireRecords(manager, {});
    requireAnnounced(manager, {announcement("deleted", known.identifier, known.appId, known.type)});
    requirePending(manager, {});
}

void checkUpdate(OpenRecords &manager, const QByteArray &reply)
{
    const QString name = QStringLiteral("Big clock");
    const RemoteTaskDescription descr =
        Descriptions::update(known.appId, known.identifier, name, QStringLiteral("other"));
    manager.begin(remoteId, installed, known, descr);
    manager.succeed(descr, reply);

    requireRecords(manager, {{known.appId, {known.appId, known.identifier, name, known.type}}});
    requireAnnounced(manager, {});
    requirePending(manager, {});
}

void checkFailure(OpenRecords &manager, int kind, int code, const QByteArray &reply)
{
    const QList<RemoteTaskDescription> kinds = {
        Descriptions::registration(known.identifier, known.name, known.type),
        Descriptions::deletion(known.appId, known.identifier, known.type),
        Descriptions::update(known.appId, known.identifier, QStringLiteral("Big clock"), known.type),
        Descriptions::list()};
    const RemoteTaskDescription &descr = kinds.at(kind);
    manager.begin(remoteId, installed, known, descr);
    manager.fail(descr, code, reply);

    const bool isGivenUp = code == 400 || code == 404;
    const bool isGone = code == 404 && descr.type == RemoteTaskDescription::Delete;
    requireRecords(manager, {{known.appId, known}});
    requireAnnounced(manager,
                     isGone ? QStringList{announcement("deleted", known.identifier, known.appId, known.type)}
                            : QStringList());
    requirePending(manager, isGivenUp ? QList<RemoteTaskDescription>() : QList<RemoteTaskDescription>{descr});
    require(!manager.isListKnown(), "a failure is no list");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static OpenRecords manager;
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange<int>(0, 7);
    const int code = kind < 4 ? 200 : takeCode(input);
    const QByteArray reply = takeReply(input);
    switch (kind) {
    case 0:
        checkList(manager, reply);
        break;
    case 1:
        checkRegistration(manager, reply);
        break;
    case 2:
        checkDeletion(manager, reply);
        break;
    case 3:
        checkUpdate(manager, reply);
        break;
    default:
        checkFailure(manager, kind - 4, code, reply);
    }
    return 0;
}
