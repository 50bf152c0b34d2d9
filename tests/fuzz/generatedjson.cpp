#include "generatedjson.h"

namespace
{

constexpr int longestText = 12;
constexpr int mostElements = 5;

const QList<QByteArray> keys = {"app_id", "apps", "device_id", "identifier", "name", "status", "type"};
const QList<QByteArray> numbers = {
    "0",    "-0",  "1",      "-1.5",  "9007199254740993",   "9223372036854775807",
    "1e30", "1e3", "1e-400", "1e999", "9223372036854775808"};
// What the fuzzers' records and device hold.
const QList<QByteArray> texts = {
    "\"d9\"", "\"u1\"", "\"U1\"", "\"7\"", "\"\"", "\"\\u0000\"", "\"\\ud83d\\ude00\""};

QByteArray quoted(const QByteArray &bytes)
{
    QByteArray text = "\"";
    for (const char letter : bytes) {
        if (letter == '"' || letter == '\\') {
            text += '\\';
        }
        text += letter;
    }
    return text + '"';
}

QByteArray takeText(FuzzedDataProvider &input)
{
    return input.ConsumeBool() ? takeOneOf(input, texts) : quoted(takeBytes(input, longestText));
}

QByteArray takeKey(FuzzedDataProvider &input)
{
    return input.ConsumeBool() ? quoted(takeOneOf(input, keys)) : quoted(takeBytes(input, longestText));
}

template <typename Element>
QByteArray takeElements(FuzzedDataProvider &input, Element takeElement)
{
    QList<QByteArray> elements;
    const int count = input.ConsumeIntegralInRange<int>(0, mostElements);
    for (int i = 0; i < count; ++i) {
        elements.append(takeElement());
    }
    return elements.join(',');
}

QByteArray takeApplication(FuzzedDataProvider &input)
{
    if (input.ConsumeIntegralInRange<int>(0, 7) == 0) {
        return GeneratedJson::takeValue(input, 2);
    }
    QByteArray application = "{";
    for (const char *key : {"app_id", "device_id", "identifier", "name", "type"}) {
        const bool isOurs = qstrcmp(key, "device_id") == 0 && input.ConsumeIntegralInRange<int>(0, 3) > 0;
        application += quoted(key) + ':' + (isOurs ? "\"d9\"" : GeneratedJson::takeValue(input, 1)) + ',';
    }
    return application + takeKey(input) + ":0}";
}

} // namespace

QByteArray GeneratedJson::takeValue(FuzzedDataProvider &input, int depth)
{
    switch (input.ConsumeIntegralInRange<int>(0, depth > 0 ? 8 : 5)) {
    case 0:
        return takeText(input);
    case 1:
        return QByteArray::number(input.ConsumeIntegral<qint64>());
    case 2:
        return takeOneOf(input, numbers);
    case 3:
        return takeOneOf(input, QList<QByteArray>{"null", "true", "false"});
    case 4:
        return QByteArray::number(input.ConsumeFloatingPoint<double>(), 'g', 17);
    case 5:
        return takeBytes(input, longestText);
    case 6:
        return '[' + takeElements(input, [&] { return takeValue(input, depth - 1); }) + ']';
    default:
        return '{' + takeElements(input, [&] { return takeKey(input) + ':' + takeValue(input, depth - 1); }) +
               '}';
    }
}

QByteArray GeneratedJson::takeRegisterReply(FuzzedDataProvider &input)
{
    return "{\"app_id\":" + takeValue(input, 1) + ",\"status\":" + takeValue(input, 1) + '}';
}

QByteArray GeneratedJson::takeListReply(FuzzedDataProvider &input)
{
    return "{\"apps\":[" + takeElements(input, [&] { return takeApplication(input); }) + "]}";
}
