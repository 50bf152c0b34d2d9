#include "httpanswer.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr int chunkSize = 7;

bool mayHaveBody(int status)
{
    return status >= 200 && status != 204 && status != 304;
}

QByteArray inChunks(const QByteArray &body)
{
    QByteArray text;
    for (int start = 0; start < body.size(); start += chunkSize) {
        const QByteArray chunk = body.mid(start, chunkSize);
        text += QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
    }
    return text + "0\r\n\r\n";
}

QByteArray headOf(const HttpAnswer &answer)
{
    QByteArray head =
        "HTTP/1.1 " + QByteArray::number(answer.status) + (answer.status < 400 ? " OK" : " Refused");
    if (!mayHaveBody(answer.status)) {
        return head + "\r\n\r\n";
    }
    head += "\r\nContent-Type: " + answer.contentType;
    if (!answer.headers.isEmpty()) {
        head += "\r\n" + answer.headers.chopped(2);
    }
    switch (answer.framing) {
    case HttpAnswer::Framing::Chunked:
        return head + "\r\nTransfer-Encoding: chunked\r\n\r\n";
    case HttpAnswer::Framing::Endless:
    case HttpAnswer::Framing::Streamed:
        return head + "\r\n\r\n";
    case HttpAnswer::Framing::WithLength:
        break;
    }
    return head + "\r\nContent-Length: " + QByteArray::number(answer.body.size()) + "\r\n\r\n";
}

QByteArray bodyOf(const HttpAnswer &answer)
{
    if (!mayHaveBody(answer.status)) {
        return {};
    }
    return answer.framing == HttpAnswer::Framing::Chunked ? inChunks(answer.body) : answer.body;
}
} // namespace

HttpAnswer HttpAnswer::exactly(const QByteArray &text)
{
    HttpAnswer answer;
    answer.status = text.mid(static_cast<int>(text.indexOf(' ')) + 1, 3).toInt();
    answer.wholeText = text;
    answer.ending = Ending::Close;
    return answer;
}

HttpAnswer HttpAnswer::nothing(Ending ending)
{
    HttpAnswer answer;
    answer.status = 0;
    answer.ending = ending;
    return answer;
}

bool HttpAnswer::isNothing() const
{
    return status == 0 && wholeText.isEmpty();
}

QByteArray HttpAnswer::text() const
{
    return beginning(std::numeric_limits<int>::max());
}

QByteArray HttpAnswer::beginning(int size) const
{
    const bool isMade = wholeText.isEmpty() && !isNothing();
    const QByteArray head = isMade ? headOf(*this) : wholeText;
    // Shared with the answer and not copied, unless it goes out in chunks.
    const QByteArray rest = isMade ? bodyOf(*this) : QByteArray();
    const auto sent = std::max<qint64>(qint64{head.size()} + rest.size() - missingBytes, 0);
    const auto wanted = static_cast<int>(std::min<qint64>(sent, size));
    return head.left(wanted) + rest.left(std::max(wanted - static_cast<int>(head.size()), 0));
}
