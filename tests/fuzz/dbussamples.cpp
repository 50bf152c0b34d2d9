#include "dbussamples.h"

#include "described.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusVariant>
#include <QJsonArray>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>

namespace
{

constexpr int longestText = 8;
constexpr int mostElements = 4;
constexpr int deepestNest = 32;
// How many containers stand around what lies in one: array and variant; array, entry and variant.
constexpr int listContainers = 2;
constexpr int mapContainers = 3;

QString joined(const QStringList &parts, const char *open, const char *close)
{
    return QLatin1String(open) + parts.join(QStringLiteral(", ")) + QLatin1String(close);
}

DBusSample leftOut(const QVariant &value)
{
    DBusSample sample;
    sample.value = value;
    sample.arrives = false;
    return sample;
}

// A value that reads the same everywhere.
DBusSample plain(const QVariant &value, const QVariant &arrived, int containers, int room)
{
    const QString text = described(arrived);
    return {value, containers <= room, text, text, text, false, {}};
}

DBusSample plain(const QVariant &value, int room)
{
    return plain(value, value, 0, room);
}

DBusSample listOf(const QList<DBusSample> &elements, int room)
{
    QVariantList values;
    QStringList raw;
    QStringList kept;
    QStringList flat;
    for (const DBusSample &element : elements) {
        values.append(element.value);
        if (element.arrives) {
            raw.append(element.raw);
            kept.append(element.kept);
            flat.append(element.isArray ? element.flatElements : QStringList{element.flat});
        }
    }
    return {QVariant(values),
            room >= 1,
            joined(raw, "[", "]"),
            joined(kept, "[", "]"),
            joined(flat, "[", "]"),
            true,
            flat};
}

DBusSample mapOf(const QMap<QString, DBusSample> &entries, int room)
{
    QVariantMap values;
    QStringList raw;
    QStringList kept;
    QStringList flat;
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
        values.insert(entry.key(), entry->value);
        if (entry->arrives) {
            const QString key = QLatin1Char('"') + entry.key() + QStringLiteral("\": ");
            raw.append(key + entry->raw);
            kept.append(key + entry->kept);
            flat.append(key + entry->flat);
        }
    }
    return {values, room >= 1, joined(raw, "{", "}"), joined(kept, "{", "}"), joined(flat, "{", "}"),
            false,  {}};
}

// Nothing in a variant is decoded.
DBusSample variantOf(const DBusSample &sample)
{
    return {QVariant::fromValue(QDBusVariant(sample.value)),
            sample.arrives,
            sample.raw,
            sample.raw,
            sample.raw,
            false,
            {}};
}

DBusSample structure(int number, const QString &text, int room)
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << number << text;
    argument.endStructure();
    const QString raw = joined({described(number), described(text)}, "(", ")");
    return {QVariant::fromValue(argument), room >= 1, raw, QStringLiteral("nothing"), raw, false, {}};
}

// With a variant in it: a program's own would end the process, a service's is sent on as it came.
DBusSample looseStructure(int number, bool isOfService, int room)
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << QDBusVariant(number);
    argument.endStructure();
    const QString raw = joined({described(number)}, "(", ")");
    return {QVariant::fromValue(argument),
            isOfService && room >= 2,
            raw,
            QStringLiteral("nothing"),
            raw,
            false,
            {}};
}

DBusSample numbers(int first, int second, int room)
{
    const QStringList elements = {described(first), described(second)};
    const QString decoded = joined(elements, "[", "]");
    return {QVariant::fromValue(QList<int>{first, second}),
            room >= 1,
            QStringLiteral("ai") + decoded,
            decoded,
            decoded,
            true,
            elements};
}

DBusSample numbersOfNumbers(int first, int second, int room)
{
    QDBusArgument argument;
    argument.beginArray(qMetaTypeId<QList<int>>());
    argument << QList<int>{first} << QList<int>{second};
    argument.endArray();
    const QStringList elements = {described(first), described(second)};
    return {QVariant::fromValue(argument),
            room >= 2,
            QStringLiteral("aai[ai[%1], ai[%2]]").arg(elements.at(0), elements.at(1)),
            QStringLiteral("[[%1], [%2]]").arg(elements.at(0), elements.at(1)),
            joined(elements, "[", "]"),
            true,
            elements};
}

DBusSample textsByNumber(int number, const QString &text, int room)
{
    QDBusArgument argument;
    argument.beginMap(QMetaType::Int, QMetaType::QString);
    argument.beginMapEntry();
    argument << number << text;
    argument.endMapEntry();
    argument.endMap();
    const QString decoded = QStringLiteral("{\"") + QString::number(number) + QStringLiteral("\": ") +
                            described(text) + QLatin1Char('}');
    const QString raw = QStringLiteral("a{is}{\"") + described(number) + QStringLiteral("\": ") +
                        described(text) + QLatin1Char('}');
    return {QVariant::fromValue(argument), room >= 2, raw, decoded, decoded, false, {}};
}

// A text on the bus ends at its first zero byte.
QString takeCarriedText(FuzzedDataProvider &input)
{
    const QString text = takeText(input, longestText);
    const int end = static_cast<int>(text.indexOf(QChar(0)));
    return end < 0 ? text : text.left(end);
}

} // namespace

DBusSamples::DBusSamples(FuzzedDataProvider &fuzzedInput, Sender who)
    : input(fuzzedInput)
    , sender(who)
{
}

