#include "serverfault.h"

namespace
{
constexpr int megabyte = 1024 * 1024;

HttpAnswer refusal(int status)
{
    HttpAnswer answer;
    answer.status = status;
    answer.body = "{\"error\":\"simulated failure\"}";
    return answer;
}

HttpAnswer noJson()
{
    HttpAnswer answer;
    answer.body = "<html>this is no JSON</html>";
    answer.contentType = "text/html";
    return answer;
}

HttpAnswer withStatusOfSuccess(HttpAnswer answer, int status)
{
    if (answer.status == 200) {
        answer.status = status;
    }
    return answer;
}

HttpAnswer cutOff(HttpAnswer answer)
{
    answer.missingBytes = static_cast<int>(answer.body.size() + 1) / 2;
    answer.ending = HttpAnswer::Ending::CutOff;
    return answer;
}
} // namespace

ServerFault ServerFault::withStatus(int status)
{
    return {Kind::Status, status, 0};
}

ServerFault ServerFault::withDelay(int delayMs)
{
    return {Kind::Delay, 0, delayMs};
}

ServerFault ServerFault::withClosedConnection()
{
    return {Kind::ClosedConnection, 0, 0};
}

ServerFault ServerFault::withBodyThatIsNoJson()
{
    return {Kind::NoJson, 0, 0};
}

ServerFault ServerFault::withResetConnection()
{
    return {Kind::ResetConnection, 0, 0};
}

ServerFault ServerFault::withOtherSuccess(int status)
{
    return {Kind::OtherSuccess, status, 0};
}

ServerFault ServerFault::withEmptyBody()
{
    return {Kind::EmptyBody, 0, 0};
}

ServerFault ServerFault::withLargeBody()
{
    return {Kind::LargeBody, 0, 0};
}

ServerFault ServerFault::withCutOffBody()
{
    return {Kind::CutOffBody, 0, 0};
}

QString ServerFault::text() const
{
    switch (kind) {
    case Kind::Delay:
        return QStringLiteral("%1 ms late").arg(delayMs);
    case Kind::Status:
        return QStringLiteral("status %1").arg(status);
    case Kind::ClosedConnection:
        return QStringLiteral("a closed connection");
    case Kind::NoJson:
        return QStringLiteral("a body that is no JSON");
    case Kind::ResetConnection:
        return QStringLiteral("a reset connection");
    case Kind::OtherSuccess:
        return QStringLiteral("done, with status %1").arg(status);
    case Kind::EmptyBody:
        return QStringLiteral("an empty body");
    case Kind::LargeBody:
        return QStringLiteral("a large body");
    case Kind::CutOffBody:
        return QStringLiteral("a body that is cut off");
    }
    return {};
}

HttpAnswer ServerFault::answer(const std::function<HttpAnswer()> &ordinary) const
{
    HttpAnswer answer;
    switch (kind) {
    case Kind::Delay:
        answer = ordinary();
        break;
    case Kind::Status:
        answer = refusal(status);
        break;
    case Kind::ClosedConnection:
        answer = HttpAnswer::nothing(HttpAnswer::Ending::CutOff);
        break;
    case Kind::NoJson:
        ordinary();
        answer = noJson();
        break;
    case Kind::ResetConnection:
        answer = HttpAnswer::nothing(HttpAnswer::Ending::Reset);
        break;
    case Kind::OtherSuccess:
        answer = withStatusOfSuccess(ordinary(), status);
        break;
    case Kind::EmptyBody:
        answer = ordinary();
        answer.body.clear();
        break;
    case Kind::LargeBody:
        answer = ordinary();
        answer.body += QByteArray(megabyte, ' ');
        break;
    case Kind::CutOffBody:
        answer = cutOff(ordinary());
        break;
    }
    answer.delayMs = delayMs;
    return answer;
}
