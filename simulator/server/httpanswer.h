#pragma once

#include <QByteArray>

#include <functional>

/// What a server answers to one request, and what becomes of the connection then.
struct HttpAnswer {
    enum class Framing {
        WithLength,
        /// The body goes out in chunks of a few bytes each.
        Chunked,
        /// No length is announced and the body is repeated until the client goes.
        Endless,
        /// No length is announced, and what source gives follows the body until the client goes.
        Streamed
    };
    enum class Ending {
        /// The client decides how long the connection lasts.
        KeepOpen,
        /// Closed in an orderly way.
        Close,
        /// Closed at once, without TLS's goodbye.
        CutOff,
        /// Ended with a TCP reset.
        Reset
    };

    /// 0 answers nothing; then only the delay and the ending count.
    int status = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
    /// Further header lines, each with its line end.
    QByteArray headers;
    /// When not empty, goes out as it stands in place of what status, type, body and framing would make.
    QByteArray wholeText;
    Framing framing = Framing::WithLength;
    /// Of a streamed answer: the next bytes; empty when there are none yet. Asked again when all that it gave
    /// has been sent, and at HttpServer::wakeStreams(), so that a slow client makes nothing pile up.
    std::function<QByteArray()> source;
    Ending ending = Ending::KeepOpen;
    /// How long the answer is held back.
    int delayMs = 0;
    /// So many bytes at the end are never sent.
    int missingBytes = 0;

    /// Exactly these bytes, status line first; then the connection is closed. The status is read from them.
    static HttpAnswer exactly(const QByteArray &text);
    /// No answer at all.
    static HttpAnswer nothing(Ending ending);

    bool isNothing() const;
    /// The bytes that go out, the missing ones left out. An endless answer goes on with its body.
    QByteArray text() const;
    /// The first @p size bytes of text(), or fewer; a long body is not copied for them.
    QByteArray beginning(int size) const;
};
