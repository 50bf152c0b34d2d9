#include "httpexchange.h"

QByteArray HttpRequest::header(const QByteArray &name) const
{
    for (const QPair<QByteArray, QByteArray> &candidate : headers) {
        if (candidate.first.compare(name, Qt::CaseInsensitive) == 0) {
            return candidate.second;
        }
    }
    return {};
}

ServerFault ServerFault::withStatus(int status)
{
    ServerFault fault;
    fault.status = status;
    return fault;
}

ServerFault ServerFault::withDelay(int delayMs)
{
    ServerFault fault;
    fault.delayMs = delayMs;
    return fault;
}

ServerFault ServerFault::withClosedConnection()
{
    ServerFault fault;
    fault.closeConnection = true;
    return fault;
}

ServerFault ServerFault::withBodyThatIsNoJson()
{
    ServerFault fault;
    fault.notJson = true;
    return fault;
}
