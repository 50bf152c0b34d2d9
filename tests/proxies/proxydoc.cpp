#include "proxydoc.h"

#include "catalogue.h"
#include "proxytable.h"

#include <QDBusConnection>
#include <QRegularExpression>

#include <algorithm>
#include <set>
#include <string>

namespace
{

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

// Members whose arguments the device's design gives; of all others it gives the name, the kind and the result
// alone.
bool areArgumentsFixed(const std::string &className, const std::string &member, bool isSignal)
{
    if (className == "Daemon::GeneralProxy") {
        return !isSignal || member == "apiKeyDidSet" || member == "daemonDidStart";
    }
    const std::set<std::string> fixed{
        "Daemon::NetworkProxy isInternetAvailable",
        "Daemon::NetworkProxy internetAvailabilityChanged",
        "WindowManager::GeneralProxy listOfInstalledWidgets",
        "WindowManager::GeneralProxy windowServerDidStarted",
        "WindowManager::GeneralProxy widgetDeleted",
        "WindowManager::GeneralProxy newWidgetCreated",
    };
    return fixed.count(className + ' ' + member) != 0;
}

// What an asynchronous call is answered: as the getter of its name, where there is one.
QString resultOf(const ProxyTable &table, const Member &member)
{
    const auto twin = std::find_if(table.members.begin(), table.members.end(), [&member](const Member &each) {
        return each.shape != Shape::Asynchronous && std::string(each.name) == member.name;
    });
    return twin == table.members.end() ? QString() : QLatin1String(column(*twin).result);
}

DocumentedMember documented(const ProxyTable &table, const Member &member)
{
    const QString signature = QLatin1String(member.signature);
    return {QLatin1String(table.className),
            QLatin1String(member.name),
            QLatin1String(column(member).shape),
            signature,
            resultOf(table, member),
            areArgumentsFixed(table.className, member.name, false)};
}

DocumentedMember documented(const ProxyTable &table, const Subscription &subscription)
{
    QString signature;
    for (const QVariant &argument : subscription.arguments) {
        signature += busType(argument);
    }
    return {QLatin1String(table.className),
            QLatin1String(subscription.signal),
            QStringLiteral("signal subscription"),
            signature,
            QString(),
            areArgumentsFixed(table.className, subscription.signal, true)};
}

QString row(const DocumentedMember &member)
{
    const auto service =
        std::find_if(catalogue().begin(), catalogue().end(), [&member](const CatalogueRow &each) {
            return each.className == member.className.toStdString();
        });
    if (service == catalogue().end()) {
        return QStringLiteral("| %1 is in no catalogue |").arg(member.className);
    }
    QString types = code(member.signature);
    if (!member.result.isEmpty()) {
        types += QStringLiteral(" \u2192 ") + code(member.result);
    }
    return QStringLiteral("| `%1` | `%2` | `%3` | `%4` | `%5` | %6 | %7 | %8 |")
        .arg(member.className, QString::fromStdString(service->service),
             QString::fromStdString(service->path), QString::fromStdString(service->interface), member.name,
             member.shape, types,
             member.areArgumentsFixed ? QStringLiteral("fixed") : QStringLiteral("assumed"));
}

} // namespace

std::vector<DocumentedMember> documentedMembers()
{
    std::vector<DocumentedMember> members;
    // Nothing is called, so no bus is needed.
    for (const ProxyTable &table : everyProxyTable(QDBusConnection(QStringLiteral("no bus")))) {
        for (const Member &member : table.members) {
            members.push_back(documented(table, member));
        }
        for (const Subscription &subscription : table.subscriptions) {
            members.push_back(documented(table, subscription));
        }
    }
    return members;
}

QString proxyTable()
{
    QStringList lines{
        QStringLiteral("## Every member"),
        QString(),
        QStringLiteral(
            "| Class | Service | Path | Interface | Member | Shape | D-Bus signature | Arguments |"),
        QStringLiteral("|---|---|---|---|---|---|---|---|"),
    };
    for (const DocumentedMember &member : documentedMembers()) {
        lines.append(row(member));
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}
