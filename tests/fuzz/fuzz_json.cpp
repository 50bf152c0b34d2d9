// The proxies' JSON: text that is read, written and read again, and values that are written and read.

#include "described.h"
#include "fuzzing.h"
#include "generatedjson.h"
#include "shapes/json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <cmath>
#include <cstring>
#include <limits>

namespace Json = VorletProxiesPrivate::Json;

namespace
{

constexpr int longestText = 16;
constexpr int mostElements = 4;
constexpr int deepest = 6;

bool isInteger(const QVariant &value)
{
    return value.userType() == QMetaType::LongLong || value.userType() == QMetaType::Int;
}

// JSON knows one kind of number; an integer is exact.
bool isSameNumber(const QVariant &one, const QVariant &other)
{
    const bool areNumbers = (isInteger(one) || one.userType() == QMetaType::Double) &&
                            (isInteger(other) || other.userType() == QMetaType::Double);
    if (!areNumbers) {
        return false;
    }
    return isInteger(one) && isInteger(other) ? one.toLongLong() == other.toLongLong()
                                              : one.toDouble() == other.toDouble();
}

bool isSame(const QVariant &one, const QVariant &other)
{
    if (isSameNumber(one, other)) {
        return true;
    }
    if (one.userType() != other.userType()) {
        return false;
    }
    switch (one.userType()) {
    case QMetaType::QVariantList: {
        const QVariantList ones = one.toList();
        const QVariantList others = other.toList();
        return std::equal(ones.cbegin(), ones.cend(), others.cbegin(), others.cend(), isSame);
    }
    case QMetaType::QVariantMap: {
        const QVariantMap ones = one.toMap();
        const QVariantMap others = other.toMap();
        return ones.keys() == others.keys() &&
               std::equal(ones.cbegin(), ones.cend(), others.cbegin(), others.cend(), isSame);
    }
    case QMetaType::Nullptr:
        return true;
    default:
        return one == other;
    }
}

void requireSame(const QVariant &is, const QVariant &mustBe, const char *what)
{
    if (!isSame(is, mustBe)) {
        requireEqual(described(is), described(mustBe), what);
        require(false, what);
    }
}

int nesting(const QVariant &value)
{
    int deepestInside = 0;
    const QVariantList values =
        value.userType() == QMetaType::QVariantMap ? value.toMap().values() : value.toList();
    for (const QVariant &each : values) {
        deepestInside = std::max(deepestInside, nesting(each));
    }
    const bool isContainer =
        value.userType() == QMetaType::QVariantMap || value.userType() == QMetaType::QVariantList;
    return deepestInside + (isContainer ? 1 : 0);
}

// Text that is JSON is read for what it is; what is written of it reads the same.
void checkText(const QByteArray &text)
{
    const QVariant value = Json::parse(text);
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isNull()) {
        require(value.isValid() || nesting(document.toVariant()) > Json::deepestNesting,
                "a document can be read");
    }
    if (!value.isValid()) {
        return;
    }
    if (!document.isNull()) {
        requireSame(value, document.toVariant(), "a document reads as what it is");
    }
    bool isWritten = false;
    const QByteArray written = Json::write(value, &isWritten);
    require(isWritten, "what was read can be written");
    const QVariant again = Json::parse(written);
    require(again.isValid(), "what was written is JSON");
    requireSame(again, value, "what was written reads the same");
    requireEqual(Json::write(again), written, "the text of the same value");
}

// A value and what must be read of its text; invalid where it cannot be written.
struct Sample {
    QVariant value;
    QVariant read;
};

const QVariant null = QVariant::fromValue(nullptr);

Sample takeSample(FuzzedDataProvider &input, int depth);

// A number beyond a double's is none of JSON's.
Sample real(double number)
{
    return {number, std::isfinite(number) ? QVariant(number) : QVariant()};
}

double takeReal(FuzzedDataProvider &input)
{
    using Limits = std::numeric_limits<double>;
    static const std::vector<double> special = {
        -0.0,  Limits::infinity(),   -Limits::infinity(),  Limits::quiet_NaN(), Limits::max(),
        1e17,  Limits::min(),        Limits::denorm_min(), 9007199254740993.0,  0.1,
        -1e21, 9223372036854775808.0};
    const auto bits = input.ConsumeIntegral<std::uint64_t>();
    double any = 0;
    std::memcpy(&any, &bits, sizeof any);
    return input.ConsumeBool() ? takeOneOf(input, special) : any;
}

