#pragma once

#include "httprequest.h"

#include <limits>
#include <optional>

/// Cuts the bytes of one connection into requests. A body needs a Content-Length: that is what curl sends
/// whenever it knows the body before.
class RequestReader
{
public:
    /// A request whose body is longer than @p largestBody_ bytes is not understood.
    explicit RequestReader(int largestBody_ = std::numeric_limits<int>::max())
        : largestBody(largestBody_)
    {
    }

    void add(const QByteArray &bytes);

    /// The next request, once all of it is there.
    std::optional<HttpRequest> take();
    /// What came is no request that this reader understands. It stays so.
    bool isMalformed() const;

private:
    const int largestBody;
    QByteArray buffer;
    bool malformed = false;
};
