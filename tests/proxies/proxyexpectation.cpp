#include "proxyexpectation.h"

#include "described.h"

#include <QDBusObjectPath>

namespace
{

QVariantMap emptyDeviceState()
{
    QVariantMap map;
    for (const char *key : {"device_name", "serial_number", "hw_version", "sw_version", "mode", "server_id",
                            "model", "uboot_version", "kernel_version"}) {
        map.insert(QLatin1String(key), QString());
    }
    map.insert(QStringLiteral("apps_auto_update_enabled"), false);
    map.insert(QStringLiteral("update_available"), QVariant::fromValue(nullptr));
    return map;
}

QVariantMap fullDeviceState()
{
    QVariantMap map = emptyDeviceState();
    map[QStringLiteral("device_name")] = QStringLiteral("kitchen");
    map[QStringLiteral("server_id")] = QStringLiteral("17");
    map[QStringLiteral("apps_auto_update_enabled")] = true;
    map[QStringLiteral("update_available")] =
        QVariantMap{{QStringLiteral("version"), QStringLiteral("2.0")},
                    {QStringLiteral("status"), QStringLiteral("ready")}};
    return map;
}

} // namespace

Expectation expectation(Shape shape)
{
    const QString key = QStringLiteral("key");
    const QString path = QStringLiteral("/some/path");
    const QVariant pathValue = QVariant::fromValue(QDBusObjectPath(path));
    const QStringList texts{QStringLiteral("one"), QStringLiteral("two")};
    const QStringList mapLine{
        QStringLiteral("WindowManagerDbusGeneralProxy: expected map argument but passed non map")};
    const QStringList listLine{
        QStringLiteral("WindowManagerDbusGeneralProxy: expected list argument but passed non map")};
    switch (shape) {
    case Shape::Command:
        return {{}, {}, {}, {}, {}, {}, {}};
    case Shape::Text:
        return {"QString", QStringLiteral("an answer"), QStringLiteral("an answer"),
                QString(), QStringLiteral("42"),        QString(),
                {}};
    case Shape::Flag:
        return {"bool", true, true, false, true, false, {}};
    case Shape::Number:
        return {"int", -7, -7, 0, 42, 0, {}};
    case Shape::LongNumber:
        return {"qlonglong", 5000000000LL, 5000000000LL, 0LL, 42LL, 0LL, {}};
    case Shape::Real:
        return {"double", 0.25, 0.25, 0.0, 42.0, 0.0, {}};
    case Shape::SmallReal:
        return {"float", 0.25, 0.25F, 0.0F, 42.0F, 0.0F, {}};
    case Shape::Texts:
        return {"QStringList", texts, texts, QStringList(), QStringList(), QStringList(), {}};
    case Shape::Json:
        // Any JSON value, so the text of a number is one.
        return {"JSON-parsed replies",
                QByteArray("\"an answer\""),
                QStringLiteral("an answer"),
                QVariant(),
                42LL,
                QVariant(),
                {}};
    case Shape::JsonMap:
        return {"JSON map",
                QByteArray(R"({"key": [5000000000, 2.5, "text", null, true, {}]})"),
                QVariantMap{{key, list({5000000000LL, 2.5, QStringLiteral("text"),
                                        QVariant::fromValue(nullptr), true, QVariantMap()})}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::JsonIntegers:
        return {"JSON map",
                QByteArray(R"({"a": 8589934592, "b": 2.75, "c": null})"),
                QVariantMap{{QStringLiteral("a"), 8589934592LL},
                            {QStringLiteral("b"), 3LL},
                            {QStringLiteral("c"), QVariant::fromValue(nullptr)}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::JsonList:
        return {"JSON list",
                QByteArray("[[1, 2], {\"key\": \"\xc3\xa9\"}]"),
                list({list({1LL, 2LL}), QVariantMap{{key, QStringLiteral("\u00e9")}}}),
                list({}),
                list({}),
                list({}),
                {}};
    case Shape::DeviceState:
        return {"device state",
                QByteArray(R"({"device_name":"kitchen","server_id":"17","apps_auto_update_enabled":true,)"
                           R"("update_available":{"version":"2.0","status":"ready"}})"),
                fullDeviceState(),
                emptyDeviceState(),
                emptyDeviceState(),
                emptyDeviceState(),
                {}};
    case Shape::Map:
        return {"parseDBusMap",
                QVariantMap{{key, list({list({1}), 2})}, {QStringLiteral("path"), pathValue}},
                QVariantMap{{key, list({1, 2})}, {QStringLiteral("path"), path}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                mapLine};
    case Shape::List:
        return {"parseDBusList",
                list({list({1, list({2})}), pathValue}),
                list({1, 2, path}),
                list({}),
                list({}),
                list({1}),
                listLine};
    case Shape::Entries:
        return {"one level",
                QVariantMap{{key, 1}, {QStringLiteral("other"), QStringLiteral("text")}},
                QVariantMap{{key, 1}, {QStringLiteral("other"), QStringLiteral("text")}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::ConvertedTexts:
        return {"convertDBusVariant, then QStringList", texts, texts, QStringList(), QStringList(),
                QStringList{QStringLiteral("1")},       {}};
    case Shape::ConvertedList:
        return {"convertDBusVariant, then list",
                list({list({1}), pathValue}),
                list({list({1}), path}),
                list({}),
                list({}),
                list({1}),
                {}};
    case Shape::ConvertedMap:
        return {"structured",
                QVariantMap{{key, list({list({1})})}},
                QVariantMap{{key, list({list({1})})}},
                QVariantMap(),
                QVariantMap(),
                QVariantMap(),
                {}};
    case Shape::Asynchronous:
        return {{}, 42, 42, QVariant(), 42, QVariant(), {}};
    }
    return {};
}
