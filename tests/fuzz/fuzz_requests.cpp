// Requests, from what a widget asks to what libcurl is given: it reads back to what was asked.

#include "descriptions.h"
#include "formbody.h"
#include "fuzzing.h"
#include "openrecords.h"
#include "recordedtransfer.h"
#include "remotetaskwithdescription.h"

#include <memory>

namespace
{

constexpr int longest = 40;

using Fields = QList<QPair<QByteArray, QByteArray>>;

// What a body of pairs says. A form without escapes can say no more: "&" ends a value, the first "=" a name.
Fields fieldsIn(const QByteArray &body)
{
    Fields fields;
    const QList<QByteArray> pairs = body.isEmpty() ? QList<QByteArray>() : body.split('&');
    for (const QByteArray &pair : pairs) {
        const int equals = static_cast<int>(pair.indexOf('='));
        require(equals > 0, "every pair has a name");
        fields.append({pair.left(equals), pair.mid(equals + 1)});
    }
    return fields;
}

void requireFields(const QByteArray &body, const QMap<QString, QString> &asked)
{
    Fields mustBe;
    for (auto field = asked.cbegin(); field != asked.cend(); ++field) {
        if (field.value().contains(QLatin1Char('&'))) {
            return;
        }
        if (!field.value().isNull()) {
            mustBe.append({field.key().toUtf8(), field.value().toUtf8()});
        }
    }
    const Fields are = fieldsIn(body);
    requireEqual(are.size(), mustBe.size(), "as many fields as were asked");
    for (int i = 0; i < mustBe.size(); ++i) {
        requireEqual(are.at(i).first, mustBe.at(i).first, "a field's name");
        requireEqual(are.at(i).second, mustBe.at(i).second, "a field's value");
    }
}

void requireHeaders(const QList<QByteArray> &headers, const QString &apiKey)
{
    const QByteArray scheme = "Authorization: Basic ";
    requireEqual(headers.size(), 2, "two headers");
    requireEqual(headers.at(0), QByteArray("Accept: application/json"), "the first header");
    require(headers.at(1).startsWith(scheme), "the second header");
    const QByteArray credentials = QByteArray::fromBase64(headers.at(1).mid(scheme.size()));
    requireEqual(credentials, ':' + apiKey.toLatin1(), "the credentials");
}

// A text that was never given, an empty one or one of the input's.
QString takeValue(FuzzedDataProvider &input)
{
    const QString text = takeText(input, longest);
    return text.isEmpty() && input.ConsumeBool() ? QString() : text + QLatin1String("");
}

struct Asked {
    RemoteTaskDescription descr;
    QByteArray method;
    QMap<QString, QString> fields;
};

Asked takeAsked(FuzzedDataProvider &input, const QString &remoteId)
{
    const int kind = input.ConsumeIntegralInRange<int>(1, 4);
    const QString appId = takeValue(input);
    const QString uuid = takeValue(input);
    const QString name = takeValue(input);
    const QString type = takeValue(input);
    const QString appIdKey = QStringLiteral("app_id");
    const QString nameKey = QStringLiteral("name");
    const QString typeKey = QStringLiteral("type");
    switch (kind) {
    case RemoteTaskDescription::Register:
        return {Descriptions::registration(uuid, name, type),
                "POST",
                {{QStringLiteral("id"), remoteId},
                 {QStringLiteral("identifier"), uuid},
                 {nameKey, name},
                 {typeKey, type}}};
    case RemoteTaskDescription::Delete:
        return {Descriptions::deletion(appId, uuid, type), "DELETE", {{appIdKey, appId}, {typeKey, type}}};
    case RemoteTaskDescription::Update:
        return {Descriptions::update(appId, uuid, name, type),
                "PUT",
                {{appIdKey, appId}, {nameKey, name}, {typeKey, type}}};
    default:
        return {Descriptions::list(), "GET", {}};
    }
}

QByteArray methodOf(const RecordedTransfer &transfer)
{
    if (!transfer.customMethod.isEmpty()) {
        return transfer.customMethod;
    }
    return transfer.isGet ? "GET" : (transfer.isPost && transfer.hasBody ? "POST" : "");
}

void checkRequest(FuzzedDataProvider &input)
{
    static OpenRecords manager;
    const QString apiKey = takeText(input, longest);
    const QString remoteId = takeValue(input);
    const Asked asked = takeAsked(input, remoteId);
    manager.setIdentity(apiKey, remoteId);
    const std::unique_ptr<RemoteTaskWithDescription> task(manager.createRemoteTask(asked.descr));
    require(task != nullptr, "a known kind of request can be made");

    RecordedTransfer &transfer = RecordedTransfer::last();
    for (int run = 1; run <= 2; ++run) {
        transfer = RecordedTransfer();
        task->run();
        requireEqual(transfer.refusal, 0, "libcurl takes every option");
        requireEqual(transfer.performed, 1, "one transfer a run");
        requireEqual(methodOf(transfer), asked.method, "the method");
        requireEqual(transfer.url, QByteArray("https://developer.vorlet.example/api/v1/qwixt/apps"),
                     "the URL");
        requireHeaders(transfer.headers, apiKey);
        requireFields(transfer.body, asked.fields);
        require(asked.method != "GET" || !transfer.hasBody, "a list request has no body");
    }
}

QString takeName(FuzzedDataProvider &input)
{
    QString name = takeText(input, longest);
    return name.remove(QLatin1Char('&')).remove(QLatin1Char('='));
}

// A value and how it reads in a body; null when it is left out.
QPair<QVariant, QString> takeParameter(FuzzedDataProvider &input)
{
    const qint64 number = input.ConsumeIntegral<qint64>();
    const QString text = takeText(input, longest).remove(QLatin1Char('&')) + QLatin1String("");
    switch (input.ConsumeIntegralInRange<int>(0, 6)) {
    case 0:
        return {number, QString::number(number)};
    case 1:
        return {static_cast<int>(number), QString::number(static_cast<int>(number))};
    case 2:
        return {number % 2 == 0, number % 2 == 0 ? QStringLiteral("true") : QStringLiteral("false")};
    case 3:
        return {QVariant(), QString()};
    case 4:
        return {QString(), QString()};
    case 5:
        return {QByteArray(), QString()};
    default:
        return {text, text};
    }
}

void checkBody(FuzzedDataProvider &input)
{
    QVariantMap parameters;
    QMap<QString, QString> asked;
    const int count = input.ConsumeIntegralInRange<int>(0, 6);
    for (int i = 0; i < count; ++i) {
        const QString name = takeName(input);
        const QPair<QVariant, QString> parameter = takeParameter(input);
        parameters.insert(name, parameter.first);
        asked.insert(name, parameter.second);
    }
    asked.remove(QString());
    requireFields(requestBody(parameters, {}), asked);

    const QByteArray raw = takeRest(input);
    if (!raw.isEmpty()) {
        const int end = static_cast<int>(raw.indexOf('\0'));
        const QByteArray sent = requestBody(parameters, raw);
        requireEqual(QString::fromUtf8(sent).toLatin1(), end < 0 ? raw : raw.left(end),
                     "a raw body up to its first zero byte");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        checkRequest(input);
    } else {
        checkBody(input);
    }
    return 0;
}
