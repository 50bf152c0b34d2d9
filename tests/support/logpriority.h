#pragma once

/// The platform log's priorities. They are written down here once more, so that a test notices when the
/// production code gives one of them another number.
namespace LogPriority
{
enum { Any = 0, Verbose = 2, Debug = 3, Info = 4, Warning = 5, Error = 6, Fatal = 7 };
} // namespace LogPriority
