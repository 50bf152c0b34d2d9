// The simulator's server: the bytes of a connection, whole and in pieces, cut into requests and answered.

#include "appsendpoint.h"
#include "fuzzing.h"
#include "requestreader.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace
{

struct Outcome {
    QList<HttpRequest> requests;
    bool isMalformed = false;
};

void takeAll(RequestReader &reader, Outcome &outcome)
{
    while (const std::optional<HttpRequest> request = reader.take()) {
        outcome.requests.append(*request);
    }
    outcome.isMalformed = reader.isMalformed();
}

Outcome readWhole(const QByteArray &stream)
{
    RequestReader reader;
    Outcome outcome;
    reader.add(stream);
    takeAll(reader, outcome);
    return outcome;
}

Outcome readInPieces(const QByteArray &stream, const std::vector<int> &pieces)
{
    RequestReader reader;
    Outcome outcome;
    int begin = 0;
    for (const int piece : pieces) {
        reader.add(stream.mid(begin, piece));
        takeAll(reader, outcome);
        begin += piece;
    }
    reader.add(stream.mid(begin));
    takeAll(reader, outcome);
    return outcome;
}

void requireSameRequests(const Outcome &whole, const Outcome &inPieces)
{
    requireEqual(inPieces.requests.size(), whole.requests.size(), "as many requests, however they came");
    requireEqual(inPieces.isMalformed, whole.isMalformed, "as malformed, however they came");
    for (int i = 0; i < whole.requests.size(); ++i) {
        const HttpRequest &one = whole.requests.at(i);
        const HttpRequest &other = inPieces.requests.at(i);
        requireEqual(other.method, one.method, "the method, however it came");
        requireEqual(other.target, one.target, "the target, however it came");
        requireEqual(other.body, one.body, "the body, however it came");
        require(other.headers == one.headers, "the headers, however they came");
        require(one.bytes.startsWith(other.bytes), "what had come is a beginning of what came");
    }
}

// The request stands in the stream where the one before it ended. Returns where it ends.
int requirePlace(const QByteArray &stream, int begin, const HttpRequest &request)
{
    const int end = static_cast<int>(stream.indexOf("\r\n\r\n", begin)) + 4;
    require(end >= begin + 4, "a request has a head");
    requireEqual(request.bytes, stream.mid(begin), "all that had come");
    const QByteArray start = request.method + ' ' + request.target + " HTTP/1.";
    require(stream.mid(begin).startsWith(start), "the first line is method, target and version");
    require(!request.method.isEmpty() && !request.target.isEmpty(), "neither method nor target is empty");
    int at = begin;
    for (const QPair<QByteArray, QByteArray> &header : request.headers) {
        at = static_cast<int>(stream.indexOf('\n', at)) + 1;
        require(at > 0 && at < end, "a header stands in the head");
        require(!header.first.isEmpty(), "a header has a name");
        const QByteArray line = stream.mid(at, stream.indexOf('\n', at) - at);
        require(line.startsWith(header.first + ':'), "a header begins with its name");
        requireEqual(line.mid(header.first.size() + 1).trimmed(), header.second, "a header's value");
    }
    const int lines = static_cast<int>(stream.mid(begin, end - 4 - begin).count('\n'));
    requireEqual(request.headers.size(), lines, "every line but the first is a header");
    requireEqual(request.body.size(), request.header("Content-Length").toInt(), "the body's size");
    requireEqual(request.body, stream.mid(end, request.body.size()), "the body");
    return end + static_cast<int>(request.body.size());
}

void requireAnswers(const QList<HttpRequest> &requests)
{
    AppsEndpoint endpoint;
    endpoint.setApiKey(QStringLiteral("k"));
    endpoint.add({QStringLiteral("d9"), QStringLiteral("7"), QStringLiteral("u1"), {}, {}});
    for (const HttpRequest &request : requests) {
        const HttpAnswer answer = endpoint.answer(request);
        const bool isKnown = QList<int>{200, 400, 401, 404, 405, 406}.contains(answer.status);
        require(isKnown, "the answer has a status of the interface");
        const bool isAllowed = request.header("Authorization") == "Basic Oms=";
        require(isAllowed || answer.status != 200, "nothing is done for a stranger");
        require(QJsonDocument::fromJson(answer.body).isObject(), "the answer is a JSON object");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto pieceCount = input.ConsumeIntegralInRange<int>(0, 8);
    std::vector<int> pieces;
    for (int i = 0; i < pieceCount; ++i) {
        pieces.push_back(input.ConsumeIntegral<std::uint8_t>());
    }
    const QByteArray stream = takeRest(input);

    const Outcome whole = readWhole(stream);
    requireSameRequests(whole, readInPieces(stream, pieces));
    int end = 0;
    for (const HttpRequest &request : whole.requests) {
        end = requirePlace(stream, end, request);
    }
    requireAnswers(whole.requests);
    return 0;
}
