#pragma once

#include "httpanswer.h"

#include <QString>

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
        NoJson,
        /// Reset the connection, without doing what was asked.
        ResetConnection,
        /// The four that follow do what was asked. A success is answered with the status.
        OtherSuccess,
        /// The body is left out.
        EmptyBody,
        /// The body goes on with a megabyte of spaces, which JSON allows.
        LargeBody,
        /// The second half of the body never comes, and the connection is closed.
        CutOffBody
    };

    Kind kind = Kind::Delay;
    int status = 0;
    int delayMs = 0;

    static ServerFault withStatus(int status);
    static ServerFault withDelay(int delayMs);
    static ServerFault withClosedConnection();
    static ServerFault withBodyThatIsNoJson();
    static ServerFault withResetConnection();
    static ServerFault withOtherSuccess(int status);
    static ServerFault withEmptyBody();
    static ServerFault withLargeBody();
    static ServerFault withCutOffBody();

    /// In a few words, such as "status 503".
    QString text() const;

    /// What this fault makes of an answer. @p ordinary does what was asked, and is called only if the fault
    /// lets that be done.
    HttpAnswer answer(const std::function<HttpAnswer()> &ordinary) const;
};
