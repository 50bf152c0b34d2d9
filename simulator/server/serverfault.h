#pragma once

#include "httpanswer.h"

#include <functional>

/// One way in which the developer server fails. A fault that only delays is followed by the ordinary answer.
struct ServerFault {
    enum class Kind {
        /// Only late, if at all.
        Delay,
        /// Refuse with the status, without doing what was asked.
        Status,
        /// Close the connection, without doing what was asked.
        ClosedConnection,
        /// Do what was asked, and answer 200 with a body that is no JSON.
        NoJson
    };

    Kind kind = Kind::Delay;
    int status = 0;
    int delayMs = 0;

    static ServerFault withStatus(int status);
    static ServerFault withDelay(int delayMs);
    static ServerFault withClosedConnection();
    static ServerFault withBodyThatIsNoJson();

    /// What this fault makes of an answer. @p ordinary does what was asked, and is called only if the fault
    /// lets that be done.
    HttpAnswer answer(const std::function<HttpAnswer()> &ordinary) const;
};
