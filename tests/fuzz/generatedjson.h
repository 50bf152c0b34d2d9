#pragma once

#include "fuzzing.h"

/// JSON text from the input, well formed as a rule: bytes alone seldom come to more than one bracket.
namespace GeneratedJson
{

/// Any value, with at most @p depth objects and arrays in one another. Numbers of every size, texts of any
/// letters, keys of the server's replies and others; now and then bytes as they are.
QByteArray takeValue(FuzzedDataProvider &input, int depth);

/// Replies as the server sends them, with anything where a value stands.
QByteArray takeRegisterReply(FuzzedDataProvider &input);
QByteArray takeListReply(FuzzedDataProvider &input);

} // namespace GeneratedJson
