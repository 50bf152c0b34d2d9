#include "awkwardvalues.h"

#include "emptyvalues.h"

#include <QBitArray>
#include <QCborArray>
#include <QCborMap>
#include <QCborValue>
#include <QDateTime>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QPersistentModelIndex>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>
#include <QUuid>
#include <QVector>

namespace
{

const QString a = QStringLiteral("a");

enum class Color { Red = 1, Green = 2 };

// A structure of the program's own that D-Bus knows; one with a variant inside and one without.
struct Loose {
    QVariant any;
};
struct Fixed {
    int number = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Loose &loose)
{
    argument.beginStructure();
    argument << QDBusVariant(loose.any);
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Loose &loose)
{
    QDBusVariant any;
    argument.beginStructure();
    argument >> any;
    argument.endStructure();
    loose.any = any.variant();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const Fixed &fixed)
{
    argument.beginStructure();
    argument << fixed.number;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Fixed &fixed)
{
    argument.beginStructure();
    argument >> fixed.number;
    argument.endStructure();
    return argument;
}

QDBusArgument writtenStructure()
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << 1 << a;
    argument.endStructure();
    return argument;
}

QDBusArgument writtenStructureWithVariant()
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << QDBusVariant(1);
    argument.endStructure();
    return argument;
}

QDBusArgument twoNumbers()
{
    QDBusArgument argument;
    argument << 1 << 2;
    return argument;
}

QVariant openStructure()
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << 1;
    return kept(argument);
}

// The received structure, read up to its second field, and read to its end; the received map, just opened.
QVariant halfRead(const QVariant &received)
{
    const auto argument = received.value<QDBusArgument>();
    int number = 0;
    if (argument.currentType() == QDBusArgument::StructureType) {
        argument.beginStructure();
        argument >> number;
    }
    return kept(argument);
}

QVariant whollyRead(const QVariant &received)
{
    const auto argument = received.value<QDBusArgument>();
    int number = 0;
    QString text;
    if (argument.currentType() == QDBusArgument::StructureType) {
        argument.beginStructure();
        argument >> number >> text;
        argument.endStructure();
    }
    return QVariant::fromValue(argument);
}

QVariant opened(const QVariant &received)
{
    const auto argument = received.value<QDBusArgument>();
    if (argument.currentType() == QDBusArgument::MapType) {
        argument.beginMap();
    }
    return kept(argument);
}

template <typename T>
QVariant of(const T &value)
{
    return QVariant::fromValue(value);
}

void add(std::vector<AwkwardValue> &values, const std::vector<AwkwardValue> &more)
{
    values.insert(values.end(), more.begin(), more.end());
}

} // namespace

Q_DECLARE_METATYPE(Color)
Q_DECLARE_METATYPE(Loose)
Q_DECLARE_METATYPE(Fixed)

QVariant kept(const QDBusArgument &argument)
{
    static auto *const arguments = new std::vector<QDBusArgument>;
    arguments->push_back(argument);
    return QVariant::fromValue(argument);
}

QVariantMap placed(const QVariant &value, Position position)
{
    const QString key = QStringLiteral("value");
    QVariantMap map{{QStringLiteral("last"), 1}};
    switch (position) {
    case Position::Top:
        map.insert(key, value);
        break;
    case Position::InMap:
        map.insert(key, QVariantMap{{key, value}});
        break;
    case Position::InList:
        map.insert(key, QVariant(QVariantList{value}));
        break;
    }
    return map;
}

QVariantMap receivedMap()
{
    return {{QStringLiteral("structure"), of(writtenStructure())},
            {QStringLiteral("variants"), nestedLists(5)},
            {QStringLiteral("map"), QVariantMap{{a, 1}}}};
}

QVariantMap receivedNests()
{
    qDBusRegisterMetaType<Loose>();
    return {{QStringLiteral("nest of maps"), nestedMaps(19)},
            {QStringLiteral("nest of lists"), nestedLists(28)},
            {QStringLiteral("nest around an empty map"), nestedLists(28, QVariantMap())},
            {QStringLiteral("nest of structures"), nestedStructures(28)}};
}

