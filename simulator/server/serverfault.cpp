#include "serverfault.h"

namespace
{
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
    }
    answer.delayMs = delayMs;
    return answer;
}
