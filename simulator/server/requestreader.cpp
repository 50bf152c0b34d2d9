#include "requestreader.h"

#include <algorithm>
#include <utility>

namespace
{
constexpr int largestHead = 256 * 1024;
const auto endOfHead = QByteArrayLiteral("\r\n\r\n");

bool readRequestLine(const QByteArray &line, HttpRequest &request)
{
    const QList<QByteArray> words = line.split(' ');
    if (words.size() != 3 || words[0].isEmpty() || words[1].isEmpty() || !words[2].startsWith("HTTP/1.")) {
        return false;
    }
    request.method = words[0];
    request.target = words[1];
    return true;
}

bool readHeader(const QByteArray &line, HttpRequest &request)
{
    const auto colon = line.indexOf(':');
    const QByteArray name = line.left(colon);
    if (colon <= 0 || name.contains(' ') || name.contains('\t')) {
        return false;
    }
    request.headers.append({name, line.mid(colon + 1).trimmed()});
    return true;
}

bool readHead(const QByteArray &head, HttpRequest &request)
{
    QByteArray lines = head;
    QList<QByteArray> parts = lines.replace("\r\n", "\n").split('\n');
    if (!readRequestLine(parts.takeFirst(), request)) {
        return false;
    }
    for (const QByteArray &part : std::as_const(parts)) {
        if (!readHeader(part, request)) {
            return false;
        }
    }
    return true;
}

// Digits only, where the conversion of a number would take a sign too; below 0 when it is anything else.
int sizeOf(const QByteArray &digits)
{
    const bool hasDigitsOnly = std::all_of(
        digits.begin(), digits.end(), [](char character) { return character >= '0' && character <= '9'; });
    bool isNumber = false;
    const int size = digits.toInt(&isNumber);
    return hasDigitsOnly && isNumber ? size : -1;
}

QList<QByteArray> valuesOf(const HttpRequest &request, const QByteArray &name)
{
    QList<QByteArray> values;
    for (const QPair<QByteArray, QByteArray> &header : request.headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0) {
            values.append(header.second);
        }
    }
    return values;
}

// The size of the body; below 0 when it cannot be known.
int bodySize(const HttpRequest &request)
{
    const QList<QByteArray> lengths = valuesOf(request, "Content-Length");
    // Where a length is said twice, two readers could part the requests at different places.
    if (!request.header("Transfer-Encoding").isEmpty() || lengths.size() > 1) {
        return -1;
    }
    return lengths.isEmpty() ? 0 : sizeOf(lengths.first());
}
} // namespace

void RequestReader::add(const QByteArray &bytes)
{
    buffer += bytes;
}

std::optional<HttpRequest> RequestReader::take()
{
    const auto headEnd = buffer.indexOf(endOfHead);
    // Where the end has not come yet, all but its first bytes are head already.
    const auto headSize = headEnd < 0 ? buffer.size() - endOfHead.size() + 1 : headEnd;
    malformed = malformed || headSize > largestHead;
    if (malformed || headEnd < 0) {
        return std::nullopt;
    }
    HttpRequest request;
    malformed =
        !readHead(buffer.left(headSize), request) || bodySize(request) < 0 || bodySize(request) > largestBody;
    const auto bodyStart = headSize + endOfHead.size();
    if (malformed || buffer.size() - bodyStart < bodySize(request)) {
        return std::nullopt;
    }
    request.bytes = buffer;
    request.body = buffer.mid(bodyStart, bodySize(request));
    buffer.remove(0, bodyStart + request.body.size());
    return request;
}

bool RequestReader::isMalformed() const
{
    return malformed;
}