std::vector<AwkwardValue> awkwardValues(const QVariantMap &received)
{
    qDBusRegisterMetaType<Loose>();
    qDBusRegisterMetaType<Fixed>();
    const QVariant structure = received.value(QStringLiteral("structure"));
    const QJsonObject object{{a, QJsonArray{1, 0.5, true, a, QJsonValue()}}};
    const QString halfCharacter(QChar(0xd800));
    std::vector<AwkwardValue> values;
    add(values, {
                    {"invalid", QVariant(), ""},
                    {"null pointer", of(nullptr), ""},
                    {"object", of(static_cast<QObject *>(nullptr)), ""},
                    {"bit array", QBitArray(3), ""},
                    {"regular expression", QRegularExpression(a), ""},
                    {"model index", of(QPersistentModelIndex()), ""},
                    {"pair", of(qMakePair(1, 2)), ""},
                    {"float", 0.5F, R"(double("0.5"))"},
                    {"long", of(5L), R"(qlonglong("5"))"},
                    {"unsigned long", of(5UL), R"(qulonglong("5"))"},
                    {"signed char", of(static_cast<signed char>(-3)), R"(int("-3"))"},
                    {"char", of('c'), R"(QString("c"))"},
                    {"short", of(short(3)), R"(short("3"))"},
                    {"byte", of(uchar(3)), R"(uchar("3"))"},
                    {"enumerator", of(Color::Green), R"(qlonglong("2"))"},
                    {"character", of(QChar(u'c')), R"(QString("c"))"},
                    {"url", QUrl(QStringLiteral("http://h/p")), R"(QString("http://h/p"))"},
                    {"uuid", QUuid(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11),
                     R"(QString("{00000001-0002-0003-0405-060708090a0b}"))"},
                    {"null string", QString(), R"(QString(""))"},
                    {"half a character", halfCharacter, "QString(\"" + halfCharacter.toUtf8() + "\")"},
                    {"bytes", QByteArray("\0a", 2), "bytes(0061)"},
                    {"strings", QStringList{a}, R"(texts("a" of 1))"},
                    {"date", QDate(2020, 2, 3), R"((int("2020"), int("2"), int("3")))"},
                });
    add(values,
        {
            {"JSON object", object, R"({"a": [qlonglong("1"), double("0.5"), bool("true"), QString("a")]})"},
            {"JSON array", QJsonArray{1, object},
             R"([qlonglong("1"), {"a": [qlonglong("1"), double("0.5"), bool("true"), QString("a")]}])"},
            {"JSON value", of(QJsonValue(a)), R"(QString("a"))"},
            {"JSON null", of(QJsonValue()), ""},
            {"JSON undefined", of(QJsonValue(QJsonValue::Undefined)), ""},
            {"JSON document", of(QJsonDocument(QJsonArray{a})), R"([QString("a")])"},
            {"CBOR value", of(QCborValue(a)), R"(QString("a"))"},
            {"CBOR null", of(QCborValue(nullptr)), ""},
            {"CBOR map", of(QCborMap{{a, 1}}), R"({"a": qlonglong("1")})"},
            {"CBOR array", of(QCborArray{1, nullptr}), R"([qlonglong("1")])"},
        });
    add(values,
        {
            {"empty map", QVariantMap(), "{}"},
            {"empty list", QVariant(QVariantList()), "[]"},
            {"hash", QVariantHash{{a, 0.5F}}, R"({"a": double("0.5")})"},
            {"map of strings", of(QMap<QString, QString>{{a, a}}), R"({"a": QString("a")})"},
            {"map of numbers by number", of(QMap<int, float>{{1, 0.5F}}), R"({"1": double("0.5")})"},
            {"list of maps", of(QList<QVariantMap>{{{a, QVariant()}}, {{a, 1}}}), R"([{}, {"a": int("1")}])"},
            {"list of floats", of(QList<float>{0.5F}), R"([double("0.5")])"},
            {"list of urls", of(QList<QUrl>{QUrl(a)}), R"([QString("a")])"},
            {"list of bytes", of(QByteArrayList{"a"}), "[bytes(61)]"},
            {"list of numbers", of(QList<int>{1, 2}), R"(ai[int("1"), int("2")])"},
            {"standard vector", of(std::vector<float>{0.5F}), R"([double("0.5")])"},
            {"list of nothing", QVariant(QVariantList{QVariant(), 1, of(nullptr)}), R"([int("1")])"},
        });
    add(values, {
                    {"variant", of(QDBusVariant(0.5F)), R"(double("0.5"))"},
                    {"empty variant", of(QDBusVariant()), ""},
                    {"variant of null", of(QDBusVariant(of(nullptr))), ""},
                    {"path", of(QDBusObjectPath("/a")), R"(path("/a"))"},
                    {"empty path", of(QDBusObjectPath()), ""},
                    {"signature", of(QDBusSignature("i")), R"(signature("i"))"},
                    {"empty signature", of(QDBusSignature()), ""},
                    {"closed descriptor", of(QDBusUnixFileDescriptor()), ""},
                    {"empty argument", of(QDBusArgument()), ""},
                    {"unfinished argument", openStructure(), ""},
                    {"argument of two", of(twoNumbers()), ""},
                    {"written structure", of(writtenStructure()), R"((int("1"), QString("a")))"},
                    {"written structure with a variant", of(writtenStructureWithVariant()), ""},
                    {"received structure", structure, R"((int("1"), QString("a")))"},
                    {"received structure, half read", halfRead(structure), R"(QString("a"))"},
                    {"received structure, wholly read", whollyRead(structure), ""},
                    {"received map", received.value(QStringLiteral("map")), R"({"a": int("1")})"},
                    {"received map, opened", opened(received.value(QStringLiteral("map"))), ""},
                    {"received lists", received.value(QStringLiteral("variants")), R"([[[[[int("7")]]]]])"},
                    {"own structure", of(Fixed{1}), R"((int("1")))"},
                    {"own structure with a variant", of(Loose{1}), ""},
                    {"own structure with nothing", of(Loose{QVariant()}), ""},
                });
    add(values, emptyValues());
    return values;
}

QVariant nestedMaps(int levels)
{
    return levels == 0 ? QVariant(7) : QVariant(QVariantMap{{a, nestedMaps(levels - 1)}});
}

QVariant nestedLists(int levels, const QVariant &innermost)
{
    return levels == 0 ? innermost : QVariant(QVariantList{nestedLists(levels - 1, innermost)});
}

QVariant nestedStructures(int levels)
{
    return levels == 0 ? QVariant(7) : of(Loose{nestedStructures(levels - 1)});
}

QVariant nestedVariants(int levels)
{
    return levels == 0 ? QVariant(7) : of(QDBusVariant(nestedVariants(levels - 1)));
}
