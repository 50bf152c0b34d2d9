#pragma once

#include "proxytable.h"

#include <QStringList>
#include <QVariant>

#include <string>

/// What a shape makes of good, strange and missing answers.
struct Expectation {
    /// The catalogue's word for the result; commands and asynchronous calls have none.
    std::string result;
    QVariant goodReply;
    QVariant good;
    /// What comes back for an error, for a reply without arguments and, for JSON, for text that is no JSON.
    QVariant empty;
    /// What QVariant's conversion makes of the number 42 and of an array in place of the expected type.
    QVariant fromNumber;
    QVariant fromArray;
    /// The readers of maps and lists complain of a value of another kind.
    QStringList wrongTypeLines;
};

Expectation expectation(Shape shape);
