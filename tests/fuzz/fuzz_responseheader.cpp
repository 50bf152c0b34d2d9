// The text of a response header: read as a second reader reads it, and the same again from its own text.

#include "fuzzing.h"
#include "qhttpresponseheader.h"

#include <QMap>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Field = std::pair<std::string, std::string>;

struct StatusLine {
    int majorVersion;
    int minorVersion;
    int code;
    std::string reason;
};

struct Header {
    std::optional<StatusLine> status;
    std::vector<Field> fields;
};

// Spaces in the text's encoding, Latin 1.
bool isSpace(char letter)
{
    return letter == ' ' || (letter >= '\t' && letter <= '\r') || letter == '\x85' || letter == '\xa0';
}

std::string trimmed(const std::string &text)
{
    std::size_t first = 0;
    std::size_t end = text.size();
    while (first < end && isSpace(text[first])) {
        ++first;
    }
    while (end > first && isSpace(text[end - 1])) {
        --end;
    }
    return text.substr(first, end - first);
}

std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    for (std::size_t first = 0; first <= text.size();) {
        const std::size_t end = std::min(text.find('\n', first), text.size());
        const bool hasReturn = end > first && text[end - 1] == '\r';
        lines.push_back(text.substr(first, end - first - (hasReturn ? 1 : 0)));
        first = end + 1;
    }
    return lines;
}

// Takes the digit at @p at, if there is one.
std::optional<int> takeDigit(const std::string &line, std::size_t &at)
{
    if (at >= line.size() || line[at] < '0' || line[at] > '9') {
        return std::nullopt;
    }
    return line[at++] - '0';
}

std::optional<StatusLine> statusLineOf(const std::string &line)
{
    std::size_t at = 5;
    const std::optional<int> majorVersion = line.rfind("HTTP/", 0) == 0 ? takeDigit(line, at) : std::nullopt;
    std::optional<int> minorVersion = 0;
    if (at < line.size() && line[at] == '.') {
        minorVersion = takeDigit(line, ++at);
    }
    if (!majorVersion || !minorVersion || at >= line.size() || line[at++] != ' ') {
        return std::nullopt;
    }
    int code = 0;
    for (int i = 0; i < 3; ++i) {
        const std::optional<int> digit = takeDigit(line, at);
        if (!digit || (i == 0 && *digit == 0)) {
            return std::nullopt;
        }
        code = 10 * code + *digit;
    }
    if (at < line.size() && line[at] != ' ') {
        return std::nullopt;
    }
    return StatusLine{*majorVersion, *minorVersion, code, at < line.size() ? line.substr(at + 1) : ""};
}

void readField(const std::string &line, std::vector<Field> &fields)
{
    if (line[0] == ' ' || line[0] == '\t') {
        if (!fields.empty()) {
            fields.back().second = trimmed(fields.back().second + ' ' + trimmed(line));
        }
        return;
    }
    const std::size_t colon = line.find(':');
    const std::string name = trimmed(line.substr(0, colon));
    if (colon != std::string::npos && !name.empty()) {
        fields.emplace_back(name, trimmed(line.substr(colon + 1)));
    }
}

// The last header counts; lines behind its end that begin none are the trailer of its body.
Header read(const std::string &text)
{
    const std::vector<std::string> lines = linesOf(text);
    std::size_t first = 0;
    bool isBehindTheEnd = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (isBehindTheEnd && lines[i].rfind("HTTP/", 0) == 0) {
            first = i;
            isBehindTheEnd = false;
        }
        isBehindTheEnd = isBehindTheEnd || lines[i].empty();
    }
    Header header;
    header.status = statusLineOf(lines[first]);
    for (std::size_t i = first + 1; i < lines.size() && !lines[first].empty() && !lines[i].empty(); ++i) {
        readField(lines[i], header.fields);
    }
    return header;
}

QString text(const std::string &latin1)
{
    return QString::fromLatin1(latin1.data(), static_cast<int>(latin1.size()));
}

void requireFields(const QHttpResponseHeader &header, const std::vector<Field> &fields)
{
    const QStringList keys = header.keys();
    requireEqual(keys.size(), static_cast<qint64>(fields.size()), "as many fields as were sent");
    QMap<QString, QStringList> values;
    for (int i = 0; i < keys.size(); ++i) {
        const Field &field = fields[static_cast<std::size_t>(i)];
        requireEqual(keys.at(i), text(field.first), "a field's name");
        values[keys.at(i).toCaseFolded()].append(text(field.second));
    }
    for (auto each = values.cbegin(); each != values.cend(); ++each) {
        require(header.hasKey(each.key()), "a field is found in any case");
        requireEqual(header.value(each.key()), each->first(), "a field's first value");
        const QStringList all = header.allValues(each.key());
        require(all == each.value(), "a field's values");
    }
}

void requireStatus(const QHttpResponseHeader &header, const StatusLine &status)
{
    require(header.isValid(), "a header with a status line is valid");
    requireEqual(header.statusCode(), status.code, "the status");
    requireEqual(header.reasonPhrase(), text(status.reason), "the reason");
    requireEqual(header.majorVersion(), status.majorVersion, "the major version");
    requireEqual(header.minorVersion(), status.minorVersion, "the minor version");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string received(reinterpret_cast<const char *>(data), size);
    const Header mustBe = read(received);
    QHttpResponseHeader header(text(received));

    requireFields(header, mustBe.fields);
    if (mustBe.status) {
        requireStatus(header, *mustBe.status);
    } else {
        require(!header.isValid() && header.statusCode() == 0, "without a status line a header is invalid");
        requireEqual(header.toString(), QString(), "the text of an invalid header");
        header.setStatusLine(204);
    }

    const QHttpResponseHeader again(header.toString());
    requireStatus(again, mustBe.status.value_or(StatusLine{1, 1, 204, ""}));
    requireFields(again, mustBe.fields);
    requireEqual(again.toString(), header.toString(), "the text of what was read from the text");
    return 0;
}
