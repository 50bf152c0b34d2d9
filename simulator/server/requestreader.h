#pragma once

#include "httprequest.h"

#include <optional>

/// Cuts the bytes of one connection into requests. A body needs a Content-Length: that is what curl sends
/// whenever it knows the body before.
class RequestReader
{
public:
    void add(const QByteArray &bytes);

    /// The next request, once all of it is there.
    std::optional<HttpRequest> take();
    /// What came is no request that this reader understands. It stays so.
    bool isMalformed() const;

private:
    QByteArray buffer;
    bool malformed = false;
};