DBusSample DBusSamples::takeMap(int room, int depth)
{
    QMap<QString, DBusSample> entries;
    const int count = input.ConsumeIntegralInRange<int>(0, mostElements);
    for (int i = 0; i < count; ++i) {
        const QString key = takeCarriedText(input);
        entries.insert(key, takeAny(room - mapContainers, depth - 1));
    }
    return mapOf(entries, room);
}

DBusSample DBusSamples::takeList(int room, int depth)
{
    QList<DBusSample> elements;
    const int count = input.ConsumeIntegralInRange<int>(0, mostElements);
    for (int i = 0; i < count; ++i) {
        elements.append(takeAny(room - listContainers, depth - 1));
    }
    return listOf(elements, room);
}

// Many containers in one another, up to the limit and beyond it; a service's are none beyond it.
DBusSample DBusSamples::takeNest(int room, int depth)
{
    const bool isOfMaps = input.ConsumeBool();
    const int containers = isOfMaps ? mapContainers : listContainers;
    int levels = input.ConsumeIntegralInRange<int>(0, deepestNest);
    if (sender == Sender::Service) {
        levels = std::min(levels, (room - 6) / containers);
    }
    DBusSample sample = takeAny(room - levels * containers, depth - 1);
    for (int level = levels - 1; level >= 0; --level) {
        const int roomThere = room - level * containers;
        sample = isOfMaps ? mapOf({{QStringLiteral("a"), sample}}, roomThere) : listOf({sample}, roomThere);
    }
    return sample;
}

DBusSample DBusSamples::takeVariant(int room, int depth)
{
    return variantOf(takeAny(room - 1, depth - 1));
}

DBusSample DBusSamples::takeWritten(int room)
{
    const int number = input.ConsumeIntegral<int>();
    const QString text = takeCarriedText(input);
    switch (input.ConsumeIntegralInRange<int>(0, 4)) {
    case 0:
        return structure(number, text, room);
    case 1:
        return looseStructure(number, sender == Sender::Service, room);
    case 2:
        return numbers(number, ~number, room);
    case 3:
        return numbersOfNumbers(number, ~number, room);
    default:
        return textsByNumber(number, text, room);
    }
}

DBusSample DBusSamples::takeLeaf(int room)
{
    const qint64 number = input.ConsumeIntegral<qint64>();
    const QString text = takeCarriedText(input);
    switch (input.ConsumeIntegralInRange<int>(0, 9)) {
    case 0:
        return plain(static_cast<int>(number), room);
    case 1:
        return plain(number, room);
    case 2:
        return plain(static_cast<double>(number) / 3, room);
    case 3:
        return plain(number % 2 == 0, room);
    case 4:
        return plain(QVariant::fromValue(static_cast<uchar>(number)), room);
    case 5:
        return plain(text.toUtf8(), text.toUtf8(), 1, room);
    case 6:
        return plain(QStringList{text, text}, QStringList{text, text}, 1, room);
    case 7: {
        const QDBusObjectPath path(QStringLiteral("/p") + QString::number(static_cast<quint64>(number)));
        DBusSample sample = plain(QVariant::fromValue(path), room);
        sample.kept = sample.flat = described(path.path());
        return sample;
    }
    case 8:
        return plain(QVariant::fromValue(QDBusSignature(QStringLiteral("a{sv}"))), room);
    default:
        return plain(text, room);
    }
}

// What a map may hold, and D-Bus does not carry as it is.
DBusSample DBusSamples::takeAwkward(int room)
{
    const QString text = takeText(input, longestText);
    const QString carriedText = text.left(static_cast<int>((text + QChar(0)).indexOf(QChar(0))));
    const QString address = QStringLiteral("http://h/p");
    switch (input.ConsumeIntegralInRange<int>(0, 8)) {
    case 0:
        return leftOut(QVariant());
    case 1:
        return leftOut(QVariant::fromValue(nullptr));
    case 2:
        return leftOut(QVariant::fromValue(QDBusObjectPath()));
    case 3:
        return leftOut(QVariant::fromValue(QDBusVariant()));
    case 4:
        return plain(0.5F, 0.5, 0, room);
    case 5:
        return plain(QUrl(address), address, 0, room);
    case 6:
        return plain(text, carriedText, 0, room);
    case 7:
        return plain(QVariant::fromValue(QJsonValue(QStringLiteral("a"))), QStringLiteral("a"), 0, room);
    default: {
        DBusSample sample = listOf({plain(1LL, room - listContainers), leftOut(QVariant())}, room);
        sample.value = QJsonArray{1, QJsonValue()};
        if (room < listContainers) {
            sample.raw = sample.kept = sample.flat = QStringLiteral("[]");
            sample.flatElements.clear();
        }
        return sample;
    }
    }
}

DBusSample DBusSamples::takeAny(int room, int depth)
{
    const bool isLeaf = depth <= 0 || (sender == Sender::Service && room < 6);
    switch (input.ConsumeIntegralInRange<int>(0, isLeaf ? 3 : 9)) {
    case 0:
        return sender == Sender::Program ? takeAwkward(room) : takeLeaf(room);
    case 1:
        return takeWritten(room);
    case 2:
    case 3:
        return takeLeaf(room);
    case 4:
        return takeVariant(room, depth);
    case 5:
        return takeNest(room, depth);
    case 6:
    case 7:
        return takeList(room, depth);
    default:
        return takeMap(room, depth);
    }
}
