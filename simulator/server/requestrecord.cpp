#include "requestrecord.h"

#include <algorithm>

void RequestRecord::setMost(int count)
{
    most = count;
}

void RequestRecord::add(const HttpRequest &request)
{
    requests.append(request);
    while (requests.size() > most) {
        requests.removeFirst();
    }
}

void RequestRecord::update(const HttpRequest &request)
{
    // Mostly the last one.
    const auto found =
        std::find_if(requests.rbegin(), requests.rend(),
                     [&request](const HttpRequest &candidate) { return candidate.number == request.number; });
    if (found != requests.rend()) {
        *found = request;
    }
}

void RequestRecord::clear()
{
    requests.clear();
}

const QList<HttpRequest> &RequestRecord::all() const
{
    return requests;
}
