#include "catalogue.h"
#include "privatebus.h"
#include "proxytable.h"

#include <QDBusConnection>
#include <QFile>
#include <QtTest>

#include <algorithm>

namespace
{

const char connectionName[] = "client";

QString code(const QString &types)
{
    return types.isEmpty() ? QStringLiteral("none") : QStringLiteral("`%1`").arg(types);
}

QString busType(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return QStringLiteral("s");
    case QMetaType::Bool:
        return QStringLiteral("b");
    case QMetaType::Int:
        return QStringLiteral("i");
    case QMetaType::LongLong:
        return QStringLiteral("x");
    case QMetaType::Double:
        return QStringLiteral("d");
    case QMetaType::QStringList:
        return QStringLiteral("as");
    case QMetaType::QByteArray:
        return QStringLiteral("ay");
    case QMetaType::QVariantMap:
        return QStringLiteral("a{sv}");
    default:
        return QStringLiteral("?");
    }
}

bool sendsJson(const Member &member)
{
    return std::any_of(member.arguments.begin(), member.arguments.end(), [](const QVariant &argument) {
        return argument.userType() == QMetaType::QByteArray && argument == Sample::jsonText;
    });
}

struct Column {
    const char *shape;
    const char *result;
};

Column column(const Member &member)
{
    const bool logging = member.errorLine;
    switch (member.shape) {
    case Shape::Command:
        return {sendsJson(member) ? "JSON command" : "command", ""};
    case Shape::Text:
        return {"value getter", "s"};
    case Shape::Flag:
        return {"value getter", "b"};
    case Shape::Number:
        return {"value getter", "i"};
    case Shape::LongNumber:
        return {"value getter", "x"};
    case Shape::Real:
    case Shape::SmallReal:
        return {"value getter", "d"};
    case Shape::Texts:
        return {logging ? "logging getter" : "value getter", "as"};
    case Shape::Json:
    case Shape::JsonMap:
    case Shape::JsonIntegers:
    case Shape::JsonList:
    case Shape::DeviceState:
        return {logging ? "JSON getter, logging" : "JSON getter", "ay"};
    case Shape::Map:
    case Shape::Entries:
    case Shape::ConvertedMap:
        return {"structured getter", "a{sv}"};
    case Shape::List:
    case Shape::ConvertedList:
        return {"structured getter", "av"};
    case Shape::ConvertedTexts:
        return {"structured getter", "as"};
    case Shape::Asynchronous:
        return {"asynchronous call", ""};
    }
    return {"?", "?"};
}

} // namespace

/// Holds the table in the documentation against what the members were seen to send.
class TestProxyDocs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void table_hasARowForEveryMember();
};

void TestProxyDocs::table_hasARowForEveryMember()
{
    PrivateBus bus;
    QVERIFY(bus.start());
    const auto connection = QDBusConnection::connectToBus(bus.address(), QLatin1String(connectionName));
    QStringList expected;
    for (const ProxyTable &table : everyProxyTable(connection)) {
        const auto row =
            std::find_if(catalogue().begin(), catalogue().end(),
                         [&table](const CatalogueRow &each) { return each.className == table.className; });
        QVERIFY(row != catalogue().end());
        const QString identity =
            QStringLiteral("| `%1` | `%2` | `%3` | `%4` |")
                .arg(QString::fromStdString(row->className), QString::fromStdString(row->service),
                     QString::fromStdString(row->path), QString::fromStdString(row->interface));
        for (const Member &member : table.members) {
            const Column shown = column(member);
            QString types = code(QLatin1String(member.signature));
            if (*shown.result != '\0') {
                types += QStringLiteral(" \u2192 ") + code(QLatin1String(shown.result));
            }
            expected.append(identity +
                            QStringLiteral(" `%1` | %2 | %3 |")
                                .arg(QLatin1String(member.name), QLatin1String(shown.shape), types));
        }
        for (const Subscription &subscription : table.subscriptions) {
            QString types;
            for (const QVariant &argument : subscription.arguments) {
                types += busType(argument);
            }
            expected.append(identity + QStringLiteral(" `%1` | signal subscription | %2 |")
                                           .arg(QLatin1String(subscription.signal), code(types)));
        }
    }

    QFile file(QStringLiteral(PROXY_TABLE));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QStringList rows =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')).filter(QStringLiteral("::"));
    // What an asynchronous call will be answered is for its caller to read.
    rows.replaceInStrings(QRegularExpression(QStringLiteral("(asynchronous call \\| [^ ]+) \u2192 .*")),
                          QStringLiteral("\\1 |"));
    rows.sort();
    expected.sort();
    QVERIFY(!rows.isEmpty());
    QCOMPARE(rows, expected);
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

QTEST_GUILESS_MAIN(TestProxyDocs)
#include "tst_proxydocs.moc"