Sample takeNumber(FuzzedDataProvider &input)
{
    const auto number = input.ConsumeIntegral<qint64>();
    switch (input.ConsumeIntegralInRange<int>(0, 6)) {
    case 0:
        return {static_cast<int>(number), static_cast<qint64>(static_cast<int>(number))};
    case 1:
        return {QVariant::fromValue(static_cast<uchar>(number)),
                static_cast<qint64>(static_cast<uchar>(number))};
    case 2:
        return {QVariant::fromValue(static_cast<long>(number)), number};
    case 3:
        return {QVariant::fromValue(static_cast<quint64>(number) >> 1U),
                static_cast<qint64>(static_cast<quint64>(number) >> 1U)};
    case 4:
        return {number % 2 == 0, number % 2 == 0};
    case 5:
        return real(takeReal(input));
    default:
        return {number, number};
    }
}

Sample takeText(FuzzedDataProvider &input)
{
    const QByteArray bytes = takeBytes(input, longestText);
    const QString text = QString::fromUtf8(bytes.constData(), bytes.size());
    switch (input.ConsumeIntegralInRange<int>(0, 4)) {
    case 0:
        return {bytes, text + QLatin1String("")};
    case 1:
        return {QString(), QStringLiteral("")};
    case 2:
        return {QUrl(QStringLiteral("http://h/p")), QStringLiteral("http://h/p")};
    case 3:
        return {QStringList{text, text}, QVariantList{text, text}};
    default:
        return {text, text + QLatin1String("")};
    }
}

Sample takeList(FuzzedDataProvider &input, int depth)
{
    QVariantList values;
    QVariantList read;
    bool isWritten = true;
    const int count = input.ConsumeIntegralInRange<int>(0, mostElements);
    for (int i = 0; i < count; ++i) {
        const Sample sample = takeSample(input, depth - 1);
        values.append(sample.value);
        read.append(sample.read);
        isWritten = isWritten && sample.read.isValid();
    }
    return {QVariant(values), isWritten ? QVariant(read) : QVariant()};
}

Sample takeMap(FuzzedDataProvider &input, int depth)
{
    QMap<QString, Sample> samples;
    const int count = input.ConsumeIntegralInRange<int>(0, mostElements);
    for (int i = 0; i < count; ++i) {
        samples.insert(::takeText(input, longestText), takeSample(input, depth - 1));
    }
    QVariantMap values;
    QVariantMap read;
    bool isWritten = true;
    for (auto sample = samples.cbegin(); sample != samples.cend(); ++sample) {
        values.insert(sample.key(), sample->value);
        read.insert(sample.key(), sample->read);
        isWritten = isWritten && sample->read.isValid();
    }
    return {values, isWritten ? QVariant(read) : QVariant()};
}

Sample takeSample(FuzzedDataProvider &input, int depth)
{
    switch (input.ConsumeIntegralInRange<int>(0, depth > 0 ? 8 : 5)) {
    case 0:
        return {QVariant(), null};
    case 1:
        return {null, null};
    case 2:
        return {QVariant::fromValue(QJsonValue(2.5)), 2.5};
    case 3:
        return {QJsonObject{{QStringLiteral("a"), QJsonArray{1, QJsonValue()}}},
                QVariantMap{{QStringLiteral("a"), QVariantList{1LL, null}}}};
    case 4:
        return takeText(input);
    case 5:
        return takeNumber(input);
    case 6:
        return takeList(input, depth);
    default:
        return takeMap(input, depth);
    }
}

void checkValue(const Sample &sample)
{
    bool isWritten = false;
    const QByteArray text = Json::write(sample.value, &isWritten);
    requireEqual(isWritten, sample.read.isValid(), "what JSON can carry is written, and nothing else");
    if (!isWritten) {
        requireEqual(text, QByteArray(), "the text of what JSON cannot carry");
        return;
    }
    const QJsonDocument document = QJsonDocument::fromJson('[' + text + ']');
    requireEqual(document.array().size(), 1, "what was written is one value");
    requireSame(document.array().first().toVariant(), sample.read, "a value reads as what was written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    switch (input.ConsumeIntegralInRange<int>(0, 2)) {
    case 0:
        checkText(takeRest(input));
        break;
    case 1:
        checkText(GeneratedJson::takeValue(input, deepest));
        break;
    default:
        checkValue(takeSample(input, deepest));
    }
    return 0;
}
