#pragma once

#include "httprequest.h"

#include <limits>

/// The newest requests of a server, in the order of arrival.
class RequestRecord
{
public:
    /// All requests are held unless this says otherwise; the oldest go first.
    void setMost(int count);

    void add(const HttpRequest &request);
    /// Replaces the request of the same number; does nothing when it has left the record meanwhile.
    void update(const HttpRequest &request);
    void clear();
    const QList<HttpRequest> &all() const;

private:
    QList<HttpRequest> requests;
    int most = std::numeric_limits<int>::max();
};
